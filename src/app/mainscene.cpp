#include "mainscene.h"

#include "library/lutegriddocument.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"
#include "surfacepalette.h"

#include "exportalldialogviewcontroller.h"
#include "exportdialogpresenter.h"
#include "iconprovider.h"
#include "tabpdf.h"
#include "viewmodescreenitem.h"

#include <QDebug>
#include <QGuiApplication>
#include <QPalette>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTimer>
#include <QWindow>

MainScene::MainScene(QObject *parent) : QObject(parent)
{
    tabFolders.setScene(&dialogHost, this);
    // The back-up prints each tab as view mode shows it by default.
    ExportAllDialogViewController::pdfMaker() = [](const TabData &tab, const QString &path) {
        const TabExportConfiguration configuration{tab};
        return TabPdf::writePdf(configuration, path);
    };
    connect(&tabFolders, &TabFoldersViewController::listRequested, this,
            [this](const QString &tag, bool unlabeled, bool deleted) {
                pushList(tag, unlabeled, deleted, true);
                AppManager::shared().refreshTabs();
            });
    AppManager::shared().registerWindow(this);
}

MainScene::~MainScene()
{
    AppManager &manager = AppManager::shared();
    if (manager.topTabViewController == topTabsList())
        manager.topTabViewController = nullptr;
    manager.unregisterWindow(this);
}

void MainScene::openExportDialog(QQuickItem *host, QQuickItem *viewScreen)
{
    auto *screen = qobject_cast<ViewModeScreenItem *>(viewScreen);
    if (!host || !screen)
        return;
    if (!ExportDialogPresenter::openExportDialog(host, screen->exportConfiguration()))
        dialogHost.showMessage(u"Unable to open the export options."_qs);
}

QQuickWindow *MainScene::loadWindow(QQmlEngine &engine)
{
    if (!engine.imageProvider(u"icon"_qs))
        engine.addImageProvider(u"icon"_qs, new IconProvider);
    // The modules are in the resources under their URI.
    engine.addImportPath(u"qrc:/"_qs);
    QQmlComponent component(&engine, QUrl(u"qrc:/Lutegrid/App/Main.qml"_qs));
    if (!component.isReady()) {
        qWarning().noquote() << component.errorString();
        return nullptr;
    }
    QObject *object =
        component.createWithInitialProperties({{u"scene"_qs, QVariant::fromValue(this)}});
    auto *window = qobject_cast<QQuickWindow *>(object);
    if (!window) {
        qWarning().noquote() << component.errorString();
        delete object;
        return nullptr;
    }
    setWindow(window);
    return window;
}

void MainScene::start()
{
    AppManager::shared().applyAppearance(int(SavedData::shared().appearanceSetting), this);
    stack.append({Folders, &tabFolders});
    Q_EMIT screenPushed(Folders, &tabFolders, false);
    pushList(QString(), false, false, false);
    AppManager::shared().refreshTabs();
}

TabsListViewController *MainScene::pushList(const QString &tagName, bool isUnlabeledList,
                                            bool isDeletedFolder, bool animated)
{
    std::optional<QString> tag;
    if (!tagName.isEmpty())
        tag = tagName;
    auto *list =
        new TabsListViewController(tag, isUnlabeledList, isDeletedFolder, &dialogHost, this);
    connect(list, &TabsListViewController::editorRequested, this, &MainScene::pushEditor);
    connect(list, &TabsListViewController::newWindowRequested, this,
            &MainScene::tabWindowRequested);
    stack.append({TabsList, list});
    AppManager::shared().topTabViewController = list;
    Q_EMIT screenPushed(TabsList, list, animated);
    return list;
}

void MainScene::pushEditor(LutegridDocument *document)
{
    if (!document || topKind() != TabsList)
        return;
    stack.append({Editor, document});
    Q_EMIT screenPushed(Editor, document, true);
}

void MainScene::goBack()
{
    if (stack.size() < 2 || dialogHost.isPresenting())
        return;
    const Screen top = stack.takeLast();
    Q_EMIT screenPopped();
    AppManager &manager = AppManager::shared();
    if (top.kind == TabsList) {
        auto *list = qobject_cast<TabsListViewController *>(top.object.data());
        if (list && manager.topTabViewController == list)
            manager.topTabViewController = nullptr;
        // The page slides out still showing the list: it goes once the slide is over.
        if (top.object)
            QTimer::singleShot(1000, top.object.data(), &QObject::deleteLater);
        tabFolders.refresh();
    } else if (top.kind == Editor) {
        manager.topTabViewController = topList();
        manager.refreshTabs();
    }
}

void MainScene::popToRoot()
{
    if (stack.size() < 2)
        return;
    AppManager &manager = AppManager::shared();
    while (stack.size() > 1) {
        const Screen top = stack.takeLast();
        auto *list = qobject_cast<TabsListViewController *>(top.object.data());
        if (top.kind == TabsList && list) {
            if (manager.topTabViewController == list)
                manager.topTabViewController = nullptr;
            // As in goBack: the page lets go of its list before the list goes.
            QTimer::singleShot(1000, list, &QObject::deleteLater);
        }
    }
    Q_EMIT poppedToRoot();
    tabFolders.refresh();
}

void MainScene::newTabFromEditor()
{
    if (topKind() != Editor || dialogHost.isPresenting())
        return;
    goBack();
    if (TabsListViewController *list = topList())
        list->newTab();
}

void MainScene::showImportPicker()
{
    if (topKind() == Editor)
        goBack();
    if (topKind() == Folders)
        pushAllTabsList();
    if (topKind() == TabsList && topList())
        topList()->showImportPicker();
}

TabsListViewController *MainScene::topList() const
{
    for (auto it = stack.crbegin(); it != stack.crend(); ++it) {
        if (it->kind == TabsList)
            return qobject_cast<TabsListViewController *>(it->object.data());
    }
    return nullptr;
}

LutegridDocument *MainScene::editorDocument() const
{
    if (topKind() != Editor)
        return nullptr;
    return qobject_cast<LutegridDocument *>(stack.last().object.data());
}

SceneWindow::TopScreen MainScene::topScreen() const
{
    switch (topKind()) {
    case Folders:
        return TopScreen::Folders;
    case TabsList:
        return TopScreen::TabsList;
    case Editor:
        break;
    }
    return TopScreen::Other;
}

TabsListScreen *MainScene::topTabsList() const
{
    return topKind() == TabsList ? topList() : nullptr;
}

TabsListScreen *MainScene::pushAllTabsList()
{
    return pushList(QString(), false, false, false);
}

void MainScene::requestSceneSessionActivation()
{
    if (sceneWindow) {
        // Closed while tab windows stayed: it comes back.
        sceneWindow->show();
        sceneWindow->raise();
        sceneWindow->requestActivate();
    }
}

std::optional<QStringList> MainScene::shownTabStringNotes() const
{
    for (const Screen &screen : stack) {
        if (screen.kind != Editor)
            continue;
        if (auto *document = qobject_cast<LutegridDocument *>(screen.object.data());
            document && document->tabData)
            return document->tabData->stringNotes;
    }
    return std::nullopt;
}

void MainScene::setOverrideUserInterfaceStyle(int style)
{
    // 0 follows the system. Qt here has no dark setting to ask, but a desktop in dark mode
    // hands the application a dark palette.
    const bool systemDark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    SurfacePalette::instance()->setDark(style == 2 || (style == 0 && systemDark));
}
