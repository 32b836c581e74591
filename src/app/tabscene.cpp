#include "tabscene.h"

#include "library/tabfilenames.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"
#include "surfacepalette.h"

#include "exportdialogpresenter.h"
#include "viewmodescreenitem.h"

#include <QDebug>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPalette>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>

namespace {

const QSize editorMinimumSize(450, 600);
const QSize editorStartSize(960, 760);
const QSize messageMaximumSize(600, 300);

} // namespace

TabScene::TabScene(const std::optional<QString> &path, QObject *parent) : QObject(parent)
{
    AppManager &manager = AppManager::shared();
    manager.registerWindow(this);
    manager.applyAppearance(int(SavedData::shared().appearanceSetting), this);
    if (path)
        openExisting(*path);
    else
        makeNewTab();
}

TabScene::~TabScene()
{
    AppManager::shared().unregisterWindow(this);
}

void TabScene::openExisting(const QString &path)
{
    AppManager &manager = AppManager::shared();
    LutegridDocument *candidate = manager.documentFor(path);
    // One document has one editor: a tab the main window is editing stays there.
    if (!candidate->documentState().testFlag(LutegridDocument::Closed)) {
        emptyMessage = openElsewhereMessage;
        return;
    }
    candidate->tabName = TabFileNames::plainName(QFileInfo(path).fileName());
    const bool opened = candidate->open();
    if (!opened || !candidate->tabData) {
        // Closed again, so that the next try starts afresh.
        if (opened)
            candidate->close();
        emptyMessage = unreadableMessage;
        return;
    }
    manager.openedEditorThisSession = true;
    document = candidate;
    const QString name =
        candidate->tabData->title.isEmpty() ? candidate->localizedName() : candidate->tabData->title;
    title = u"Edit - "_qs + name;
}

void TabScene::makeNewTab()
{
    AppManager &manager = AppManager::shared();
    LutegridDocument *made = manager.makeNewTab();
    if (!made) {
        emptyMessage = newTabFailedMessage;
        return;
    }
    document = made;
    title = u"Edit - "_qs + made->tabData->title;
    // The next new tab, in this window or another, sees this one's name as taken.
    manager.refreshTabs();
}

QQuickWindow *TabScene::loadWindow(QQmlEngine &engine)
{
    QQmlComponent component(&engine, QUrl(u"qrc:/Lutegrid/App/TabWindow.qml"_qs));
    if (!component.isReady()) {
        qWarning().noquote() << component.errorString();
        return nullptr;
    }
    QObject *object =
        component.createWithInitialProperties({{u"scene"_qs, QVariant::fromValue(this)}});
    auto *made = qobject_cast<QQuickWindow *>(object);
    if (!made) {
        qWarning().noquote() << component.errorString();
        delete object;
        return nullptr;
    }
    const QRect screen = made->screen() ? made->screen()->availableGeometry() : QRect();
    if (document) {
        made->setMinimumSize(editorMinimumSize);
        QSize size = editorStartSize;
        if (screen.isValid())
            size = size.boundedTo(screen.size()).expandedTo(editorMinimumSize);
        made->resize(size);
    } else {
        made->setMaximumSize(messageMaximumSize);
        made->resize(messageMaximumSize);
    }
    sceneWindow = made;
    return made;
}

void TabScene::openExportDialog(QQuickItem *host, QQuickItem *viewScreen)
{
    auto *screen = qobject_cast<ViewModeScreenItem *>(viewScreen);
    if (!host || !screen)
        return;
    if (!ExportDialogPresenter::openExportDialog(host, screen->exportConfiguration()))
        dialogHost.showMessage(u"Unable to open the export options."_qs);
}

std::optional<QString> TabScene::rootEditorFileURL() const
{
    if (!document)
        return std::nullopt;
    return document->fileURL();
}

void TabScene::requestSceneSessionActivation()
{
    if (!sceneWindow)
        return;
    sceneWindow->show();
    sceneWindow->raise();
    sceneWindow->requestActivate();
}

std::optional<QStringList> TabScene::shownTabStringNotes() const
{
    if (document && document->tabData)
        return document->tabData->stringNotes;
    return std::nullopt;
}

void TabScene::setOverrideUserInterfaceStyle(int style)
{
    // The look is one for the whole program, as the main window sets it.
    const bool systemDark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    SurfacePalette::instance()->setDark(style == 2 || (style == 0 && systemDark));
}
