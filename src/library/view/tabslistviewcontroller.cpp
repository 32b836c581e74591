#include "tabslistviewcontroller.h"

#include "dialoghost.h"
#include "library/icloudmanager.h"
#include "library/lutegriddocument.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"

#include <QDir>

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

QStringList TabsListViewController::rowNames() const
{
    QStringList names;
    names.reserve(existingTabUrls.size());
    for (const TabUrlInfo &info : existingTabUrls)
        names.append(info.plainName());
    return names;
}

QString TabsListViewController::emptyText() const
{
    if (!existingTabUrls.isEmpty())
        return QString();
    if (!tagName && !isUnlabeledList && !deletedFolder)
        return SavedData::shared().tabCreateCount < 1 ? u"No tabs created yet ✍️"_qs
                                                      : u"No tabs found..."_qs;
    return u"No tabs found"_qs;
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
    if (!tabs) {
        existingTabUrls.clear();
        Q_EMIT changed();
        showMessage(u"There was an error loading cloud data. If this persists, please email "_qs +
                    supportAddress);
        return;
    }
    existingTabUrls.clear();
    for (const TabUrlInfo &info : *tabs) {
        if (tagName && !info.tags.contains(*tagName))
            continue;
        if (isUnlabeledList && !info.tags.isEmpty())
            continue;
        existingTabUrls.append(info);
    }
    Q_EMIT changed();
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
    if (row < 0 || row >= existingTabUrls.size() || deletedFolder)
        return;
    tabOpenFlow.openTab(existingTabUrls[row].tabPath);
}

void TabsListViewController::newTab()
{
    if (deletedFolder)
        return;
    if (LutegridDocument *document = AppManager::shared().makeNewTab(tagName))
        presentEditor(document);
}
