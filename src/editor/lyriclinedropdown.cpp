#include "lyriclinedropdown.h"

#include "surface/tabeditview.h"

#include <QVariantMap>

#include <cmath>

LyricLineDropdown::LyricLineDropdown(TabEditView *surfaceView, QObject *parent)
    : QObject(parent), surface(surfaceView)
{
}

int LyricLineDropdown::modelRow() const
{
    if (activeLyricRowIndex < 0)
        return -1;
    const int row = surface->tabRowIndex + activeLyricRowIndex;
    return row < surface->tabRows.size() ? row : -1;
}

QVariantList LyricLineDropdown::entries() const
{
    const int row = modelRow();
    if (row < 0)
        return {};
    const TabRowData &data = surface->tabRows[row];
    QVariantList list;
    for (int i = 0; i < data.lyricLines.size(); ++i) {
        const QString &line = data.lyricLines[i];
        list.append(QVariantMap{
            {u"text"_qs, QString(QString::number(i + 1) + u": "_qs +
                                 (line.isEmpty() ? u"-- blank line --"_qs : line))},
            {u"selected"_qs, i == data.selectedLyricLineIndex},
            {u"adding"_qs, false}});
    }
    // A file may bring more lines than five: then none can be added here.
    if (data.lyricLines.size() < maxLyricLines)
        list.append(QVariantMap{{u"text"_qs, u"+  add another line"_qs},
                                {u"selected"_qs, false},
                                {u"adding"_qs, true}});
    return list;
}

void LyricLineDropdown::lyricLineButtPress(int shownRow)
{
    openLyricDropdown(shownRow);
}

void LyricLineDropdown::openLyricDropdown(int shownRow)
{
    const int old = activeLyricRowIndex;
    closeLyricDropdown();
    // A second press on the same hamburger only closes.
    if (shownRow == old)
        return;
    if (shownRow < 0 || surface->tabRowIndex + shownRow >= surface->tabRows.size())
        return;
    // Typed text still waiting for its second goes to the line it was typed on first.
    surface->commitLyricsField();
    activeLyricRowIndex = shownRow;
    openedAtTabRowIndex = surface->tabRowIndex;
    Q_EMIT changed();
}

void LyricLineDropdown::closeLyricDropdown()
{
    if (activeLyricRowIndex < 0)
        return;
    activeLyricRowIndex = -1;
    Q_EMIT changed();
}

void LyricLineDropdown::reopenLyricDropdown()
{
    const int row = activeLyricRowIndex;
    closeLyricDropdown();
    if (row >= 0)
        openLyricDropdown(row);
}

void LyricLineDropdown::lyricDropdownTouched(double y)
{
    const int row = modelRow();
    if (row < 0 || y < 0)
        return;
    const int line = int(std::trunc(y / lyricLineDropdownSelectionHeight));
    const int count = int(surface->tabRows[row].lyricLines.size());
    if (line < count) {
        surface->selectLyricLine(activeLyricRowIndex, line);
        closeLyricDropdown();
        return;
    }
    if (count >= maxLyricLines || line > count)
        return;
    // The adding entry: one empty line, one step.
    surface->insertLyricLine(activeLyricRowIndex, count, QString());
    reopenLyricDropdown();
}

void LyricLineDropdown::lyricLineRemovePress(double y)
{
    if (modelRow() < 0 || y < 0)
        return;
    const int line = int(std::trunc(y / lyricLineDropdownSelectionHeight));
    surface->removeLyricLine(activeLyricRowIndex, line);
    reopenLyricDropdown();
}
