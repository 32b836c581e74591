#include "chordshortcutmode.h"

#include "chordsearch.h"
#include "music/chordshortcutlibrary.h"
#include "services/dialogpresenter.h"
#include "services/saveddata.h"
#include "surface/tabeditview.h"

#include <QPointer>
#include <QVariantMap>

#include <algorithm>

ChordShortcutMode::ChordShortcutMode(TabEditView *surfaceView, SavedData &settings,
                                     QObject *parent)
    : QObject(parent), surface(surfaceView), saved(settings)
{
    searchDelayTimer.setSingleShot(true);
    connect(&searchDelayTimer, &QTimer::timeout, this, &ChordShortcutMode::searchDelayElapsed);
}

QList<ChordShortcut> ChordShortcutMode::chords() const
{
    return ChordShortcutLibrary::shared().chordsFor(surface->stringNotes,
                                                    saved.currentCustomChords());
}

// Entering and leaving

void ChordShortcutMode::toggleChordShortcutMode()
{
    inChordShortcutMode = !inChordShortcutMode;
    if (inChordShortcutMode) {
        if (leaveOtherModes)
            leaveOtherModes();
        refreshCustomEnabled();
        rebuildChordBar();
    } else {
        Q_EMIT searchEditingEnded();
        searchDelayTimer.stop();
        pendingSearch.reset();
        topButtons.clear();
        clearResults();
        Q_EMIT barChanged();
    }
    Q_EMIT activeChanged();
}

void ChordShortcutMode::leave()
{
    if (inChordShortcutMode)
        toggleChordShortcutMode();
}

void ChordShortcutMode::setCoverSize(double width, double height)
{
    if (width == coverWidth && height == fretboardHeight)
        return;
    coverWidth = width;
    fretboardHeight = height;
    if (!inChordShortcutMode)
        return;
    Q_EMIT searchEditingEnded();
    rebuildChordBar();
    clearResults();
}

QSizeF ChordShortcutMode::buttonSize(const QString &name) const
{
    // Chord names are short: a rough width per character will do until the screen measures.
    const QSizeF label = measureName ? measureName(name) : QSizeF(14.0 * name.size(), 33.0);
    const double vertPadding = fretboardHeight >= 282.0 ? 5.0 : 2.0;
    return QSizeF(label.width() + 2 * horizPadding, label.height() + 2 * vertPadding);
}

void ChordShortcutMode::rebuildChordBar()
{
    topButtons.clear();
    const double limit = coverWidth - barX - 30.0;
    const QList<RecentChord> recents = saved.recentChords.value_or(QList<RecentChord>());
    double x = 0.0;
    // The first chord that does not fit ends the bar, even if a narrower one behind it would.
    for (const ChordShortcut &chord : ChordSearch::barSequence(chords(), recents)) {
        if (x >= limit)
            break;
        const QSizeF size = buttonSize(chord.name);
        if (x + size.width() < limit)
            topButtons.append(Button{chord, QRectF(QPointF(barX + x, barY), size)});
        x += size.width() + buttonGap;
    }
    Q_EMIT barChanged();
}

// Search

void ChordShortcutMode::setSearchText(const QString &text)
{
    if (text == csSearchText)
        return;
    csSearchText = text;
    Q_EMIT searchTextUpdated();
}

void ChordShortcutMode::searchTextChanged(const QString &text)
{
    setSearchText(text);
    if (searchDelayTimer.isActive()) {
        pendingSearch = text;
        searchDelayTimer.start(searchSettleDelay);
        return;
    }
    pendingSearch.reset();
    searchChords(text);
    searchDelayTimer.start(searchFirstDelay);
}

void ChordShortcutMode::searchDelayElapsed()
{
    searchDelayTimer.stop();
    if (const std::optional<QString> text = std::exchange(pendingSearch, std::nullopt))
        searchChords(*text);
}

void ChordShortcutMode::searchChords(const QString &text)
{
    layoutSearchResults(ChordSearch::search(chords(), text));
}

void ChordShortcutMode::layoutSearchResults(const QList<ChordShortcut> &found)
{
    searchResultButtons.clear();
    const double wrapAt = coverWidth - resultsX - 30.0;
    const double bottom = fretboardHeight - resultsY - 10.0;
    double x = 0.0;
    double y = 0.0;
    for (const ChordShortcut &chord : found) {
        const QSizeF size = buttonSize(chord.name);
        if (x > 0.0 && x + size.width() > wrapAt) {
            x = 0.0;
            y += resultLinePitch;
        }
        if (y > 0.0 && y + size.height() > bottom)
            break;
        searchResultButtons.append(
            Button{chord, QRectF(QPointF(resultsX + x, resultsY + y), size)});
        x += size.width() + buttonGap;
    }
    Q_EMIT resultsChanged();
}

void ChordShortcutMode::clearResults()
{
    if (searchResultButtons.isEmpty())
        return;
    searchResultButtons.clear();
    Q_EMIT resultsChanged();
}

bool ChordShortcutMode::takeFirstResult()
{
    // What was typed last counts, even if its search still waits.
    searchDelayElapsed();
    if (searchResultButtons.isEmpty())
        return false;
    insertFromResults(0);
    return true;
}

// Inserting

void ChordShortcutMode::insertFromBar(int index)
{
    if (index >= 0 && index < topButtons.size())
        insertChord(topButtons[index].chord, false);
}

void ChordShortcutMode::insertFromResults(int index)
{
    if (index >= 0 && index < searchResultButtons.size())
        insertChord(searchResultButtons[index].chord, true);
}

void ChordShortcutMode::insertChord(const ChordShortcut &chord, bool fromSearch)
{
    Q_EMIT searchEditingEnded();
    surface->putColumnAtCursor(chord.name, chord.colItems);

    // Only a search result becomes recent: the bar keeps its order under the finger.
    bool recentChanged = false;
    if (fromSearch)
        recentChanged = saved.addRecentChord(chord);
    if (chord.isCustom && !recentChanged) {
        QList<ChordShortcut> customs = saved.customChordShortcuts.value_or(QList<ChordShortcut>());
        const auto found = std::find(customs.cbegin(), customs.cend(), chord);
        // The stored shape moves up, not the one fitted to this tuning.
        if (found != customs.cend() && moveToFront(customs, *found, saved.customChordLimit).changed) {
            saved.customChordShortcuts = customs;
            saved.storeCloudCustomChords(customs);
            recentChanged = true;
        }
    }
    if (recentChanged)
        saved.save();
    if (fromSearch)
        rebuildChordBar();
    refreshCustomEnabled();

    const qint64 n = std::min<qint64>(saved.autoCursorAmount, 3);
    if (n > 0)
        surface->setEditPosition(surface->editColIndex + int(n), surface->editShowingTabRowIndex);
    if (saved.playSounds && playChord)
        playChord(chord.colItems);
    if (chordInserted)
        chordInserted();
}

void ChordShortcutMode::refreshCustomEnabled()
{
    const bool enabled = !surface->currentColumnIsBlank();
    if (enabled == csCustomEnabled)
        return;
    csCustomEnabled = enabled;
    Q_EMIT customEnabledChanged();
}

// The user's chords

void ChordShortcutMode::longPressed(int index, bool inResults)
{
    const QList<Button> &buttons = inResults ? searchResultButtons : topButtons;
    if (index < 0 || index >= buttons.size() || !buttons[index].chord.isCustom || !dialogs)
        return;
    customChordShortToDelete = buttons[index].chord;
    QPointer<ChordShortcutMode> self(this);
    dialogs->presentConfirm(u"Delete the custom chord shortcut \""_qs +
                                customChordShortToDelete->name +
                                u"\"? This cannot be undone."_qs,
                            u"Delete"_qs, [self] {
                                if (self)
                                    self->deleteConfirmed();
                            });
}

void ChordShortcutMode::deleteConfirmed()
{
    const std::optional<ChordShortcut> chord =
        std::exchange(customChordShortToDelete, std::nullopt);
    if (!chord)
        return;
    saved.deleteCustomChord(*chord);
    // Deleting always writes the file, wherever the chords are kept.
    saved.save();
    rebuildChordBar();
    if (!csSearchText.isEmpty())
        searchChords(csSearchText);
}

void ChordShortcutMode::customChordCreated(const QString &name)
{
    saved.saveCustomChord(ChordShortcut{name, surface->currentColumnItems(), true});
    rebuildChordBar();
    clearResults();
    setSearchText(QString());
}

QVariantList ChordShortcutMode::buttonsForView(const QList<Button> &buttons)
{
    QVariantList list;
    for (const Button &button : buttons) {
        list.append(QVariantMap{{u"name"_qs, button.chord.name},
                                {u"isCustom"_qs, button.chord.isCustom},
                                {u"x"_qs, button.frame.x()},
                                {u"y"_qs, button.frame.y()},
                                {u"width"_qs, button.frame.width()},
                                {u"height"_qs, button.frame.height()}});
    }
    return list;
}
