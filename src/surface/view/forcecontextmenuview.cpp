#include "forcecontextmenuview.h"

#include "surfacefonts.h"
#include "surfacepainter.h"
#include "surfacepalette.h"

#include <QPainter>

ForceContextMenuView::ForceContextMenuView(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void ForceContextMenuView::setSurface(TabEditSurface *surface)
{
    if (host == surface)
        return;
    if (host)
        disconnect(host, nullptr, this, nullptr);
    host = surface;
    if (host) {
        connect(host, &TabEditSurface::menuChanged, this, [this] {
            Q_EMIT openChanged();
            update();
        });
    }
    Q_EMIT surfaceChanged();
}

bool ForceContextMenuView::isOpen() const
{
    return host && host->view()->noteContextMenu && !host->view()->noteContextMenu->finished;
}

void ForceContextMenuView::paint(QPainter *painter)
{
    if (!isOpen())
        return;
    const ForceContextMenu &menu = *host->view()->noteContextMenu;
    const SurfacePalette *palette = SurfacePalette::instance();
    painter->setRenderHint(QPainter::Antialiasing, true);
    const double size = ForceContextMenu::entrySize;
    // A soft disc behind the ring keeps the entries readable over the tab.
    QColor shade = palette->colorSystemBg();
    shade.setAlphaF(0.85);
    painter->setPen(Qt::NoPen);
    painter->setBrush(shade);
    painter->drawEllipse(menu.center, menu.radius + size * 0.7, menu.radius + size * 0.7);
    for (int i = 0; i < menu.labels.size(); ++i) {
        const QPointF c = menu.entryCenter(i);
        const QRectF box(c.x() - size * 0.5, c.y() - size * 0.5, size, size);
        const bool selected = i == menu.selectedIndex;
        painter->setPen(QPen(palette->colorEditColHighlightBorder(), selected ? 0 : 1.5));
        painter->setBrush(selected ? palette->colorEditColHighlightBorder()
                                   : palette->colorFieldBg());
        painter->drawEllipse(box);
        painter->setPen(selected ? palette->colorSystemBg() : palette->colorLabel());
        SurfacePainter::paintFittedText(*painter, box.adjusted(4, 0, -4, 0), menu.labels[i],
                                        SurfaceFonts::black(size * 0.5));
    }
    painter->setPen(QPen(palette->colorEditColItemIndicator(), 2));
    painter->setBrush(Qt::NoBrush);
    painter->drawEllipse(menu.origin, 6, 6);
}
