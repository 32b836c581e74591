#pragma once

#include "dialoghost.h"
#include "shell/screenregistry.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>

#include "library/lutegriddocument.h"
class QQmlEngine;
class QQuickItem;
#include <QQuickWindow>

// A window with one editor and nothing else: on a tab of the storage folder, or on a new tab
// made for it. When the tab can't be had, the window says why instead.
class TabScene : public QObject, public SceneWindow {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("One per tab window, made before the QML")
    Q_PROPERTY(DialogHost *dialogs READ dialogs CONSTANT)
    Q_PROPERTY(QObject *document READ editorDocument CONSTANT)
    Q_PROPERTY(QString message READ message CONSTANT)
    Q_PROPERTY(QString windowTitle READ windowTitle CONSTANT)

public:
    static inline const QString newTabFailedMessage =
        u"Unable to open a new guitar tab. Please try again and email support@lutegrid.org "
        "if this continues to occur."_qs;
    static inline const QString openElsewhereMessage =
        u"This tab is being edited in another window. Close it there and try again."_qs;
    static inline const QString unreadableMessage = u"Unable to open tab."_qs;

    // With a path, that tab; without one, a new tab.
    explicit TabScene(const std::optional<QString> &path, QObject *parent = nullptr);
    ~TabScene() override;

    DialogHost *dialogs() { return &dialogHost; }
    // The document the editor works on; nothing when the window shows a message.
    LutegridDocument *editorDocument() const { return document; }
    QString message() const { return emptyMessage; }
    QString windowTitle() const { return title; }

    // Makes the window from TabWindow.qml with this scene, sized for the editor or the message.
    // The caller owns the window.
    QQuickWindow *loadWindow(QQmlEngine &engine);
    QQuickWindow *window() const { return sceneWindow; }
    // View mode's export button: the export dialog over `host` with what `viewScreen` shows.
    Q_INVOKABLE void openExportDialog(QQuickItem *host, QQuickItem *viewScreen);

    // SceneWindow.
    std::optional<QString> rootEditorFileURL() const override;
    TopScreen topScreen() const override { return TopScreen::Other; }
    TabsListScreen *topTabsList() const override { return nullptr; }
    TabsListScreen *pushAllTabsList() override { return nullptr; }
    void requestSceneSessionActivation() override;
    std::optional<QStringList> shownTabStringNotes() const override;
    void setOverrideUserInterfaceStyle(int style) override;

Q_SIGNALS:
    // The editor's new-tab key: another tab window.
    void newTabRequested();
    // The editor can't stay (its file went from under it): the window goes.
    void closeRequested();

private:
    void openExisting(const QString &path);
    void makeNewTab();

    DialogHost dialogHost;
    QPointer<LutegridDocument> document;
    QString emptyMessage;
    QString title = u"Lutegrid"_qs;
    QPointer<QQuickWindow> sceneWindow;
};
