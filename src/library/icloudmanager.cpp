#include "icloudmanager.h"

#include "cloudkeyvaluestore.h"
#include "librarylog.h"
#include "shell/appmanager.h"
#include "shell/apppaths.h"
#include "shell/saveddata.h"

#include <QDir>
#include <QFileInfo>
#include <QThreadPool>
#include <QTimer>

iCloudManager &iCloudManager::shared()
{
    static iCloudManager *instance = new iCloudManager;
    return *instance;
}

std::optional<QString> iCloudManager::ubiquityIdentityToken()
{
    const auto folder = SavedData::shared().cloudFolder;
    if (!folder || folder->isEmpty() || !QFileInfo(*folder).isDir())
        return std::nullopt;
    return QDir(*folder).absolutePath();
}

iCloudManager::iCloudManager()
{
    currentiCloudToken = ubiquityIdentityToken();
    placeKeyValueStore();
    findCloudContainer();
}

void iCloudManager::placeKeyValueStore()
{
    // The key-value store travels with the synced folder whatever the tab location, as the
    // custom chords do; without one it stays on this machine.
    CloudKeyValueStore::shared().setFolder(
        currentiCloudToken.value_or(AppPaths::libraryDirectory()));
}

void iCloudManager::iCloudAccountAvailabilityChanged()
{
    currentiCloudToken = ubiquityIdentityToken();
    placeKeyValueStore();
    findCloudContainer();
}

void iCloudManager::findCloudContainer()
{
    const quint64 generation = ++searchGeneration;
    if (!currentiCloudToken || SavedData::shared().icloudOff) {
        retrievingCloudContainer = false;
        setCloudContainer(std::nullopt);
        return;
    }
    retrievingCloudContainer = true;
    const QString folder = *currentiCloudToken;
    QThreadPool::globalInstance()->start([this, folder, generation] {
        std::optional<QString> container;
        if (QFileInfo(folder).isDir())
            container = folder;
        QMetaObject::invokeMethod(
            this,
            [this, container, generation] {
                // A newer search has started since: its answer is the one that counts.
                if (generation != searchGeneration)
                    return;
                setCloudContainer(container);
                retrievingCloudContainer = false;
            },
            Qt::QueuedConnection);
    });
}

void iCloudManager::setCloudContainer(const std::optional<QString> &url)
{
    SavedData &settings = SavedData::shared();
    std::optional<QString> folder;
    if (url)
        folder = QDir(*url).filePath(cloudDocumentsFolderName);
    if (!folder && !settings.icloudOff) {
        settings.icloudOff = true;
        settings.save();
    }
    if (settings.icloudOff) {
        folder = QDir(AppPaths::documentDirectory()).filePath(localFolderName);
        if (!QFileInfo::exists(*folder) && !AppPaths::ensureDirectory(*folder))
            qCWarning(lcLibrary) << "cannot make the local tab folder" << *folder;
    }
    iCloudContainerUrl = folder;
    Q_EMIT containerSettled();
    QTimer::singleShot(0, &AppManager::shared(), [] { AppManager::shared().refreshTabs(); });
}
