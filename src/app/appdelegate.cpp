#include "appdelegate.h"

#include "editorscreenitem.h"
#include "library/icloudmanager.h"
#include "mainscene.h"
#include "shell/appmanager.h"
#include "tabscene.h"
#include "windowplacement.h"

#include <QFileInfo>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>

#include <memory>

namespace {

// The window's editor, wherever its stack put it.
void finishEditors(QQuickItem *item)
{
    if (!item)
        return;
    if (auto *editor = qobject_cast<EditorScreenItem *>(item))
        editor->finishEditing();
    const QList<QQuickItem *> children = item->childItems();
    for (QQuickItem *child : children)
        finishEditors(child);
}

// Each new tab window sits a little below and right of the last, so that none hides another.
constexpr int cascadeStep = 32;

} // namespace

AppDelegate::AppDelegate(QQmlEngine &engine, QObject *parent) : QObject(parent), engine(engine)
{
}

AppDelegate::~AppDelegate()
{
    closeAllWindows();
}

void AppDelegate::closeAllWindows()
{
    // Editors finish as their windows go, before the scenes that hold their dialogs.
    for (const TabWindow &tab : std::as_const(tabWindows)) {
        delete tab.window;
        delete tab.scene;
    }
    tabWindows.clear();
    window.reset();
    scene.reset();
}

QQuickWindow *AppDelegate::openMainWindow()
{
    if (window)
        return window.get();
    scene = std::make_unique<MainScene>();
    window.reset(scene->loadWindow(engine));
    if (!window)
        return nullptr;
    WindowPlacement::restoreAndTrack(window.get());
    connect(scene.get(), &MainScene::tabWindowRequested, this,
            [this](const QString &path) { openTabWindow(path); });
    return window.get();
}

TabScene *AppDelegate::openTabWindow(const std::optional<QString> &path)
{
    if (path) {
        for (const TabWindow &tab : std::as_const(tabWindows)) {
            const auto file = tab.scene->rootEditorFileURL();
            if (file && QFileInfo(*file).absoluteFilePath() == QFileInfo(*path).absoluteFilePath()) {
                tab.scene->requestSceneSessionActivation();
                return tab.scene;
            }
        }
    }
    auto *tabScene = new TabScene(path);
    QQuickWindow *tabWindow = tabScene->loadWindow(engine);
    if (!tabWindow) {
        delete tabScene;
        return nullptr;
    }
    // Beside the main window, stepping down for each window already open.
    const QRect anchor = window ? window->geometry() : QRect(80, 80, 0, 0);
    QPoint at = anchor.topLeft() + QPoint(cascadeStep, cascadeStep) * int(tabWindows.size() + 1);
    if (QScreen *screen = tabWindow->screen()) {
        const QRect free = screen->availableGeometry();
        if (!free.contains(QRect(at, tabWindow->size())))
            at = free.topLeft() + QPoint(cascadeStep, cascadeStep) * int(tabWindows.size() % 8);
    }
    tabWindow->setPosition(at);
    tabWindows.append({tabScene, tabWindow});
    // A closed window hides; that is its end.
    connect(tabWindow, &QWindow::visibleChanged, this, [this, tabScene](bool visible) {
        if (!visible)
            closeTabWindow(tabScene);
    });
    connect(tabScene, &TabScene::closeRequested, this,
            [this, tabScene] { closeTabWindow(tabScene); });
    connect(tabScene, &TabScene::newTabRequested, this,
            [this] { openTabWindow(std::nullopt); });
    // As a scene's activation does: the list learns of new and changed tabs.
    connect(tabWindow, &QWindow::activeChanged, this, [tabWindow] {
        if (tabWindow->isActive())
            AppManager::shared().refreshTabs();
    });
    tabWindow->show();
    tabScene->requestSceneSessionActivation();
    Q_EMIT tabWindowOpened(tabScene);
    return tabScene;
}

QList<TabScene *> AppDelegate::tabScenes() const
{
    QList<TabScene *> scenes;
    for (const TabWindow &tab : tabWindows)
        scenes.append(tab.scene);
    return scenes;
}

void AppDelegate::closeTabWindow(TabScene *tabScene)
{
    for (qsizetype i = 0; i < tabWindows.size(); ++i) {
        if (tabWindows[i].scene != tabScene)
            continue;
        const TabWindow tab = tabWindows.takeAt(i);
        // The rows are on disk before anything else happens; the window itself goes later, as
        // it may be in the middle of its own close.
        finishEditors(tab.window->contentItem());
        tab.window->hide();
        tab.window->deleteLater();
        connect(tab.window, &QObject::destroyed, tab.scene, &QObject::deleteLater);
        AppManager::shared().refreshTabs();
        return;
    }
}

void AppDelegate::handle(const WindowRequest &request)
{
    iCloudManager &storage = iCloudManager::shared();
    if (storage.iCloudContainerUrl || !storage.retrievingCloudContainer) {
        carryOut(request);
        return;
    }
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = connect(&storage, &iCloudManager::containerSettled, this,
                          [this, request, connection] {
                              disconnect(*connection);
                              carryOut(request);
                          }, Qt::QueuedConnection);
}

void AppDelegate::carryOut(const WindowRequest &request)
{
    switch (request.kind) {
    case WindowRequest::Kind::NewTab:
        openTabWindow(std::nullopt);
        return;
    case WindowRequest::Kind::Import:
        if (scene) {
            scene->requestSceneSessionActivation();
            scene->showImportPicker();
        }
        return;
    case WindowRequest::Kind::OpenFiles:
        // The program comes forward whatever becomes of the file; a window of the tab after.
        if (scene)
            scene->requestSceneSessionActivation();
        AppManager::shared().openUrlContexts(request.files);
        return;
    case WindowRequest::Kind::Show:
        break;
    }
    if (scene)
        scene->requestSceneSessionActivation();
}
