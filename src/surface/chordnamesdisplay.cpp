#include "chordnamesdisplay.h"

#include <algorithm>
#include <cmath>

const QString ChordNamesDisplay::placeholder = QString(QChar(0x2219));

ChordNamesDisplay::ChordNamesDisplay(const Names &names, const QRectF &frame)
    : chordNames(names), frame(frame)
{
    renderNeeded = true;
}

const ChordNamesDisplay::Names &ChordNamesDisplay::namesShown() const
{
    return overlayChordNames ? *overlayChordNames : chordNames;
}

void ChordNamesDisplay::render()
{
    renderNeeded = false;
    labels.clear();
    shownNames = namesShown();
    if (overlayBlanksStartIndex) {
        // The source of a moved block: its names are drawn as gone, unless the block landed
        // on them.
        for (int k = 0; k < highlightIndices.size(); ++k) {
            const int column = *overlayBlanksStartIndex + k;
            if (column >= 0 && column < shownNames.size() && !highlightIndices.contains(column))
                shownNames[column] = placeholder;
        }
    }
    const int count = int(shownNames.size());
    if (count == 0)
        return;
    const double cw = frame.width() / count;
    double labelHeight = std::min(frame.height(), cw);
    if (viewMode)
        labelHeight *= 1.1;
    for (int i = 0; i < count; ++i) {
        const std::optional<QString> &name = shownNames[i];
        ChordNameLabel label;
        label.cell = QRectF(i * cw, 0, cw, labelHeight);
        label.width = cw;
        label.height = labelHeight;
        label.shown = !viewMode || (name && *name != placeholder);
        label.highlighted = highlightIndices.contains(i);
        labels.append(label);
        setChordName(name, i, true);
    }
}

void ChordNamesDisplay::setChordNames(const Names &names)
{
    chordNames = names;
    requestRender();
}

void ChordNamesDisplay::setChordName(const std::optional<QString> &name, int column,
                                     bool fromRender)
{
    if (!fromRender) {
        if (column >= 0 && column < chordNames.size())
            chordNames[column] = name;
        if (column >= 0 && column < shownNames.size())
            shownNames[column] = name;
        if (column < 0 || column >= labels.size())
            return;
    }
    ChordNameLabel &label = labels[column];
    label.text = name ? *name : placeholder;
    fitLabel(column);
}

static qsizetype nameLength(const ChordNamesDisplay::Names &names, int column)
{
    if (column < 0 || column >= names.size() || !names[column])
        return 0;
    return names[column]->size();
}

void ChordNamesDisplay::fitLabel(int column)
{
    ChordNameLabel &label = labels[column];
    const double cw = label.cell.width();
    label.rotation = 0.0;
    label.x = 0.0;
    label.width = cw;
    if (nameLength(shownNames, column) < 2)
        return;
    const qsizetype p = nameLength(shownNames, column - 1);
    const qsizetype q = nameLength(shownNames, column + 1);
    if (p < 2 && q < 2) {
        // Short neighbours lend their room.
        const double m = (q >= 1 || p > 0 ? 2.0 : 8.0) * cw / 25.0;
        label.x = -m;
        label.width = cw + 2 * m;
        return;
    }
    packLabel(column);
    if (p > 1 && column - 1 < labels.size())
        packLabel(column - 1);
    if (q > 1 && column + 1 < labels.size())
        packLabel(column + 1);
}

void ChordNamesDisplay::packLabel(int column)
{
    ChordNameLabel &label = labels[column];
    const double cw = label.cell.width();
    const double m = 2 * cw / 25.0 * (viewMode ? 0.9 : 1.0);
    label.rotation = 0.0;
    label.x = m;
    label.width = cw - 2 * m;
    // Three long names side by side stay readable when each leans up to the right.
    if (label.text.size() >= 3)
        label.rotation = -0.3141592653589793;
}

void ChordNamesDisplay::highlight(std::optional<int> column, bool clearFirst)
{
    if (clearFirst) {
        for (ChordNameLabel &label : labels)
            label.highlighted = false;
        highlightIndices.clear();
    }
    if (!column)
        return;
    highlightIndices.append(*column);
    if (*column >= 0 && *column < labels.size())
        labels[*column].highlighted = true;
}

void ChordNamesDisplay::showOverlay(int startColumn, const Names &names)
{
    overlayChordNames.reset();
    highlightIndices.clear();
    requestRender();
    Names overlay = chordNames;
    for (int k = 0; k < names.size(); ++k) {
        const int column = startColumn + k;
        if (column >= 0 && column < overlay.size())
            overlay[column] = names[k] ? names[k] : std::optional<QString>(placeholder);
        highlightIndices.append(column);
    }
    overlayChordNames = overlay;
}

void ChordNamesDisplay::showOverlayBlanks(int startColumn)
{
    overlayBlanksStartIndex = startColumn;
    requestRender();
}

void ChordNamesDisplay::clearOverlayBlanks()
{
    overlayBlanksStartIndex.reset();
    requestRender();
}

int ChordNamesDisplay::columnAt(double x) const
{
    if (chordNames.isEmpty() || frame.width() <= 0)
        return -1;
    const int column = int(std::trunc(x / (frame.width() / double(chordNames.size()))));
    return std::clamp(column, 0, int(chordNames.size()) - 1);
}

void ChordNamesDisplay::tap(double x)
{
    const int column = columnAt(x);
    if (column >= 0 && listener)
        listener->chordNameTapped(this, column);
}
