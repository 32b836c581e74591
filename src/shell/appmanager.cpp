#include "appmanager.h"

#include "services/analytics.h"
#include "services/apppaths.h"
#include "services/cloudkeyvaluestore.h"
#include "library/icloudmanager.h"
#include "library/tabfilenames.h"
#include "library/lutegriddocument.h"
#include "model/tabfileformat.h"
#include "services/saveddata.h"
#include "shelllog.h"

Q_LOGGING_CATEGORY(lcShell, "lutegrid.shell")

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTimer>

#include <algorithm>

namespace {

constexpr qint64 tabCreateCountLimit = 20;
constexpr double reviewRequestInterval = 20736000.0;
constexpr int reviewRequestMinimumTabs = 5;
const QString deletedFolderName = u"Deleted"_qs;
const QString labelQuotaMessage = u"Warning: Reached storage limit for folder labels."_qs;

QString documentFileName(const QString &name)
{
    return name + u'.' + documentExtension;
}

} // namespace

AppManager &AppManager::shared()
{
    static AppManager *instance = new AppManager;
    return *instance;
}

AppManager::AppManager()
{
    CloudKeyValueStore &store = CloudKeyValueStore::shared();
    connect(&store, &CloudKeyValueStore::didChangeExternally, this,
            [this](int reason, const QStringList &) { ubiquitousKeyValueStoreDidChange(reason); });
    store.synchronize();
    // Every settled storage folder is listed anew.
    connect(&iCloudManager::shared(), &iCloudManager::containerSettled, this,
            &AppManager::refreshTabs, Qt::QueuedConnection);
}

TabTagStore AppManager::tagStore() const
{
    return TabTagStore(SavedData::shared(), CloudKeyValueStore::shared());
}

QList<TabUrlInfo> AppManager::scanFolder(const QString &folder, bool withTags)
{
    QList<TabUrlInfo> tabs;
    const QDir dir(folder);
    if (!dir.exists()) {
        qCWarning(lcShell) << "docpath error" << folder << "cannot be listed";
        return tabs;
    }
    const TabTagStore::TagMap tags = withTags ? currentTagMap() : TabTagStore::TagMap();
    // Names first: the date is read only for the entries that are tabs.
    const QStringList names =
        dir.entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::NoSort);
    tabs.reserve(names.size());
    for (const QString &name : names) {
        if (!TabFileNames::isTabEntryName(name))
            continue;
        TabUrlInfo info;
        info.unmodifiedTabPath = name;
        info.tabPath = TabFileNames::tabPathForEntry(name);
        const QDateTime modified = QFileInfo(dir.filePath(name)).lastModified();
        if (modified.isValid())
            info.dateModified = modified;
        if (withTags)
            info.tags = tags.value(info.plainName());
        tabs.append(std::move(info));
    }
    sortNewestFirst(tabs);
    return tabs;
}

void AppManager::refreshTabs()
{
    existingTabPaths.clear();
    iCloudManager &cloud = iCloudManager::shared();
    if (cloud.retrievingCloudContainer && cloud.ubiquityIdentityToken()) {
        if (topTabViewController)
            topTabViewController->refreshList(std::nullopt);
        return;
    }
    if (!cloud.iCloudContainerUrl) {
        if (topTabViewController)
            topTabViewController->refreshList(std::nullopt);
        return;
    }
    const QString folder = *cloud.iCloudContainerUrl;
    const QList<TabUrlInfo> tabs = scanFolder(folder, true);
    if (topTabViewController && !topTabViewController->isDeletedFolder())
        topTabViewController->refreshList(tabs);
    QStringList urls;
    urls.reserve(tabs.size());
    existingTabPaths.reserve(tabs.size());
    const QDir dir(folder);
    for (const TabUrlInfo &info : tabs) {
        existingTabPaths.append(info.tabPath);
        urls.append(dir.filePath(info.tabPath));
    }
    pruneActiveDocs(urls);
    refreshDeletedTabs();
    Q_EMIT tabsRefreshed();
}

void AppManager::refreshDeletedTabs()
{
    const auto folder = deletedFolderUrl();
    if (!folder)
        return;
    const QList<TabUrlInfo> tabs = scanFolder(*folder, false);
    if (topTabViewController && topTabViewController->isDeletedFolder())
        topTabViewController->refreshList(tabs);
}

std::optional<QString> AppManager::deletedFolderUrl()
{
    const auto &storage = iCloudManager::shared().iCloudContainerUrl;
    if (!storage)
        return std::nullopt;
    const QString folder = QDir(*storage).filePath(deletedFolderName);
    if (!QFileInfo(folder).isDir() && !AppPaths::ensureDirectory(folder))
        return std::nullopt;
    return folder;
}

std::optional<QString> AppManager::newTabUrl(const QString &name) const
{
    const auto &storage = iCloudManager::shared().iCloudContainerUrl;
    if (!storage)
        return std::nullopt;
    return QDir(*storage).filePath(documentFileName(name));
}

QString AppManager::nextUntitledName() const
{
    static const QRegularExpression wholeNumber(u"^[+-]?[0-9]+$"_qs);
    const QString prefix = u"Untitled "_qs;
    QList<qint64> taken;
    for (const QString &path : existingTabPaths) {
        const QString name = TabFileNames::plainName(path);
        if (!name.startsWith(prefix))
            continue;
        const QString rest = name.mid(prefix.size());
        if (!wholeNumber.match(rest).hasMatch())
            continue;
        bool ok = false;
        const qint64 number = rest.toLongLong(&ok);
        if (ok)
            taken.append(number);
    }
    std::sort(taken.begin(), taken.end());
    qint64 n = 1;
    for (qint64 number : std::as_const(taken)) {
        if (number == n)
            ++n;
        else if (number > n)
            break;
    }
    return prefix + QString::number(n);
}

LutegridDocument *AppManager::documentFor(const QString &url)
{
    const QString key = QFileInfo(url).fileName();
    if (LutegridDocument *document = activeDocUrls.value(key))
        return document;
    auto *document = new LutegridDocument(url, std::nullopt, this);
    track(document);
    activeDocUrls.insert(key, document);
    return document;
}

void AppManager::track(LutegridDocument *document)
{
    connect(document, &LutegridDocument::fileURLChanged, this,
            [this, document](const std::optional<QString> &prevURL, const QString &url) {
                documentMoved(prevURL, url, document);
            });
}

void AppManager::documentMoved(const std::optional<QString> &oldUrl, const QString &newUrl,
                               LutegridDocument *document)
{
    if (oldUrl)
        activeDocUrls.remove(QFileInfo(*oldUrl).fileName());
    activeDocUrls.insert(QFileInfo(newUrl).fileName(), document);
}

void AppManager::pruneActiveDocs(const QStringList &urls)
{
    QSet<QString> keep;
    for (const QString &url : urls)
        keep.insert(QFileInfo(url).fileName());
    for (auto it = activeDocUrls.begin(); it != activeDocUrls.end();) {
        if (keep.contains(it.key())) {
            ++it;
            continue;
        }
        LutegridDocument *document = it.value();
        it = activeDocUrls.erase(it);
        // Ours and idle: nobody else holds it. One that is open lives on with its editor.
        const bool stillHeld = std::find(activeDocUrls.cbegin(), activeDocUrls.cend(), document) !=
                               activeDocUrls.cend();
        if (document && document->parent() == this && !stillHeld &&
            document->documentState().testFlag(LutegridDocument::Closed) &&
            !document->changeListener)
            document->deleteLater();
    }
}

LutegridDocument *AppManager::makeNewTab(const std::optional<QString> &tagName)
{
    if (!iCloudManager::shared().iCloudContainerUrl)
        return nullptr;
    SavedData &settings = SavedData::shared();
    if (settings.tabCreateCount < tabCreateCountLimit) {
        ++settings.tabCreateCount;
        settings.save();
    }
    const QString name = nextUntitledName();
    const auto url = newTabUrl(name);
    if (settings.defaultStringCount == 0)
        settings.defaultStringCount = 6;
    const int strings = int(std::clamp<qint64>(settings.defaultStringCount, 0, 8));
    auto *document = new LutegridDocument(*url, TabData(name, strings), this);
    track(document);
    document->tabName = name;
    document->saveToURL(*url, LutegridDocument::SaveOperation::ForCreating);
    openedEditorThisSession = true;
    if (tagName)
        setTabTags(name, {*tagName});
    return document;
}

void AppManager::applyAppearance(int style, SceneWindow *window)
{
    overrideLightDarkSetting = style;
    if (window)
        window->setOverrideUserInterfaceStyle(style);
}

QStringList AppManager::stringNotesFor(const SceneWindow *window) const
{
    if (window) {
        if (const auto notes = window->shownTabStringNotes())
            return *notes;
    }
    return {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};
}

void AppManager::registerWindow(SceneWindow *window)
{
    if (window && !windows.contains(window))
        windows.append(window);
}

void AppManager::unregisterWindow(SceneWindow *window)
{
    windows.removeAll(window);
}

bool AppManager::isOpenInEditor(const QString &fileName) const
{
    return std::any_of(windows.cbegin(), windows.cend(), [&](const SceneWindow *window) {
        const auto file = window->rootEditorFileURL();
        return file && QFileInfo(*file).fileName() == fileName;
    });
}

bool AppManager::activateEditorScene(const QString &url)
{
    const QString wanted = QFileInfo(url).absoluteFilePath();
    for (SceneWindow *window : std::as_const(windows)) {
        const auto file = window->rootEditorFileURL();
        if (file && QFileInfo(*file).absoluteFilePath() == wanted) {
            window->requestSceneSessionActivation();
            return true;
        }
    }
    return false;
}

TabsListScreen *AppManager::foremostTabsList(SceneWindow **found)
{
    for (SceneWindow *window : std::as_const(windows)) {
        if (found)
            *found = window;
        switch (window->topScreen()) {
        case SceneWindow::TopScreen::TabsList:
            return window->topTabsList();
        case SceneWindow::TopScreen::Folders:
            topTabViewController = window->pushAllTabsList();
            return topTabViewController;
        case SceneWindow::TopScreen::Other:
            break;
        }
    }
    if (found)
        *found = nullptr;
    return nullptr;
}

void AppManager::openUrlContexts(const QStringList &urls)
{
    if (urls.isEmpty())
        return;
    const QFileInfo file(urls.first());
    const bool isTab = file.suffix() == documentExtension;
    SceneWindow *listWindow = nullptr;
    TabsListScreen *list = foremostTabsList(&listWindow);
    if (!list) {
        if (isTab)
            activateEditorScene(file.absoluteFilePath());
        return;
    }
    // The list's window comes forward first: a tab open in a window of its own comes after.
    listWindow->requestSceneSessionActivation();
    if (!isTab) {
        Analytics::logEvent(u"Import via open"_qs);
        list->startImport(file.absoluteFilePath());
        return;
    }
    // Tabs open by name from the storage folder; a namesake elsewhere is not that tab, and is
    // left where it is, untouched.
    const auto &storage = iCloudManager::shared().iCloudContainerUrl;
    const auto canonicalFolder = [](const QString &path) {
        const QFileInfo info(path);
        return info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
    };
    if (storage && canonicalFolder(file.absolutePath()) != canonicalFolder(*storage)) {
        list->showMessage(u"Only tabs in your tabs folder open here. Move \"%1\" into %2 and "
                          "open it again, or export it as a .lgrd file and import that."_qs
                              .arg(file.fileName(), QDir::toNativeSeparators(*storage)));
        return;
    }
    list->openTabNamed(file.fileName());
}

TabTagStore::TagMap AppManager::currentTagMap()
{
    return tagStore().currentTagMap();
}

void AppManager::setTabTags(const QString &name, const QStringList &tags)
{
    tagStore().setTabTags(name, tags);
}

void AppManager::removeTabTags(const QString &name)
{
    tagStore().removeTabTags(name);
}

void AppManager::moveTabTags(const QString &oldName, const QString &newName,
                             const QStringList &tags)
{
    tagStore().moveTabTags(oldName, newName, tags);
}

void AppManager::removeTagFromAllTabs(const std::optional<QString> &tag)
{
    tagStore().removeTagFromAllTabs(tag);
}

QStringList AppManager::allTagNames()
{
    return tagStore().allTagNames();
}

void AppManager::requestReviewIfDue()
{
    SavedData &settings = SavedData::shared();
    const double now = double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
    if (settings.lastReviewRequestDate &&
        now - *settings.lastReviewRequestDate < reviewRequestInterval)
        return;
    if (existingTabPaths.size() < reviewRequestMinimumTabs)
        return;
    if (!openedEditorThisSession || rateRequestShownThisSession)
        return;
    rateRequestShownThisSession = true;
    QTimer::singleShot(200, this, [this] {
        ++reviewRequestsMade;
        SavedData &settings = SavedData::shared();
        settings.lastReviewRequestDate = double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
        settings.save();
        Q_EMIT reviewRequested();
    });
}

void AppManager::ubiquitousKeyValueStoreDidChange(int reason)
{
    switch (reason) {
    case CloudKeyValueStore::ServerChange:
    case CloudKeyValueStore::InitialSyncChange:
        QTimer::singleShot(0, this, [this] { refreshTabs(); });
        break;
    case CloudKeyValueStore::QuotaViolationChange:
        QTimer::singleShot(0, this, [this] {
            if (topTabViewController)
                topTabViewController->showMessage(labelQuotaMessage);
        });
        break;
    default:
        break;
    }
}
