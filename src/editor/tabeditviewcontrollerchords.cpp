// TabEditViewController: chord shortcut mode, the user's chords, column headers and lyric lines.
// Each is an object of its own; the controller makes them and tells them what the editor does.

#include "tabeditviewcontroller.h"

#include "services/saveddata.h"
#include "sound/soundmanager.h"

void TabEditViewController::setUpChordsAndLyrics()
{
    SavedData &saved = SavedData::shared();
    chordShortcutMode = std::make_unique<ChordShortcutMode>(surface, saved);
    chordShortcutMode->dialogs = dialogs;
    chordShortcutMode->leaveOtherModes = [this] {
        if (inMagicEditMode && !shortLayout)
            toggleMagicEditMode();
        if (moreToolsViewShowing)
            toggleMoreToolsView();
    };
    chordShortcutMode->playChord = [this](const QList<ColumnItemType> &items) {
        SoundManager &sound = soundManager ? *soundManager : SoundManager::shared();
        sound.playColumnItems(items, surface->stringNotes, false);
    };
    chordShortcutMode->chordInserted = [this] {
        refreshFretHighlights();
        showEditMoveButts();
    };
    customChordDialog = std::make_unique<CustomChordCreateDialog>(saved);
    customChordDialog->customChordCreated = [this](const QString &name) {
        chordShortcutMode->customChordCreated(name);
    };
    chordNameDialog = std::make_unique<SelectChordNameDialog>(surface);
    connect(surface, &TabEditView::chordNameDialogRequested, this, [this](int row, int column) {
        lyricDropdown->closeLyricDropdown();
        chordNameDialog->open(row, column);
    });
    lyricDropdown = std::make_unique<LyricLineDropdown>(surface);
}

void TabEditViewController::toggleChordShortcutMode()
{
    chordShortcutMode->dialogs = dialogs;
    chordShortcutMode->toggleChordShortcutMode();
}

void TabEditViewController::createCustomShortcut()
{
    // Only a column with something in it makes a chord.
    if (surface->currentColumnIsBlank())
        return;
    customChordDialog->open(surface->currentColumnItems());
}

void TabEditViewController::lyricsFieldEdited()
{
    lyricDropdown->closeLyricDropdown();
}
