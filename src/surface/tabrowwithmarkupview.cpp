#include "tabrowwithmarkupview.h"

#include "tabrowvalues.h"

#include <algorithm>

TabRowWithMarkupView::TabRowWithMarkupView(const TabRowData &row, const QStringList &notes,
                                           int capo, int lyricsSize, const Options &opts)
    : options(opts), rowData(row), stringNotes(notes), stringCount(int(notes.size())),
      capoFretNum(capo), lyricsSizePercentange(lyricsSize)
{
    if (stringCount == 0)
        stringCount = row.stringCount;
    numColumns = int(row.colDatas.size());
    if (*numColumns == 0)
        numColumns.reset();
    if (options.isEditMode) {
        if (const auto text = row.lyricText())
            lyricLines = QStringList{*text};
    } else {
        lyricLines = row.lyricLines;
        while (lyricLines.size() < options.minLyricLines)
            lyricLines.prepend(QString());
    }
    if (lyricLines.isEmpty())
        lyricLines.append(QString());
}

bool TabRowWithMarkupView::showsChordNames() const
{
    return options.showChordNamesInit && !options.emptyChordNamesOverride;
}

double TabRowWithMarkupView::chordBand() const
{
    return options.isEditMode ? TabRowValues::chordEditHeight : TabRowValues::chordViewHeight;
}

double TabRowWithMarkupView::lyricBand() const
{
    return options.isEditMode ? TabRowValues::lyricsEditHeight : TabRowValues::lyricsViewHeight;
}

void TabRowWithMarkupView::setWidth(double width)
{
    const double total = TabRowValues::totalHeight;
    const double c = chordBand();
    const double l = lyricBand();
    double ratio;
    if (!options.showTabRowViews) {
        ratio = showsChordNames() ? 0.08904 : 0.0477;
    } else {
        const double k1 = options.showLyrics ? 1.0 : 1.0 - l / total;
        const double k2 = numColumns ? 30.0 / *numColumns : 1.0;
        const double k3 =
            stringCount == 6 ? 1.0 : 1.0 - TabRowValues::stringHeight / total * (6 - stringCount);
        const double k4 = showsChordNames() ? total / (total - c) : 1.0;
        ratio = 0.318 * k1 * k2 * k3 * k4;
    }
    requestedHeight = ratio * width;
    frameSize = QSizeF(width, requestedHeight);

    lyricUnadjustedHeight = options.isEditMode ? frameSize.height() : requestedHeight;
    const double d = total - (options.hideColHeaders ? 25.0 : 0.0) -
                     TabRowValues::stringHeight * (6 - stringCount);
    const double share = options.showTabRowViews ? l / d : (showsChordNames() ? 0.59 : 1.0);
    const double a = share * lyricUnadjustedHeight;
    const double b = a * lyricsSizePercentange / 100.0;
    lyricLineHeight = b * 0.75;
    lyricsHeight = options.showLyrics ? b - lyricLineHeight + lyricLineHeight * lyricLines.size()
                                      : b - lyricLineHeight;
    // Room for the turned capo label beside the letters.
    if (capoFretNum >= 1)
        lyricsHeight = std::max(lyricsHeight, 37.0 / d * frameSize.height());
    if (lyricsHeight != a && options.showLyrics)
        requestedHeight += lyricsHeight - b;
}

TabRowWithMarkupView::Layout TabRowWithMarkupView::layout(const QSizeF &size) const
{
    Layout result;
    const double w = size.width();
    const double s = numColumns ? 30.0 / *numColumns : 1.0;
    const double a = options.showNotesView ? s * w * 0.05 : 0.0;
    const double lyrics = options.showLyrics ? lyricsHeight : 0.0;
    result.lyricsView = QRectF(a, 0, w - a, lyrics);

    const double f = s * (w - a) * 0.032;
    const double fp = f * lyricsSizePercentange / 100.0;
    result.lyricFontSize = fp;
    const double labelX = s * (w - a) / 109.0;
    double y = options.isEditMode ? f * (100 - lyricsSizePercentange) / 100.0 / 1.3 + 3.0 : 0.0;
    for (qsizetype i = 0; i < lyricLines.size(); ++i) {
        result.lyricLabels.append(QRectF(a + labelX, y, w - a - labelX, fp * 1.4));
        y += lyricLineHeight;
    }

    // Below the lyrics the design heights share what is left.
    const double c = showsChordNames() ? chordBand() : 0.0;
    const double strings = TabRowValues::totalHeight - TabRowValues::lyricsEditHeight -
                           TabRowValues::chordEditHeight -
                           TabRowValues::stringHeight * (6 - stringCount);
    const double rest = std::max(size.height() - lyrics, 0.0);
    const double unit = options.showTabRowViews ? rest / (c + strings) : rest / std::max(c, 1.0);
    double top = options.lyricsBelow ? 0.0 : lyrics;
    if (showsChordNames()) {
        const double overlap =
            options.showLyrics && !options.lyricsBelow ? TabRowValues::chordOverlap * unit : 0.0;
        result.chordNamesDisplay = QRectF(a, top - overlap, w - a, c * unit);
        top = result.chordNamesDisplay.bottom();
    }
    if (options.showTabRowViews)
        result.tabRowView = QRectF(a, top, w - a, strings * unit);
    if (options.lyricsBelow) {
        const double below = options.showTabRowViews ? result.tabRowView.bottom()
                                                     : result.chordNamesDisplay.bottom();
        result.lyricsView.moveTop(below);
        for (QRectF &label : result.lyricLabels)
            label.translate(0, below);
    }
    if (options.showNotesView) {
        result.notesView = QRectF(0, 0, a, size.height());
        result.notesTopPadding = result.tabRowView.top();
    }
    return result;
}

QRectF TabRowWithMarkupView::columnHighlightRect(int column, const QSizeF &size) const
{
    const QRectF row = layout(size).tabRowView;
    const int count = numColumns.value_or(1);
    const double cw = row.width() / count;
    const double lastX = cw * (count - 1);
    const double margin = cw * 3.0 / 25.0 * 0.5;
    return QRectF(row.left() + std::min(cw * column, lastX) - margin, 0, cw + margin,
                  size.height());
}

QList<QRectF> TabRowSideBySideWithMarkupView::childFrames(double width,
                                                          const QList<double> &heights)
{
    QList<QRectF> frames;
    const double childWidth = width * 0.5 - width * 0.02 * 0.5;
    for (int i = 0; i < numTabRows; ++i) {
        const double h = i < heights.size() ? heights[i] : 0.0;
        frames.append(QRectF(i * (childWidth + width * 0.02), 0, childWidth, h));
    }
    return frames;
}

int TabRowSideBySideWithMarkupView::rowAt(QPointF point, double width, const QList<QRectF> &frames)
{
    const double dx = width / 400.0 * 20.0;
    const double dy = width / 400.0 * 10.0;
    for (int i = 0; i < frames.size(); ++i) {
        if (frames[i].adjusted(-dx, -dy, dx, dy).contains(point))
            return i;
    }
    return -1;
}
