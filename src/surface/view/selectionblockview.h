#pragma once

#include "tabeditsurface.h"

#include <QPointer>
#include <QQuickPaintedItem>

// The selected block of magic edit drawn on its own: the picture that follows the finger
// during a drag, or, as a cover, the dashes that make the source look empty during a move.
class SelectionBlockView : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(TabEditSurface *surface READ surface WRITE setSurface NOTIFY surfaceChanged)
    Q_PROPERTY(bool cover MEMBER cover NOTIFY surfaceChanged)

public:
    explicit SelectionBlockView(QQuickItem *parent = nullptr);

    TabEditSurface *surface() const { return host; }
    void setSurface(TabEditSurface *surface);
    void paint(QPainter *painter) override;

Q_SIGNALS:
    void surfaceChanged();

private:
    QPointer<TabEditSurface> host;
    bool cover = false;
};
