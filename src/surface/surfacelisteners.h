#pragma once

// What the surface tells its owner, the editor.

class EditHighlightListener {
public:
    virtual ~EditHighlightListener() = default;
    virtual void editHighlightMoved(bool atFirstColumn, bool atLastColumn) = 0;
};

class TabRowChangeListener {
public:
    virtual ~TabRowChangeListener() = default;
    virtual void tabWidthChanged(double tabWidth) = 0;
    virtual void tabRowCountChanged() = 0;
    virtual void tabRowPositionChanged(int tabRowIndex, int showingCount, int totalCount) = 0;
    virtual void columnItemChanged() = 0;
    virtual void lyricsFieldEdited() = 0;
};
