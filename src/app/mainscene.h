#pragma once

#include "dialoghost.h"
#include "shell/screenregistry.h"
#include "tabfoldersviewcontroller.h"
#include "tabslistviewcontroller.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

#include "library/lutegriddocument.h"
class QQmlEngine;
class QQuickWindow;
#include <QWindow>

// The main window as the app manager sees it: the folder screen at the bottom of the
// navigation stack, a list on top, and an editor pushed over the list. The stack is kept here;
// the QML's StackView follows its pushes and pops.
class MainScene : public QObject, public SceneWindow {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("One per main window, made before the QML")
    Q_PROPERTY(DialogHost *dialogs READ dialogs CONSTANT)
    Q_PROPERTY(TabFoldersViewController *folders READ folders CONSTANT)

public:
    enum ScreenKind { Folders, TabsList, Editor };
    Q_ENUM(ScreenKind)

    explicit MainScene(QObject *parent = nullptr);
    ~MainScene() override;

    DialogHost *dialogs() { return &dialogHost; }
    TabFoldersViewController *folders() { return &tabFolders; }
    void setWindow(QWindow *window) { sceneWindow = window; }

    // Makes the window from Main.qml with this scene; the engine gets the icon provider. The
    // caller owns the window.
    QQuickWindow *loadWindow(QQmlEngine &engine);
    // The folder screen and the list of all tabs, without animation.
    Q_INVOKABLE void start();
    Q_INVOKABLE void goBack();
    // Every screen over the first goes at once, as when an editor can't stay.
    Q_INVOKABLE void popToRoot();
    // From the editor, a new tab in the list under it, as the list's new-tab button makes one.
    Q_INVOKABLE void newTabFromEditor();
    // View mode's export button: the export dialog over `host` with what `viewScreen` shows.
    Q_INVOKABLE void openExportDialog(QQuickItem *host, QQuickItem *viewScreen);
    // The list of all tabs with the import picker over it; an editor on top finishes first.
    void showImportPicker();
    ScreenKind topKind() const { return stack.isEmpty() ? Folders : stack.last().kind; }
    int depth() const { return int(stack.size()); }
    TabsListViewController *topList() const;
    LutegridDocument *editorDocument() const;

    // SceneWindow.
    std::optional<QString> rootEditorFileURL() const override { return std::nullopt; }
    TopScreen topScreen() const override;
    TabsListScreen *topTabsList() const override;
    TabsListScreen *pushAllTabsList() override;
    void requestSceneSessionActivation() override;
    std::optional<QStringList> shownTabStringNotes() const override;
    void setOverrideUserInterfaceStyle(int style) override;

Q_SIGNALS:
    void screenPushed(int kind, QObject *object, bool animated);
    void screenPopped();
    void poppedToRoot();
    // The list's "open in a new window".
    void tabWindowRequested(const QString &path);

private:
    struct Screen {
        ScreenKind kind;
        QPointer<QObject> object;
    };
    TabsListViewController *pushList(const QString &tagName, bool isUnlabeledList,
                                     bool isDeletedFolder, bool animated);
    void pushEditor(LutegridDocument *document);

    DialogHost dialogHost;
    TabFoldersViewController tabFolders;
    QList<Screen> stack;
    QPointer<QWindow> sceneWindow;
};
