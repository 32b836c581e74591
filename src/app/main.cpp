#include "appdelegate.h"
#include "library/icloudmanager.h"
#include "library/lutegriddocument.h"
#include "lutegridqmlimports.h"
#include "mainscene.h"
#include "shell/appmanager.h"
#include "shell/windowrequest.h"
#include "singleinstance.h"
#include "windowplacement.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include <cstdio>

int main(int argc, char *argv[])
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName(u"Lutegrid"_qs);
    QGuiApplication::setApplicationName(u"Lutegrid"_qs);

    // "--new-tab", "--import", files from a file manager, or nothing: the running program does
    // it if there is one.
    const WindowRequest request =
        WindowRequest::fromArguments(app.arguments().mid(1), QDir::currentPath());
    SingleInstance instance;
    if (SingleInstance::sendToRunning(request))
        return 0;
    if (!instance.listen())
        qWarning("Another start of the program could not be reached; this one runs alone.");

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
    AppDelegate delegate(engine);
    QQuickWindow *window = delegate.openMainWindow();
    if (!window)
        return 1;
    if (request.kind != WindowRequest::Kind::Show)
        delegate.handle(request);
    QObject::connect(&instance, &SingleInstance::requestReceived, &delegate,
                     &AppDelegate::handle);
    // For the start-up benchmark: the time to the first frame that shows the list, then out.
    if (qEnvironmentVariableIsSet("LUTEGRID_FIRST_FRAME_EXIT")) {
        QObject::connect(window, &QQuickWindow::frameSwapped, &app, [&] {
            std::printf("first-frame-ms %.2f\n", sinceStart.nsecsElapsed() / 1e6);
            std::fflush(stdout);
            QCoreApplication::exit(0);
        });
    }
    const int result = app.exec();
    WindowPlacement::saveGeometry(window->geometry());
    // The editors save their rows as their screens go.
    delegate.closeAllWindows();
    // No save is left halfway on a worker when the process ends.
    for (LutegridDocument *document : std::as_const(manager.activeDocUrls))
        document->waitForSave();
    return result;
}
