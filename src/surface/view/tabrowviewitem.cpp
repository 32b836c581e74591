#include "tabrowviewitem.h"

#include "surfacepainter.h"
#include "surfacepalette.h"

#include <QPainter>

#include <cmath>

TabRowViewItem::TabRowViewItem(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(SurfacePalette::instance(), &SurfacePalette::changed, this, [this] { update(); });
}

void TabRowViewItem::setSurface(TabEditSurface *surface)
{
    if (host == surface)
        return;
    if (host)
        disconnect(host->view(), nullptr, this, nullptr);
    host = surface;
    if (host) {
        connect(host->view(), &TabEditView::columnsNeedRender, this,
                &TabRowViewItem::columnsNeedRender);
        connect(host->view(), &TabEditView::layoutChanged, this, [this] { update(); });
    }
    Q_EMIT surfaceChanged();
    update();
}

void TabRowViewItem::setShownRow(int shownRow)
{
    if (row == shownRow)
        return;
    row = shownRow;
    Q_EMIT shownRowChanged();
    update();
}

void TabRowViewItem::columnsNeedRender(int shownRow, const QList<int> &columns)
{
    if (shownRow != row || !host)
        return;
    const TabEditView *view = host->view();
    if (row >= view->showingCount())
        return;
    const int count = int(view->showingTabRows[row].tabColumnViews.size());
    if (count == 0)
        return;
    const double cw = width() / count;
    for (int column : columns) {
        // Text may reach a little beyond its cell.
        const QRectF cell(column * cw - cw * 0.25, 0, cw * 1.5, height());
        update(cell.toAlignedRect());
    }
}

void TabRowViewItem::paint(QPainter *painter)
{
    if (!host || row < 0 || row >= host->view()->showingCount())
        return;
    const TabEditView *view = host->view();
    const QList<TabColumnView> &columns = view->showingTabRows[row].tabColumnViews;
    QRectF clip = painter->clipBoundingRect();
    if (clip.isEmpty())
        clip = boundingRect();
    if (!columns.isEmpty()) {
        const double cw = width() / columns.size();
        paintedColumnCount += int(std::ceil(clip.right() / cw) - std::floor(clip.left() / cw));
    }
    SurfacePainter::paintColumns(*painter, columns, boundingRect(), view->stringNotes,
                                 view->settings.notesOnTab, SurfacePainter::colors(false), clip);
}
