#include "icloudmanager.h"

#include "services/cloudkeyvaluestore.h"
#include "librarylog.h"
#include "services/apppaths.h"
#include "services/saveddata.h"

#include <QDir>
#include <QFileInfo>
#include <QThreadPool>

iCloudManager &iCloudManager::shared()
{
    // The one place the storage decision meets the app's settings.
    static iCloudManager *instance = new iCloudManager(SavedData::shared());
    return *instance;
}

std::optional<QString> iCloudManager::ubiquityIdentityToken() const
{
    const auto folder = settings.cloudFolder;
    if (!folder || folder->isEmpty() || !QFileInfo(*folder).isDir())
        return std::nullopt;
    return QDir(*folder).absolutePath();
}

iCloudManager::iCloudManager(SavedData &settings) : settings(settings)
{
    // The search starts when the app asks for it, once.
    currentiCloudToken = ubiquityIdentityToken();
    placeKeyValueStore();
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
    if (!currentiCloudToken || settings.icloudOff) {
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
}

void iCloudManager::startWatchingAvailability(int intervalMs)
{
    if (!availabilityTimer.isActive())
        connect(&availabilityTimer, &QTimer::timeout, this, &iCloudManager::checkAvailability,
                Qt::UniqueConnection);
    availabilityTimer.start(intervalMs);
}

bool iCloudManager::checkAvailability()
{
    if (ubiquityIdentityToken() == currentiCloudToken)
        return false;
    iCloudAccountAvailabilityChanged();
    return true;
}
