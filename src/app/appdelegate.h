#pragma once

#include "shell/windowrequest.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class MainScene;
class QQmlEngine;
#include <QQuickWindow>
class TabScene;

// Picks and makes the program's windows: the one main window, and tab windows made on request,
// for a new tab or an existing one. Requests from outside, at start or from a later start, land
// here.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    explicit AppDelegate(QQmlEngine &engine, QObject *parent = nullptr);
    ~AppDelegate() override;

    // The main window, placed where it last was. Nothing if its QML can't load.
    QQuickWindow *openMainWindow();
    MainScene *mainScene() const { return scene.get(); }
    QQuickWindow *mainWindow() const { return window.get(); }

    // A tab window for the tab at `path`, or for a new tab; a window already editing that tab
    // comes forward instead, and that window is given.
    TabScene *openTabWindow(const std::optional<QString> &path);
    QList<TabScene *> tabScenes() const;
    // Every window goes, each editor finishing with its rows on disk.
    void closeAllWindows();

    // Carried out once the storage folder is known, so that a tab named at start finds it.
    void handle(const WindowRequest &request);

Q_SIGNALS:
    void tabWindowOpened(TabScene *scene);

private:
    void carryOut(const WindowRequest &request);
    void closeTabWindow(TabScene *tabScene);

    QQmlEngine &engine;
    std::unique_ptr<MainScene> scene;
    std::unique_ptr<QQuickWindow> window;
    struct TabWindow {
        TabScene *scene;
        QQuickWindow *window;
    };
    QList<TabWindow> tabWindows;
};
