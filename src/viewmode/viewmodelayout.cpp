#include "viewmodelayout.h"

#include <algorithm>
#include <cmath>

double ViewModeLayout::spacingFor(double width, bool twoColumns)
{
    return twoColumns ? width * 0.031 * 0.49 : width * 0.031;
}

TabRowWithMarkupView ViewModeLayout::rowView(int row, double width, int minLyricLines) const
{
    const TabRowData &data = tab->tabRowDatas[row];
    TabRowWithMarkupView::Options options;
    options.showLyrics = display.showLyrics;
    options.showChordNamesInit = display.showColumnHeaders;
    options.showTabRowViews = display.showTabContent;
    options.showNotesView = display.showTabContent;
    options.lyricsBelow = display.lyricsBelow;
    options.isEditMode = false;
    options.minLyricLines = minLyricLines;
    options.hideColHeaders = settings.hideColHeaders;
    options.notesOnTab = settings.notesOnTab;
    // A row without one chord name gives its band back to the rest.
    options.emptyChordNamesOverride =
        std::none_of(data.colDatas.begin(), data.colDatas.end(), [](const TabColumnData &c) {
            return c.chordName && !c.chordName->trimmed().isEmpty();
        });
    TabRowWithMarkupView view(data, tab->stringNotes, int(tab->capoFret),
                              int(tab->lyricSize), options);
    view.setWidth(width);
    return view;
}

ViewModeRowEntry ViewModeLayout::makeEntry(int firstRow) const
{
    ViewModeRowEntry entry;
    entry.firstRow = firstRow;
    if (!display.twoColumns) {
        const double h = rowView(firstRow, stackWidth).requestedHeight;
        entry.frame = QRectF(0, 0, stackWidth, h);
        entry.childFrames = {QRectF(0, 0, stackWidth, h)};
        return entry;
    }
    entry.rowCount = firstRow + 1 < rowCount() ? 2 : 1;
    const double childWidth = stackWidth * pairRowFraction;
    // Both rows take as many lyric lines as the one with more, so their strings line up.
    int lines = 0;
    for (int i = 0; i < entry.rowCount; ++i)
        lines = std::max(lines, int(rowView(firstRow + i, childWidth).lyricLines.size()));
    QList<double> heights;
    for (int i = 0; i < entry.rowCount; ++i)
        heights.append(rowView(firstRow + i, childWidth, lines).requestedHeight);
    entry.childFrames = TabRowSideBySideWithMarkupView::childFrames(stackWidth, heights);
    entry.childFrames.resize(entry.rowCount);
    const double h = *std::max_element(heights.begin(), heights.end());
    entry.frame = QRectF(0, 0, stackWidth, h);
    return entry;
}

void ViewModeLayout::append(const ViewModeRowEntry &entry)
{
    ViewModeRowEntry placed = entry;
    const double top = entries.isEmpty() ? introHeight : entries.last().frame.bottom() + spacing();
    placed.frame.moveTop(top);
    entries.append(placed);
}

bool ViewModeLayout::relayout(double width)
{
    stackWidth = width;
    const QList<ViewModeRowEntry> old = entries;
    entries.clear();
    bool changed = false;
    for (const ViewModeRowEntry &entry : old) {
        append(makeEntry(entry.firstRow));
        changed = changed || !qFuzzyCompare(entries.last().frame.height() + 1.0,
                                            entry.frame.height() + 1.0);
    }
    return changed;
}

double ViewModeLayout::stackHeight() const
{
    return entries.isEmpty() ? introHeight : entries.last().frame.bottom();
}

std::optional<std::pair<QRectF, TabRowWithMarkupView>> ViewModeLayout::placedRow(int row) const
{
    const int index = entryIndexOfRow(row);
    if (row < 0 || row >= rowCount() || index < 0 || index >= entries.size())
        return std::nullopt;
    const ViewModeRowEntry &entry = entries[index];
    const int within = row - entry.firstRow;
    if (within < 0 || within >= entry.childFrames.size())
        return std::nullopt;
    const QRectF frame = entry.childFrames[within].translated(entry.frame.topLeft());
    int lines = 0;
    if (display.twoColumns) {
        for (int i = 0; i < entry.rowCount; ++i)
            lines = std::max(lines, int(rowView(entry.firstRow + i, frame.width()).lyricLines.size()));
    }
    return std::make_pair(frame, rowView(row, frame.width(), lines));
}

std::optional<QRectF> ViewModeLayout::columnRect(QPoint position) const
{
    const auto placed = placedRow(position.y());
    if (!placed)
        return std::nullopt;
    const auto &[frame, view] = *placed;
    return view.columnHighlightRect(position.x(), frame.size()).translated(frame.topLeft());
}

std::optional<ViewModeLayout::Hit> ViewModeLayout::hitTest(QPointF point) const
{
    for (int i = 0; i < entries.size(); ++i) {
        const QRectF frame = entries[i].frame;
        const double w = frame.width();
        if (!frame.adjusted(-w / 400 * 20, -w / 400 * 10, w / 400 * 20, w / 400 * 10)
                 .contains(point))
            continue;
        int within = 0;
        if (display.twoColumns) {
            const QPointF local = point - frame.topLeft();
            QList<QRectF> frames = entries[i].childFrames;
            // A point in the gap or beside the pair goes to the nearer row.
            within = TabRowSideBySideWithMarkupView::rowAt(local, w, frames);
            if (within < 0)
                within = local.x() < w / 2 || frames.size() < 2 ? 0 : 1;
        }
        const int row = entries[i].firstRow + within;
        const auto placed = placedRow(row);
        if (!placed)
            return std::nullopt;
        const auto &[rowFrame, view] = *placed;
        const QRectF tabArea = view.layout(rowFrame.size()).tabRowView;
        const int count = std::max(1, view.numColumns.value_or(1));
        const double cw = tabArea.width() / count;
        const double x = point.x() - rowFrame.left() - tabArea.left();
        const int column =
            std::clamp(cw > 0 ? int(std::floor(x / cw)) : 0, -1, count - 1);
        const QPoint position(column, row);
        QRectF rect = view.columnHighlightRect(std::max(column, 0), rowFrame.size())
                          .translated(rowFrame.topLeft());
        return Hit{position, rect};
    }
    return std::nullopt;
}
