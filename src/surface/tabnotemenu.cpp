#include "tabnotemenu.h"

#include "library/tabedits.h"

TabNoteMenu::TabNoteMenu(NoteMenuHost &host, QObject *parent) : QObject(parent), host(host)
{
    connect(&forceGestureRecognizer, &ForceLongPressGestureRecognizer::stateChanged, this,
            &TabNoteMenu::handleForceTouch);
}

TabNoteMenu::~TabNoteMenu() = default;

void TabNoteMenu::handleForceTouch(ForceLongPressGestureRecognizer::State state, QPointF location)
{
    using State = ForceLongPressGestureRecognizer::State;
    if (state == State::began) {
        openAt(location);
        return;
    }
    if (!noteContextMenu)
        return;
    const QPointF point = location - host.noteMenuScroll();
    if (state == State::changed) {
        noteContextMenu->moved(point);
        Q_EMIT changed();
    } else if (state == State::ended) {
        noteContextMenu->ended(point);
    } else if (state == State::cancelled || state == State::failed) {
        noteContextMenu->cancelled();
    }
}

void TabNoteMenu::openAt(QPointF location)
{
    const std::optional<NoteMenuPlace> place = host.notePlaceAt(location);
    if (!place)
        return;
    noteContextMenuSource = place->source;
    noteContextMenu = std::make_unique<ForceContextMenu>(place->origin, place->area, this);
    const NoteMenuEntries entries = NoteMenuEntries::forItem(place->item, place->source.itemIndex,
                                                             place->tuning, place->notesOnTab);
    noteContextMenuItemResults = entries.results;
    noteContextMenu->setItems(entries.labels, entries.startIndex);
    noteContextMenu->selectedIndex = entries.startIndex;
    Q_EMIT changed();
}

void TabNoteMenu::forceContextMenuFinished(int selectedIndex)
{
    if (!noteContextMenuSource)
        return;
    const NoteContextMenuSource source = *noteContextMenuSource;
    const QList<ColumnItemType> results =
        noteContextMenuItemResults.value_or(QList<ColumnItemType>());
    noteContextMenuSource.reset();
    noteContextMenuItemResults.reset();
    finishedContextMenu = std::move(noteContextMenu);
    if (selectedIndex >= 0 && selectedIndex < results.size())
        host.noteMenuChose(source, results[selectedIndex]);
    Q_EMIT changed();
}

void TabNoteMenu::tabChanged(const TabChange &change)
{
    using Kind = TabChange::Kind;
    const bool cellsMoved = change.kind != Kind::Columns && change.kind != Kind::Lyrics &&
                            change.kind != Kind::RowsAppended;
    if (!cellsMoved || !noteContextMenuSource)
        return;
    if (noteContextMenu && !noteContextMenu->finished) {
        // Finishes through forceContextMenuFinished(-1), which forgets the cell.
        noteContextMenu->cancelled();
        return;
    }
    noteContextMenuSource.reset();
    noteContextMenuItemResults.reset();
    Q_EMIT changed();
}
