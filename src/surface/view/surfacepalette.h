#pragma once

#include <QColor>
#include <QObject>
#include <QQmlEngine>

// The named colours of the surface, each with a light and a dark value, in one place.
class SurfacePalette : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ isDark WRITE setDark NOTIFY changed)
    Q_PROPERTY(QColor colorLabel READ colorLabel NOTIFY changed)
    Q_PROPERTY(QColor colorSecondaryLabel READ colorSecondaryLabel NOTIFY changed)
    Q_PROPERTY(QColor colorSystemBg READ colorSystemBg NOTIFY changed)
    Q_PROPERTY(QColor colorEditSelectBg READ colorEditSelectBg NOTIFY changed)
    Q_PROPERTY(QColor colorEditColHighlightBg READ colorEditColHighlightBg NOTIFY changed)
    Q_PROPERTY(QColor colorEditColHighlightBorder READ colorEditColHighlightBorder NOTIFY changed)
    Q_PROPERTY(QColor colorEditColItemIndicator READ colorEditColItemIndicator NOTIFY changed)
    Q_PROPERTY(QColor colorGuitarString READ colorGuitarString NOTIFY changed)
    Q_PROPERTY(QColor colorFretHighlight READ colorFretHighlight NOTIFY changed)
    Q_PROPERTY(QColor colorFieldBg READ colorFieldBg NOTIFY changed)
    Q_PROPERTY(QColor colorMenuBg READ colorMenuBg NOTIFY changed)

public:
    static SurfacePalette *instance();
    static SurfacePalette *create(QQmlEngine *, QJSEngine *);

    bool isDark() const { return dark; }
    void setDark(bool value);

    QColor colorLabel() const { return pick(0x1d1b19, 0xf1eee8); }
    QColor colorSecondaryLabel() const { return pick(0x8a857d, 0x8f8a82); }
    QColor colorSystemBg() const { return pick(0xfbf9f4, 0x16171b); }
    QColor colorEditSelectBg() const { return pick(0x66f5b82e, 0x66d9961c); }
    QColor colorEditColHighlightBg() const { return pick(0x26287ee8, 0x333d8ff5); }
    QColor colorEditColHighlightBorder() const { return pick(0xff1f6fd6, 0xff5aa2ff); }
    QColor colorEditColItemIndicator() const { return pick(0xd9480f, 0xff8a3d); }
    QColor colorGuitarString() const { return pick(0x9b9388, 0x8d877e); }
    QColor colorFretHighlight() const { return pick(0x5a2bb673, 0x5a3ccf8e); }
    QColor colorFieldBg() const { return pick(0xf2efe8, 0x222329); }
    QColor colorMenuBg() const { return pick(0xf0ffffff, 0xf02a2b31); }

Q_SIGNALS:
    void changed();

private:
    explicit SurfacePalette(QObject *parent = nullptr);
    QColor pick(QRgb light, QRgb darkValue) const;
    bool dark = false;
};
