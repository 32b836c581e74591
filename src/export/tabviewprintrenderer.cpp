#include "tabviewprintrenderer.h"

#include <algorithm>

TabViewPrintRenderer::TabViewPrintRenderer(TabExportConfiguration config,
                                           const PrintTextMeasurer &textMeasurer)
    : tabExportConfig(std::move(config)), measurer(textMeasurer)
{
}

bool TabViewPrintRenderer::hasIntro() const
{
    const auto &intro = tabExportConfig.tabData.introText;
    return intro && !intro->isEmpty();
}

bool TabViewPrintRenderer::rowHasChordNames(int index) const
{
    if (index < 0 || index >= rowCount())
        return false;
    const auto &columns = tabExportConfig.tabData.tabRowDatas[index].colDatas;
    return std::any_of(columns.cbegin(), columns.cend(), [](const TabColumnData &column) {
        return column.chordName && !column.chordName->trimmed().isEmpty();
    });
}

TabRowWithMarkupView TabViewPrintRenderer::rowView(int index, int minLyricLines,
                                                   bool emptyChordNames) const
{
    const TabData &tab = tabExportConfig.tabData;
    TabRowWithMarkupView::Options options;
    options.fontName = u"monospace"_qs;
    options.showLyrics = tabExportConfig.showLyrics;
    options.showChordNamesInit = tabExportConfig.showColumnHeaders;
    options.showTabRowViews = tabExportConfig.showTabContent;
    options.showNotesView = tabExportConfig.showTabContent;
    options.lyricsBelow = tabExportConfig.lyricsBelow;
    options.emptyChordNamesOverride = emptyChordNames;
    options.notesOnTab = tabExportConfig.notesOnTab;
    options.isEditMode = false;
    options.minLyricLines = minLyricLines;
    return TabRowWithMarkupView(tab.tabRowDatas[index], tab.stringNotes, int(tab.capoFret),
                                int(tab.lyricSize), options);
}

TabViewPrintRenderer::PrintRow TabViewPrintRenderer::printRow(int index, double width) const
{
    PrintRow result;
    if (index < 0 || index >= rowCount())
        return result;
    if (!tabExportConfig.twoColumns) {
        result.views.append(rowView(index, 0, !rowHasChordNames(index)));
        result.views[0].setWidth(width);
        result.height = result.views[0].requestedHeight;
        result.frames.append(QRectF(0, 0, width, result.height));
        return result;
    }
    // The halves share their lyric line count and their chord band, so they stay level.
    const auto &rows = tabExportConfig.tabData.tabRowDatas;
    const bool pair = index + 1 < rowCount();
    const int lyricLines =
        int(std::max(rows[index].lyricLines.size(), pair ? rows[index + 1].lyricLines.size() : 0));
    const bool noChordNames = !rowHasChordNames(index) && !rowHasChordNames(index + 1);
    const QList<QRectF> halves = TabRowSideBySideWithMarkupView::childFrames(width, {});
    QList<double> heights;
    for (int i = 0; i < (pair ? 2 : 1); ++i) {
        result.views.append(rowView(index + i, lyricLines, noChordNames));
        result.views.last().setWidth(halves[i].width());
        heights.append(result.views.last().requestedHeight);
        result.height = std::max(result.height, heights.last());
    }
    result.frames = TabRowSideBySideWithMarkupView::childFrames(width, heights);
    result.frames.resize(result.views.size());
    return result;
}

void TabViewPrintRenderer::paginate()
{
    const double width = contentWidth;
    tabRowSpacing = tabExportConfig.twoColumns ? width * 0.031 * 0.49 : width * 0.031;
    numPages = 0;
    pageStartTabRowIndices.clear();
    const int count = rowCount();
    int i = 0;
    while (i < count) {
        ++numPages;
        pageStartTabRowIndices.append(i);
        double y = 0;
        if (i == 0) {
            titleHeight = measurer.titleHeight(tabExportConfig.tabData.title);
            y = titleHeight + titleContentGap;
            if (hasIntro()) {
                introHeight =
                    measurer.introHeight(*tabExportConfig.tabData.introText, printableRect.width());
                y += introHeight;
            }
        }
        const double pageHeight = printableRect.height();
        const int first = i;
        while (y < pageHeight && i < count) {
            const double h = printRow(i, width).height;
            // A row taller than a whole page still gets a page of its own (drawn shrunk), so
            // an odd tab can never paginate forever.
            if (y + h > pageHeight && i != first)
                break;
            i += rowsPerStep();
            y += h + tabRowSpacing;
        }
    }
}

int TabViewPrintRenderer::numberOfPages()
{
    if (numPages == -1)
        paginate();
    return numPages;
}

TabViewPrintRenderer::PageLayout TabViewPrintRenderer::pageLayout(int page)
{
    PageLayout result;
    result.footerRect = footerRect;
    if (page < 0 || page >= numberOfPages())
        return result;
    const QRectF r = printableRect;
    double y = r.top();
    if (page == 0) {
        result.titleRect = QRectF(r.left(), y, r.width(), titleHeight);
        y += titleHeight;
        if (hasIntro()) {
            result.introRect = QRectF(r.left(), y, r.width(), introHeight);
            y += introHeight;
        }
        y += titleContentGap;
    }
    const int first = pageStartTabRowIndices[page];
    const int end =
        page + 1 < pageStartTabRowIndices.size() ? pageStartTabRowIndices[page + 1] : rowCount();
    for (int i = first; i < end; i += rowsPerStep()) {
        PlacedRow placed{printRow(i), {}};
        placed.frame = QRectF(r.left(), y, contentWidth, placed.row.height);
        y += placed.row.height + tabRowSpacing;
        result.rows.append(std::move(placed));
    }
    return result;
}
