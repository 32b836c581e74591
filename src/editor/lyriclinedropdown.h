#pragma once

#include <QObject>
#include <QVariantList>

class TabEditView;

// The dropdown at a row's left edge that chooses, adds and removes the row's lyric lines, up to
// five through it. It keeps only which shown row it is open for; the lines are the row's.
class LyricLineDropdown : public QObject {
    Q_OBJECT
    Q_PROPERTY(int activeLyricRowIndex READ activeRow NOTIFY changed)
    // One entry per line and the adding entry: {text, selected, adding}.
    Q_PROPERTY(QVariantList entries READ entries NOTIFY changed)

public:
    static constexpr double lyricLineDropdownSelectionHeight = 38.0;
    static constexpr int maxLyricLines = 5;

    explicit LyricLineDropdown(TabEditView *surface, QObject *parent = nullptr);

    int activeRow() const { return activeLyricRowIndex; }
    QVariantList entries() const;
    int activeLyricRowIndex = -1;
    // The first shown row when it opened: once the rows scroll it belongs to another row.
    int openedAtTabRowIndex = -1;

    // The hamburger of a shown row: opens its dropdown, or closes it when it is open already.
    Q_INVOKABLE void lyricLineButtPress(int shownRow);
    void openLyricDropdown(int shownRow);
    Q_INVOKABLE void closeLyricDropdown();
    // Shows the lines anew, as after an undo; a closed dropdown stays closed.
    void reopenLyricDropdown();
    // A touch at `y` in the dropdown: a line is chosen, or the adding entry adds one.
    Q_INVOKABLE void lyricDropdownTouched(double y);
    // The remove button of the entry whose centre is at `y`.
    Q_INVOKABLE void lyricLineRemovePress(double y);

Q_SIGNALS:
    void changed();

private:
    int modelRow() const;

    TabEditView *surface;
};
