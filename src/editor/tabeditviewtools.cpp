// TabEditViewController, the tool modes: magic edit and the tools drawer, which exclude each
// other and chord mode; switching one on switches the others off through their own toggles.

#include "tabeditviewcontroller.h"

#include "editor/chordshortcutmode.h"

#include <cmath>

void TabEditViewController::toggleMagicEditMode()
{
    const bool on = !inMagicEditMode;
    if (on && chordShortcutMode)
        chordShortcutMode->leave();
    if (on && moreToolsViewShowing)
        toggleMoreToolsView();
    inMagicEditMode = on;
    magic->setMode(on);
    hideEditMoveButts();
    if (!on)
        refreshFretHighlights();
    else
        board->setHighlights({});
    Q_EMIT toolsChanged();
    Q_EMIT highlightsChanged();
}

void TabEditViewController::toggleMoreToolsView()
{
    moreToolsViewShowing = !moreToolsViewShowing;
    if (moreToolsViewShowing) {
        if (chordShortcutMode)
            chordShortcutMode->leave();
        if (inMagicEditMode && !shortLayout)
            toggleMagicEditMode();
        // Opening the drawer is seen for this run only; using a tool is seen for good.
        markToolsSeen(false);
    }
    Q_EMIT toolsChanged();
}

void TabEditViewController::tabLetterTapped(double y)
{
    if (!inMagicEditMode)
        return;
    const double pitch = surface->tabRowPitch();
    const double itemHeight = surface->itemHeight();
    if (pitch <= 0 || itemHeight <= 0)
        return;
    const double contentY = y + surface->contentOffset.y();
    const int shownRow = int(std::floor(contentY / pitch));
    const double inRow = contentY - shownRow * pitch - surface->headerBandHeight();
    const int item = int(std::floor(inRow / itemHeight));
    if (shownRow < 0 || shownRow >= surface->showingCount() || item < 0 ||
        item >= surface->stringCount())
        return;
    stringTouched(Strip::TabLetters, item + 1, shownRow);
}
