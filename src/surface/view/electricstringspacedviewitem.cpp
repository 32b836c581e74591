#include "electricstringspacedviewitem.h"

#include "surfacepalette.h"

#include <QPainter>

ElectricStringSpacedViewItem::ElectricStringSpacedViewItem(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    layout.numItemGroups = 1;
    connect(this, &ElectricStringSpacedViewItem::changed, this, [this] { update(); });
    connect(SurfacePalette::instance(), &SurfacePalette::changed, this, [this] { update(); });
}

void ElectricStringSpacedViewItem::setNumItems(int count)
{
    if (count == layout.numItems)
        return;
    layout.numItems = count;
    Q_EMIT changed();
}

void ElectricStringSpacedViewItem::setTopPadding(qreal padding)
{
    if (padding == layout.topPadding)
        return;
    layout.topPadding = padding;
    Q_EMIT changed();
}

void ElectricStringSpacedViewItem::paint(QPainter *painter)
{
    layout.frameSize = size();
    const QList<QRectF> frames = layout.layoutItems();
    const QColor color = SurfacePalette::instance()->colorGuitarString();
    for (int i = 0; i < frames.size(); ++i) {
        const QRectF &frame = frames[i];
        const double t =
            StringSpacedView::electricStringThickness(i, layout.numItems, frame.height());
        painter->fillRect(QRectF(frame.left(), frame.center().y() - t / 2, frame.width(), t),
                          color);
    }
}
