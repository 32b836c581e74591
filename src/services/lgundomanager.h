#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

// Undo by closures: each edit registers the closure that performs its inverse, and the inverse,
// run while undoing, registers the redo the same way. All registrations of one turn of the
// event loop form one group, undone and redone as one step.
class LgUndoManager : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void()>;
    enum class Change { Done, Undone, Redone };

    explicit LgUndoManager(QObject *parent = nullptr);

    // Steps kept; at one more the oldest falls away. 0 means no limit.
    int levelsOfUndo = 50;
    // Off: registrations outside an explicit group are steps of their own.
    bool groupsByEvent = true;

    void registerUndo(Handler handler);
    bool canUndo() const;
    bool canRedo() const;
    // Closes an open group first, as the step to undo.
    void undo();
    void redo();
    bool isUndoing() const { return undoing; }
    bool isRedoing() const { return redoing; }
    void removeAllActions();

    // Explicit groups nest; what they hold joins the group of the turn.
    void beginUndoGrouping();
    void endUndoGrouping();
    int groupingLevel() const { return level; }

    // Registrations carry no action names; the titles are those of a plain manager.
    QString undoMenuTitleForUndoActionName(const QString &actionName) const;
    QString redoMenuTitleForUndoActionName(const QString &actionName) const;

Q_SIGNALS:
    // One completed group, one undo, one redo: what the document's change count follows.
    void changed(LgUndoManager::Change change);

private:
    using Group = QList<Handler>;
    void queueEventGroupClose();
    void closeEventGroup();
    void push(QList<Group> &stack, Group group);
    void runGroup(QList<Group> &from, QList<Group> &to, bool &flag);

    QList<Group> undoStack;
    QList<Group> redoStack;
    Group openGroup;
    int level = 0;
    bool eventGroupOpen = false;
    bool closeQueued = false;
    bool undoing = false;
    bool redoing = false;
};

// Keeps the registrations of a multi-step operation in one group, however it returns.
class UndoGroupGuard {
public:
    explicit UndoGroupGuard(LgUndoManager *manager) : manager(manager)
    {
        if (manager)
            manager->beginUndoGrouping();
    }
    ~UndoGroupGuard()
    {
        if (manager)
            manager->endUndoGrouping();
    }
    UndoGroupGuard(const UndoGroupGuard &) = delete;
    UndoGroupGuard &operator=(const UndoGroupGuard &) = delete;

private:
    LgUndoManager *manager;
};
