#include "lgundomanager.h"

#include <QTimer>

#include <utility>

LgUndoManager::LgUndoManager(QObject *parent) : QObject(parent) {}

void LgUndoManager::beginUndoGrouping()
{
    if (level == 0 && groupsByEvent && !undoing && !redoing && !eventGroupOpen) {
        eventGroupOpen = true;
        ++level;
        queueEventGroupClose();
    }
    ++level;
}

void LgUndoManager::queueEventGroupClose()
{
    if (closeQueued)
        return;
    closeQueued = true;
    QTimer::singleShot(0, this, [this] {
        closeQueued = false;
        closeEventGroup();
    });
}

void LgUndoManager::endUndoGrouping()
{
    if (level == 0)
        return;
    --level;
    if (level == 1 && eventGroupOpen)
        queueEventGroupClose();
    if (level > 0 || undoing || redoing)
        return;
    // An explicit outermost group, with grouping by event off or while undoing or redoing.
    Group group = std::exchange(openGroup, {});
    if (group.isEmpty())
        return;
    push(undoStack, std::move(group));
    Q_EMIT changed(Change::Done);
}

void LgUndoManager::closeEventGroup()
{
    if (!eventGroupOpen)
        return;
    // An explicit group still open at the end of the turn stays open with it.
    if (level > 1)
        return;
    eventGroupOpen = false;
    level = 0;
    Group group = std::exchange(openGroup, {});
    if (group.isEmpty())
        return;
    push(undoStack, std::move(group));
    Q_EMIT changed(Change::Done);
}

void LgUndoManager::registerUndo(Handler handler)
{
    if (!handler)
        return;
    if (undoing || redoing) {
        // Undo and redo run one group at a time and collect the inverse into openGroup.
        openGroup.append(std::move(handler));
        return;
    }
    redoStack.clear();
    if (level == 0) {
        if (!groupsByEvent) {
            push(undoStack, Group{std::move(handler)});
            Q_EMIT changed(Change::Done);
            return;
        }
        beginUndoGrouping();
        --level;
    }
    openGroup.append(std::move(handler));
}

bool LgUndoManager::canUndo() const
{
    return !undoStack.isEmpty() || (!openGroup.isEmpty() && !undoing && !redoing);
}

bool LgUndoManager::canRedo() const
{
    return !redoStack.isEmpty() && openGroup.isEmpty();
}

void LgUndoManager::push(QList<Group> &stack, Group group)
{
    stack.append(std::move(group));
    if (levelsOfUndo > 0) {
        while (stack.size() > levelsOfUndo)
            stack.removeFirst();
    }
}

void LgUndoManager::runGroup(QList<Group> &from, QList<Group> &to, bool &flag)
{
    Group group = from.takeLast();
    Group collected = std::exchange(openGroup, {});
    flag = true;
    for (auto it = group.crbegin(); it != group.crend(); ++it)
        (*it)();
    flag = false;
    Group inverse = std::exchange(openGroup, std::move(collected));
    if (!inverse.isEmpty())
        push(to, std::move(inverse));
}

void LgUndoManager::undo()
{
    if (undoing || redoing)
        return;
    if (eventGroupOpen && level <= 1)
        closeEventGroup();
    if (undoStack.isEmpty() || level > 0)
        return;
    runGroup(undoStack, redoStack, undoing);
    Q_EMIT changed(Change::Undone);
}

void LgUndoManager::redo()
{
    if (undoing || redoing || redoStack.isEmpty() || level > 0)
        return;
    runGroup(redoStack, undoStack, redoing);
    Q_EMIT changed(Change::Redone);
}

void LgUndoManager::removeAllActions()
{
    undoStack.clear();
    redoStack.clear();
    openGroup.clear();
    eventGroupOpen = false;
    level = 0;
}

QString LgUndoManager::undoMenuTitleForUndoActionName(const QString &actionName) const
{
    return actionName.isEmpty() ? tr("Undo") : tr("Undo %1").arg(actionName);
}

QString LgUndoManager::redoMenuTitleForUndoActionName(const QString &actionName) const
{
    return actionName.isEmpty() ? tr("Redo") : tr("Redo %1").arg(actionName);
}
