// The editor's side of the tab settings dialog: opening it, and applying what it saves.

#include "tabeditviewcontroller.h"

#include "editor/chordshortcutmode.h"

#include "services/dialogpresenter.h"
#include "services/saveddata.h"

#include <algorithm>

void TabEditViewController::openSettingsMenu()
{
    // Nothing goes over a dialog, and the short layout has no room for one.
    if (tabSettingsDialog || shortLayout || (dialogs && dialogs->isPresenting()))
        return;
    tabSettingsDialog = std::make_unique<TabSettingsDialogViewController>(
        tabData(), SavedData::shared(), this, int(board->numFrets));
    connect(tabSettingsDialog.get(), &TabSettingsDialogViewController::dismissed, this,
            &TabEditViewController::closeSettingsMenu);
    hideEditMoveButts();
    Q_EMIT settingsDialogChanged();
}

void TabEditViewController::closeSettingsMenu()
{
    if (!tabSettingsDialog)
        return;
    // It may be the one calling: it goes once it has returned.
    tabSettingsDialog.release()->deleteLater();
    Q_EMIT settingsDialogChanged();
}

void TabEditViewController::applyTabSettings(const QStringList &tuning, qint64 capo,
                                             qint64 lyricSize, const std::optional<QString> &intro,
                                             qint64 tempo, bool notesOnTabChanged,
                                             bool fretCountChanged, bool colHeadersChanged)
{
    if (!lgDocument || !lgDocument->tabData)
        return;
    // The tab's part is one step, undone as a whole; the views follow on tabValuesChanged.
    TabValues values{tuning, capo, std::clamp<qint64>(lyricSize, 25, 120), intro};
    lgDocument->edits()->setTabValues(values);

    // The tempo belongs to view mode's playback and has no undo of its own.
    if (lgDocument->tabData->tempo != tempo) {
        lgDocument->tabData->tempo = tempo;
        lgDocument->updateChangeCount(LutegridDocument::ChangeKind::Done);
    }

    // The global preferences the screen shows. Each change is carried out, even together.
    const SavedData &saved = SavedData::shared();
    surface->settings.hideColHeaders = saved.hideColHeaders;
    surface->settings.notesOnTab = saved.notesOnTab;
    if (fretCountChanged)
        board->refreshFretCount(saved.lastFretCount);
    if (colHeadersChanged) {
        initialTabEditViewHeight = 279.0 - (saved.hideColHeaders ? 25.0 : 0.0);
        surface->refreshShowingRows(true);
        if (prevViewSize) {
            const QSizeF size = *std::exchange(prevViewSize, std::nullopt);
            applyViewSize(size.width(), size.height());
        }
    } else if (notesOnTabChanged) {
        surface->refreshShowingRows(true);
    }
    refreshFretHighlights();
    Q_EMIT surface->layoutChanged();
    Q_EMIT layoutChanged();
}

void TabEditViewController::tabValuesChanged(bool stringCountChanged)
{
    surface->lyricsSizePercentage = int(tabData().lyricSize);
    if (stringCountChanged) {
        this->stringCountChanged();
    } else {
        surface->stringNotes = tabData().stringNotes;
        for (VisibeTabRowView &row : surface->showingTabRows)
            row.lyricsField.fontSize = 24.0 * surface->lyricsSizePercentage / 100.0;
        surface->refreshShowingRows(true);
    }
    refreshFretHighlights();
    // The screen's rows, letters and lyric fields read the new values.
    Q_EMIT surface->layoutChanged();
    Q_EMIT layoutChanged();
}

void TabEditViewController::stringCountChanged()
{
    // The tools that hold a selection or a chord for the old strings end first, through their
    // own toggles so that what they show goes with them.
    if (chordShortcutMode)
        chordShortcutMode->leave();
    if (inMagicEditMode)
        toggleMagicEditMode();
    applyStringLayout();
}
