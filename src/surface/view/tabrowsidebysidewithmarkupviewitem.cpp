#include "tabrowsidebysidewithmarkupviewitem.h"

#include "surfacefonts.h"

TabRowSideBySideWithMarkupViewItem::TabRowSideBySideWithMarkupViewItem(QQuickItem *parent)
    : TabRowWithMarkupViewItem(parent)
{
    connect(this, &TabRowWithMarkupViewItem::changed, this,
            &TabRowSideBySideWithMarkupViewItem::relayoutPair);
}

std::optional<TabRowWithMarkupView> TabRowSideBySideWithMarkupViewItem::rowAt(int offset) const
{
    if (!host || modelRow + offset < 0 || modelRow + offset >= host->view()->tabRows.size())
        return std::nullopt;
    TabRowWithMarkupView::Options options;
    options.hideColHeaders = host->view()->settings.hideColHeaders;
    options.notesOnTab = host->view()->settings.notesOnTab;
    options.isEditMode = editMode;
    options.showLyrics = showLyrics;
    options.showChordNamesInit = showChordNames;
    options.fontName = SurfaceFonts::monoFamily();
    const TabEditView *view = host->view();
    TabRowWithMarkupView row(view->tabRows[modelRow + offset], view->stringNotes, capoFret,
                             view->lyricsSizePercentage, options);
    row.setWidth(width() * 0.49);
    return row;
}

QList<QRectF> TabRowSideBySideWithMarkupViewItem::childFrames() const
{
    QList<double> heights;
    for (int i = 0; i < TabRowSideBySideWithMarkupView::numTabRows; ++i) {
        const auto row = rowAt(i);
        heights.append(row ? row->requestedHeight : 0.0);
    }
    return TabRowSideBySideWithMarkupView::childFrames(width(), heights);
}

void TabRowSideBySideWithMarkupViewItem::relayoutPair()
{
    double tallest = 0.0;
    for (const QRectF &frame : childFrames())
        tallest = std::max(tallest, frame.height());
    setImplicitHeight(tallest);
    update();
}

void TabRowSideBySideWithMarkupViewItem::geometryChange(const QRectF &newGeometry,
                                                        const QRectF &oldGeometry)
{
    TabRowWithMarkupViewItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.width() != oldGeometry.width())
        relayoutPair();
}

void TabRowSideBySideWithMarkupViewItem::paint(QPainter *painter)
{
    const QList<QRectF> frames = childFrames();
    for (int i = 0; i < frames.size(); ++i) {
        if (const auto row = rowAt(i))
            paintRow(*painter, *row, frames[i], forceBlack, -1);
    }
}
