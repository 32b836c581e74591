#include "viewmoderowitem.h"

#include "surfacepalette.h"
#include "tabrowwithmarkupviewitem.h"

#include <QPainter>

ViewModeRowItem::ViewModeRowItem(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(this, &ViewModeRowItem::changed, this, [this] { update(); });
    connect(SurfacePalette::instance(), &SurfacePalette::changed, this, [this] { update(); });
}

void ViewModeRowItem::paint(QPainter *painter)
{
    if (!controller || entry < 0 || entry >= controller->entryCount())
        return;
    for (int within = 0; within < controller->entryRowCount(entry); ++within) {
        const QRectF frame = controller->entryChildFrame(entry, within);
        if (frame.isEmpty())
            continue;
        TabRowWithMarkupViewItem::paintRow(*painter, controller->rowViewForPaint(entry, within),
                                           frame, false, -1);
    }
}
