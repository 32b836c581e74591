#include "surfacepalette.h"

#include <QGuiApplication>
#include <QPalette>

SurfacePalette::SurfacePalette(QObject *parent) : QObject(parent)
{
    // The platform's own choice, as far as its window colour tells it.
    dark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

SurfacePalette *SurfacePalette::instance()
{
    static SurfacePalette *palette = new SurfacePalette(qApp);
    return palette;
}

SurfacePalette *SurfacePalette::create(QQmlEngine *, QJSEngine *)
{
    SurfacePalette *palette = instance();
    QQmlEngine::setObjectOwnership(palette, QQmlEngine::CppOwnership);
    return palette;
}

void SurfacePalette::setDark(bool value)
{
    if (dark == value)
        return;
    dark = value;
    Q_EMIT changed();
}

QColor SurfacePalette::pick(QRgb light, QRgb darkValue) const
{
    // Values without alpha are opaque.
    const QRgb value = dark ? darkValue : light;
    return QColor::fromRgba(value > 0xffffff ? value : (value | 0xff000000));
}
