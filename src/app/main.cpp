#include "library/icloudmanager.h"
#include "library/lutegriddocument.h"
#include "lutegridqmlimports.h"
#include "mainscene.h"
#include "windowplacement.h"
#include "shell/appmanager.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include <cstdio>
#include <memory>

int main(int argc, char *argv[])
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName(u"Lutegrid"_qs);
    QGuiApplication::setApplicationName(u"Lutegrid"_qs);

    iCloudManager::shared().findCloudContainer();
    // The sync folder may come or go while the app runs (a drive, a sync client's folder).
    iCloudManager::shared().startWatchingAvailability();
    AppManager &manager = AppManager::shared();
    QObject::connect(&app, &QGuiApplication::applicationStateChanged, &app,
                     [&manager](Qt::ApplicationState state) {
                         if (state == Qt::ApplicationActive)
                             manager.refreshTabs();
                     });

    QQmlApplicationEngine engine;
    MainScene scene;
    std::unique_ptr<QQuickWindow> window(scene.loadWindow(engine));
    if (!window)
        return 1;
    WindowPlacement::restoreAndTrack(window.get());
    // The desktop entry's "New Tab" action: the editor on a new tab, as the list's button does.
    if (app.arguments().contains(u"--new-tab"_qs)) {
        if (TabsListViewController *list = scene.topList())
            list->newTab();
    }
    // A file handed to the program on its command line is offered for import.
    for (const QString &argument : app.arguments().mid(1)) {
        if (argument.startsWith(u'-') || !QFileInfo::exists(argument))
            continue;
        if (TabsListViewController *list = scene.topList())
            list->startImport(QFileInfo(argument).absoluteFilePath());
        break;
    }
    // For the start-up benchmark: the time to the first frame that shows the list, then out.
    if (qEnvironmentVariableIsSet("LUTEGRID_FIRST_FRAME_EXIT")) {
        QObject::connect(window.get(), &QQuickWindow::frameSwapped, &app, [&] {
            std::printf("first-frame-ms %.2f\n", sinceStart.nsecsElapsed() / 1e6);
            std::fflush(stdout);
            QCoreApplication::exit(0);
        });
    }
    const int result = app.exec();
    WindowPlacement::saveGeometry(window->geometry());
    // The editor saves its rows as its screen goes.
    window.reset();
    // No save is left halfway on a worker when the process ends.
    for (LutegridDocument *document : std::as_const(manager.activeDocUrls))
        document->waitForSave();
    return result;
}
