#pragma once

#include "forcecontextmenu.h"
#include "forcelongpressgesturerecognizer.h"
#include "notemenuentries.h"

#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QStringList>

#include <memory>
#include <optional>

struct TabChange;

// Where a note menu opens: the cell, what it holds, and how the entries are labelled and
// placed.
struct NoteMenuPlace {
    NoteContextMenuSource source;
    ColumnItemType item;
    QStringList tuning;
    bool notesOnTab = false;
    // Where the finger is and where the ring may stand, in the surface's frame.
    QPointF origin;
    QRectF area;
};

// What the note menu asks of the surface it opens on.
class NoteMenuHost {
public:
    virtual ~NoteMenuHost() = default;
    // The cell under a point in content coordinates, if a menu may open there.
    virtual std::optional<NoteMenuPlace> notePlaceAt(QPointF location) const = 0;
    // The content point at the frame's top left: the ring follows the finger in the frame.
    virtual QPointF noteMenuScroll() const = 0;
    // The user chose `item` for the cell the menu opened on.
    virtual void noteMenuChose(const NoteContextMenuSource &source, const ColumnItemType &item) = 0;
};

// The note menu: a long press on a cell opens a ring of what the cell may become, sliding
// picks an entry and lifting chooses it. It holds the menu's state; the surface finds the cell
// and writes the choice.
class TabNoteMenu : public QObject, public ForceContextMenuResponder {
    Q_OBJECT

public:
    explicit TabNoteMenu(NoteMenuHost &host, QObject *parent = nullptr);
    ~TabNoteMenu() override;

    // The long press, fed with points in content coordinates.
    ForceLongPressGestureRecognizer forceGestureRecognizer;

    const std::optional<NoteContextMenuSource> &source() const { return noteContextMenuSource; }
    const std::unique_ptr<ForceContextMenu> &menu() const { return noteContextMenu; }
    const std::optional<QList<ColumnItemType>> &itemResults() const
    {
        return noteContextMenuItemResults;
    }

    void handleForceTouch(ForceLongPressGestureRecognizer::State state, QPointF location);
    // Opens on the cell at a point in content coordinates; off the cells nothing opens.
    void openAt(QPointF location);
    void forceContextMenuFinished(int selectedIndex) override;
    // A change that moves cells leaves the menu's cell holding something else: the open menu
    // is cancelled rather than write where the finger no longer is.
    void tabChanged(const TabChange &change);

Q_SIGNALS:
    void changed();

private:
    NoteMenuHost &host;
    std::optional<NoteContextMenuSource> noteContextMenuSource;
    std::unique_ptr<ForceContextMenu> noteContextMenu;
    // The menu is on the call stack when it finishes: it is kept aside until the next one.
    std::unique_ptr<ForceContextMenu> finishedContextMenu;
    std::optional<QList<ColumnItemType>> noteContextMenuItemResults;
};
