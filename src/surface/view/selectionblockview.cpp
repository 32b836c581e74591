#include "selectionblockview.h"

#include "surfacepainter.h"
#include "surfacepalette.h"

#include <QLinearGradient>
#include <QPainter>

SelectionBlockView::SelectionBlockView(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(SurfacePalette::instance(), &SurfacePalette::changed, this, [this] { update(); });
    connect(this, &SelectionBlockView::surfaceChanged, this, [this] { update(); });
}

void SelectionBlockView::setSurface(TabEditSurface *surface)
{
    if (host == surface)
        return;
    if (host)
        disconnect(host->view(), nullptr, this, nullptr);
    host = surface;
    if (host)
        connect(host->view(), &TabEditView::selectionChanged, this, [this] { update(); });
    Q_EMIT surfaceChanged();
}

void SelectionBlockView::paint(QPainter *painter)
{
    if (!host || !host->view()->magicSelectionBox)
        return;
    const TabEditView &view = *host->view();
    const SelectionBox &box = *view.magicSelectionBox;
    const SurfacePalette *palette = SurfacePalette::instance();
    const double cw = TabEditView::tabColumnWidth;
    const double ih = view.itemHeight();
    const QRectF cells(0, 0, box.columnCount() * cw, box.itemCount() * ih);
    painter->fillRect(QRectF(0, 0, width(), height()), palette->colorSystemBg());
    if (!box.hasCells() || box.tabRowIndex >= view.tabRows.size())
        return;
    const QList<TabColumnData> &row = view.tabRows[box.tabRowIndex].colDatas;
    if (cover) {
        // The source looks empty: a dash in every cell, as a blank has.
        for (int c = 0; c < box.columnCount(); ++c) {
            for (int i = 0; i < box.itemCount(); ++i) {
                const QRectF cell(c * cw, i * ih, cw, ih);
                painter->fillRect(TabColumnView::dashRect(cell, cw), palette->colorLabel());
            }
        }
        return;
    }
    // The block's whole columns, shifted so its first item stands at the top, cut to the box.
    QList<TabColumnView> columns;
    for (int c = box.colIndexStart; c <= box.colIndexEnd && c < row.size(); ++c)
        columns.append(TabColumnView(row[c]));
    painter->save();
    painter->setClipRect(cells);
    const QRectF rowRect(0, -box.itemIndexStart * ih, columns.size() * cw, view.stringCount() * ih);
    SurfacePainter::paintColumns(*painter, columns, rowRect, view.stringNotes,
                                 view.settings.notesOnTab, SurfacePainter::colors(false), cells);
    painter->restore();
    // A lifted look: a soft shadow under the block.
    QLinearGradient shade(0, cells.bottom(), 0, height());
    shade.setColorAt(0, QColor(0, 0, 0, palette->isDark() ? 110 : 60));
    shade.setColorAt(1, QColor(0, 0, 0, 0));
    painter->fillRect(QRectF(0, cells.bottom(), width(), height() - cells.bottom()), shade);
    painter->setPen(QPen(palette->colorEditColHighlightBorder(), 1.5));
    painter->drawRect(cells.adjusted(0.75, 0.75, -0.75, -0.75));
}
