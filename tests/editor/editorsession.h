#pragma once

#include "editor/tabeditviewcontroller.h"
#include "library/lutegriddocument.h"
#include "services/dialogpresenter.h"
#include "services/lgundomanager.h"
#include "services/saveddata.h"

#include <QDir>
#include <QTest>

#include <functional>
#include <memory>

// What the editor tests share: a dialog presenter that records, and a tab saved and reopened
// the way the list opens it, in an editor of phone size.

struct Dialogs : DialogPresenter {
    QStringList messages;
    QList<QStringList> conflicts;
    bool presenting = false;
    bool isPresenting() const override { return presenting; }
    void presentMessage(const QString &text) override { messages.append(text); }
    void presentConflict(const QStringList &rows, std::function<void(int)>) override
    {
        conflicts.append(rows);
    }
    QStringList confirms;
    std::function<void()> confirmed;
    void presentConfirm(const QString &text, const QString &, std::function<void()> yes) override
    {
        confirms.append(text);
        confirmed = std::move(yes);
    }
    void dismissDialog() override { presenting = false; }
};

// The steps on the stack, counted by undoing them all and redoing them all.
inline int undoSteps(LgUndoManager *undo)
{
    int steps = 0;
    while (undo->canUndo()) {
        undo->undo();
        ++steps;
    }
    for (int i = 0; i < steps; ++i)
        undo->redo();
    return steps;
}

struct Session {
    std::unique_ptr<LutegridDocument> document;
    std::unique_ptr<TabEditViewController> editor;
    TabEditView *view;
    LgUndoManager *undo;
};

class EditorSessions {
public:
    // A fresh folder for the running test function, and the settings the tests count on.
    void prepare()
    {
        folder = QDir(qEnvironmentVariable("LUTEGRID_HOME"))
                     .filePath(QString::fromLatin1(QTest::currentTestFunction()));
        QDir(folder).removeRecursively();
        QDir().mkpath(folder);
        SavedData &saved = SavedData::shared();
        saved.autoCursorAmount = 1;
        saved.playSounds = false;
        saved.lastFretCount = 0;
        saved.freeScrollSetting = false;
        saved.toolsMarkedSeen = false;
        saved.toolsMarkedSeenTemporary = false;
        saved.tabCreateCount = 1;
        saved.disableFlashNavArrows = false;
        dialogs = Dialogs();
    }

    // A tab saved and reopened, as the list opens it, with `rows` blank rows.
    std::unique_ptr<LutegridDocument> makeDocument(const QString &name, int rows = 1,
                                                   int columns = 32)
    {
        const QString path = QDir(folder).filePath(name + u".lgrdi"_qs);
        TabData tab(name, 6);
        for (int r = 0; r < rows; ++r)
            tab.tabRowDatas.append(TabRowData(columns, tab.stringCount()));
        auto document = std::make_unique<LutegridDocument>(path, tab);
        document->saveToURL(path, LutegridDocument::SaveOperation::ForCreating);
        document->close();
        auto opened = std::make_unique<LutegridDocument>(path, std::nullopt);
        opened->tabName = name;
        if (!opened->open() || !opened->tabData)
            qFatal("cannot reopen %s", qPrintable(path));
        // One registration, one step: the tests count steps, not event turns.
        opened->undoManager()->groupsByEvent = false;
        return opened;
    }

    // The same tab in an editor of phone size, its messages going to `dialogs`.
    Session open(const QString &name, int rows = 1, int columns = 32)
    {
        Session s{makeDocument(name, rows, columns), nullptr, nullptr, nullptr};
        s.editor = std::make_unique<TabEditViewController>(s.document.get());
        s.editor->setDialogPresenter(&dialogs);
        s.editor->applyViewSize(390, 844);
        s.view = s.editor->tabEditView();
        s.undo = s.document->undoManager();
        return s;
    }

    QString folder;
    Dialogs dialogs;
};
