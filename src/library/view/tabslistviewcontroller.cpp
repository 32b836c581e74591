#include "tabslistviewcontroller.h"

#include "dialoghost.h"
#include "importdialogviewcontroller.h"
#include "library/icloudmanager.h"
#include "library/lutegriddocument.h"
#include "services/analytics.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"
#include "shell/tablistoperations.h"
#include "tabinfoviewcontroller.h"

#include <QDir>
#include <QLocale>
#include <QQmlEngine>

TabsListViewController::TabsListViewController(std::optional<QString> tagName, bool isUnlabeledList,
                                               bool isDeletedFolder, DialogHost *dialogs,
                                               QObject *parent)
    : QObject(parent), tagName(std::move(tagName)), isUnlabeledList(isUnlabeledList),
      deletedFolder(isDeletedFolder), tabOpenFlow(this), dialogs(dialogs)
{
    pendingMessageTimer.setSingleShot(true);
    pendingMessageTimer.setInterval(100);
    connect(&pendingMessageTimer, &QTimer::timeout, this, [this] {
        if (const auto text = std::exchange(pendingMsgToShow, std::nullopt))
            showMessage(*text);
    });
}

QString TabsListViewController::title() const
{
    if (tagName)
        return *tagName;
    if (isUnlabeledList)
        return u"Unlabeled Tabs"_qs;
    if (deletedFolder)
        return u"Deleted Tabs"_qs;
    return u"All Tabs"_qs;
}

const QList<TabUrlInfo> &TabsListViewController::shownTabUrls() const
{
    return filteredTabUrls ? *filteredTabUrls : existingTabUrls;
}

QStringList TabsListViewController::rowNames() const
{
    QStringList names;
    for (const TabUrlInfo &info : shownTabUrls())
        names.append(info.plainName());
    return names;
}

QVariantList TabsListViewController::rows() const
{
    return filteredTabUrls ? filteredRows : existingRows;
}

QVariant TabsListViewController::rowFor(const TabUrlInfo &info)
{
    // Made once per scan: the search at each typed character only picks among them.
    static const QLocale locale;
    QString detail;
    if (info.dateModified)
        detail = locale.toString(*info.dateModified, QLocale::ShortFormat);
    if (!info.tags.isEmpty())
        detail += (detail.isEmpty() ? QString() : u"  ·  "_qs) + info.tags.join(u", "_qs);
    return QVariantMap{{u"name"_qs, info.plainName()}, {u"detail"_qs, detail}, {u"tags"_qs, info.tags}};
}

QString TabsListViewController::emptyText() const
{
    if (!shownTabUrls().isEmpty())
        return QString();
    if (emptyHasHelp())
        return SavedData::shared().tabCreateCount < 1 ? u"No tabs created yet ✍️"_qs
                                                      : u"No tabs found..."_qs;
    return u"No tabs found"_qs;
}

bool TabsListViewController::emptyHasHelp() const
{
    return shownTabUrls().isEmpty() && !filteredTabUrls && !tagName && !isUnlabeledList &&
           !deletedFolder;
}

bool TabsListViewController::canEditRows() const
{
    return !shownTabUrls().isEmpty() && docsUrl().has_value();
}

void TabsListViewController::setSearchText(const QString &text)
{
    if (text == search)
        return;
    search = text;
    runSearch();
    Q_EMIT changed();
}

void TabsListViewController::runSearch()
{
    filteredRows.clear();
    if (search.isEmpty()) {
        filteredTabUrls.reset();
        return;
    }
    QList<TabUrlInfo> found;
    const QString wanted = search.toLower();
    for (qsizetype i = 0; i < existingTabUrls.size(); ++i) {
        if (existingNames[i].contains(wanted)) {
            found.append(existingTabUrls[i]);
            filteredRows.append(existingRows[i]);
        }
    }
    filteredTabUrls = std::move(found);
}

void TabsListViewController::refreshList(const std::optional<QList<TabUrlInfo>> &tabs)
{
    iCloudManager &storage = iCloudManager::shared();
    if (storage.ubiquityIdentityToken() && storage.retrievingCloudContainer) {
        busy = true;
        Q_EMIT changed();
        return;
    }
    busy = false;
    listReceived = true;
    if (std::exchange(openImportUponAppear, false) && tabs)
        QTimer::singleShot(0, this, &TabsListViewController::importPickerRequested);
    filteredTabUrls.reset();
    deleteTabUrlInfo.reset();
    restoreTabUrlInfo.reset();
    existingTabUrls.clear();
    existingRows.clear();
    existingNames.clear();
    if (!tabs) {
        Q_EMIT changed();
        showMessage(u"There was an error loading cloud data. If this persists, please email "_qs +
                    supportAddress);
        return;
    }
    for (const TabUrlInfo &info : *tabs) {
        if (tagName && !info.tags.contains(*tagName))
            continue;
        if (isUnlabeledList && !info.tags.isEmpty())
            continue;
        existingTabUrls.append(info);
    }
    if (sortAlphabeticalOn)
        sortAlphabetically(existingTabUrls);
    existingRows.clear();
    existingNames.clear();
    existingRows.reserve(existingTabUrls.size());
    existingNames.reserve(existingTabUrls.size());
    for (const TabUrlInfo &info : std::as_const(existingTabUrls)) {
        existingRows.append(rowFor(info));
        existingNames.append(info.plainName().toLower());
    }
    runSearch();
    Q_EMIT changed();
    QTimer::singleShot(0, &AppManager::shared(), [] { AppManager::shared().requestReviewIfDue(); });
}

void TabsListViewController::showMessage(const QString &text)
{
    if (pendingMsgToShow)
        return;
    if (!dialogs)
        return;
    if (!dialogs->isPresenting()) {
        dialogs->showMessage(text);
        return;
    }
    pendingMsgToShow = text;
    pendingMessageTimer.start();
}

std::optional<QString> TabsListViewController::docsUrl() const
{
    const auto folder = iCloudManager::shared().iCloudContainerUrl;
    if (!folder)
        return std::nullopt;
    return deletedFolder ? QDir(*folder).filePath(u"Deleted"_qs) : *folder;
}

void TabsListViewController::setActivity(bool on)
{
    if (busy == on)
        return;
    busy = on;
    Q_EMIT changed();
}

void TabsListViewController::showStandbyDialog()
{
    if (!dialogs)
        return;
    QPointer<TabsListViewController> self(this);
    dialogs->showLoadingStandby([self] {
        if (!self)
            return;
        self->tabOpenFlow.stop();
        self->setActivity(false);
    });
}

void TabsListViewController::dismissStandbyDialog()
{
    if (dialogs && dialogs->kind() == DialogHost::Kind::LoadingStandby)
        dialogs->dismissDialog();
}

void TabsListViewController::presentEditor(LutegridDocument *document)
{
    setActivity(false);
    Q_EMIT editorRequested(document);
}

void TabsListViewController::openRow(int row)
{
    const QList<TabUrlInfo> &shown = shownTabUrls();
    if (row < 0 || row >= shown.size())
        return;
    if (!deletedFolder) {
        tabOpenFlow.openTab(shown[row].tabPath);
        return;
    }
    restoreTabUrlInfo = shown[row];
    if (!dialogs)
        return;
    QPointer<TabsListViewController> self(this);
    dialogs->showConfirm(u"Restore this tab?"_qs, u"Restore"_qs, u"restoreDeleted"_qs,
                         [self](const QString &) {
                             if (self)
                                 self->restoreConfirmed();
                         });
}

void TabsListViewController::restoreConfirmed()
{
    if (!restoreTabUrlInfo) {
        showMessage(u"Could not restore this tab."_qs);
        return;
    }
    const auto folder = docsUrl();
    const TabUrlInfo tab = *restoreTabUrlInfo;
    if (!folder) {
        showMessage(u"Failed to restore "_qs + tab.plainName() + u'.');
        return;
    }
    if (const auto message = TabListOperations::restoreTab(tab, *folder))
        showMessage(*message);
}

void TabsListViewController::openRowInNewWindow(int row)
{
    const QList<TabUrlInfo> &shown = shownTabUrls();
    if (deletedFolder || row < 0 || row >= shown.size())
        return;
    const auto folder = docsUrl();
    if (!folder) {
        showMessage(u"Retrieving tab locations, please refresh and try again."_qs);
        return;
    }
    const QString url = QDir(*folder).filePath(shown[row].tabPath);
    if (AppManager::shared().activateEditorScene(url))
        return;
    Q_EMIT newWindowRequested(url);
}

void TabsListViewController::openTabNamed(const QString &fileName)
{
    if (deletedFolder) {
        showMessage(u"Restore this tab before opening it."_qs);
        return;
    }
    tabOpenFlow.openTab(fileName);
}

void TabsListViewController::showImportPicker()
{
    openImportUponAppear = false;
    if (docsUrl() && listReceived) {
        Q_EMIT importPickerRequested();
        return;
    }
    openImportUponAppear = true;
}

void TabsListViewController::newTab()
{
    if (deletedFolder) {
        emptyDeleted();
        return;
    }
    if (LutegridDocument *document = AppManager::shared().makeNewTab(tagName))
        presentEditor(document);
}

void TabsListViewController::emptyDeleted()
{
    if (existingTabUrls.isEmpty()) {
        showMessage(u"No deleted tabs to clear."_qs);
        return;
    }
    if (!dialogs)
        return;
    QPointer<TabsListViewController> self(this);
    dialogs->showConfirm(u"Permanently remove all Deleted tabs?"_qs, u"Remove"_qs,
                         u"emptyDeleted"_qs, [self](const QString &) {
                             if (!self)
                                 return;
                             if (const auto message = TabListOperations::emptyDeletedFolder())
                                 self->showMessage(*message);
                         });
}

void TabsListViewController::deleteRow(int row)
{
    const QList<TabUrlInfo> &shown = shownTabUrls();
    if (row < 0 || row >= shown.size()) {
        if (shown.isEmpty() && tagName && !filteredTabUrls && dialogs) {
            QPointer<TabsListViewController> self(this);
            dialogs->showConfirm(u"Remove this folder?"_qs, u"Remove"_qs, u"removeFolder"_qs,
                                 [self](const QString &) {
                                     if (!self)
                                         return;
                                     AppManager::shared().removeTagFromAllTabs(self->tagName);
                                     Q_EMIT self->popRequested();
                                 });
        } else {
            showMessage(u"Cannot find tab to delete. Please refresh and try again."_qs);
        }
        return;
    }
    deleteTabUrlInfo = shown[row];
    if (tagName && dialogs) {
        QPointer<TabsListViewController> self(this);
        dialogs->showTwoOption(
            u"Remove From Folder"_qs, u"Delete Tab"_qs, u"deleteTab"_qs,
            [self](int option, const QString &) {
                if (!self || !self->deleteTabUrlInfo)
                    return;
                if (option == 2) {
                    self->askDelete();
                    return;
                }
                QStringList tags = self->deleteTabUrlInfo->tags;
                tags.removeAll(*self->tagName);
                AppManager &manager = AppManager::shared();
                manager.setTabTags(self->deleteTabUrlInfo->plainName(), tags);
                manager.refreshTabs();
            },
            true);
        return;
    }
    askDelete();
}

void TabsListViewController::askDelete()
{
    if (!deleteTabUrlInfo) {
        showMessage(u"Failed to delete tab. (1)"_qs);
        return;
    }
    const QString name = deleteTabUrlInfo->plainName();
    const QString question =
        deletedFolder ? u"Are you sure you want to permanently delete \""_qs + name + u"\"?"_qs
                      : u"Are you sure you want to delete \""_qs + name +
                            u"\"?\n\nIt will be removed from all custom folders."_qs;
    if (!dialogs)
        return;
    QPointer<TabsListViewController> self(this);
    dialogs->showConfirm(question, u"Delete"_qs, u"deleteTab"_qs, [self](const QString &) {
        if (self)
            self->confirmedDelete();
    });
}

void TabsListViewController::confirmedDelete()
{
    if (!deleteTabUrlInfo) {
        showMessage(u"Failed to delete tab. (2)"_qs);
        return;
    }
    const auto folder = docsUrl();
    const TabUrlInfo tab = *deleteTabUrlInfo;
    if (!folder) {
        showMessage(u"Failed in deleting "_qs + tab.plainName() + u'.');
        return;
    }
    if (const auto message = TabListOperations::deleteTab(tab, *folder, deletedFolder))
        showMessage(*message);
}

void TabsListViewController::showSortDialog()
{
    if (!dialogs)
        return;
    QPointer<TabsListViewController> self(this);
    dialogs->showTwoOption(u"Sort By Modified"_qs, u"Sort Alphabetically"_qs, u"sort"_qs,
                           [self](int option, const QString &) {
                               if (!self)
                                   return;
                               self->sortAlphabeticalOn = option == 2;
                               AppManager::shared().refreshTabs();
                           });
}

void TabsListViewController::showHelp()
{
    showMessage(u"If you're not seeing the tabs you normally see here, then you can try "
                "choosing your sync folder or toggling \"Sync folder\" from the Menu (tap the "
                "gear icon on the Folders screen).\n\nIf you still have issues, DO NOT delete "
                "the app or do anything drastic. Please email "_qs +
                supportAddress + u" so we can attempt to recover the tabs."_qs);
}

void TabsListViewController::refreshTriggered()
{
    AppManager::shared().refreshTabs();
    Analytics::logEvent(u"Manual_list_refresh"_qs);
}

TabInfoViewController *TabsListViewController::tabInfoFor(int row)
{
    const QList<TabUrlInfo> &shown = shownTabUrls();
    if (row < 0 || row >= shown.size() || deletedFolder)
        return nullptr;
    const TabUrlInfo &tab = shown[row];
    auto *info = new TabInfoViewController(tab.tabPath, tab.plainName(), tab.tags, this);
    QQmlEngine::setObjectOwnership(info, QQmlEngine::CppOwnership);
    // Its page lets go of it first.
    connect(info, &TabInfoViewController::finished, info,
            [info] { QTimer::singleShot(1000, info, &QObject::deleteLater); });
    Q_EMIT searchKeyboardDismissed();
    return info;
}

std::optional<QString> TabsListViewController::updateTabInfo(const QString &fileName,
                                                             const std::optional<QString> &newName,
                                                             bool makeCopy, const QStringList &tags)
{
    return TabListOperations::updateTabInfo(docsUrl(), fileName, newName, makeCopy, tags);
}

QStringList TabsListViewController::importSuffixes()
{
    return TabListOperations::importSuffixes();
}

void TabsListViewController::startImport(const QString &path)
{
    if (dialogs && dialogs->isPresenting())
        dialogs->dismissDialog();
    auto *dialog = new ImportDialogViewController(path, this);
    QQmlEngine::setObjectOwnership(dialog, QQmlEngine::CppOwnership);
    connect(dialog, &ImportDialogViewController::finished, dialog,
            [dialog] { QTimer::singleShot(1000, dialog, &QObject::deleteLater); });
    Q_EMIT importRequested(dialog);
}

std::optional<QString> TabsListViewController::importTabData(const TabData &tabData)
{
    if (deletedFolder)
        return TabListOperations::importTabData(iCloudManager::shared().iCloudContainerUrl,
                                                tabData);
    return TabListOperations::importTabData(docsUrl(), tabData);
}
