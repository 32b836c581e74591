#include "menudialogviewcontroller.h"

#include "dialoghost.h"
#include "library/icloudmanager.h"
#include "services/analytics.h"
#include "services/apppaths.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"

#include <QDir>

MenuDialogViewController::MenuDialogViewController(DialogHost *dialogs, SceneWindow *window,
                                                   QObject *parent)
    : QObject(parent), iCloudSwitch(!SavedData::shared().icloudOff), dialogs(dialogs),
      window(window)
{
}

int MenuDialogViewController::appearanceControl() const
{
    return int(std::clamp<qint64>(SavedData::shared().appearanceSetting, 0, 2));
}

QString MenuDialogViewController::syncFolder() const
{
    return SavedData::shared().cloudFolder.value_or(QString());
}

QString MenuDialogViewController::storageText() const
{
    const auto folder = iCloudManager::shared().iCloudContainerUrl;
    return folder ? QDir::toNativeSeparators(*folder) : u"Not known yet"_qs;
}

void MenuDialogViewController::setSwitch(bool on)
{
    iCloudSwitch = on;
    if (on && !iCloudManager::shared().ubiquityIdentityToken()) {
        iCloudSwitch = false;
        if (dialogs)
            dialogs->showMessage(unavailableMessage);
        Analytics::logEvent(u"iCloud Toggle Unavailable"_qs);
    }
    Analytics::logEvent(iCloudSwitch ? u"iCloud Toggle true"_qs : u"iCloud Toggle false"_qs);
    Q_EMIT changed();
}

void MenuDialogViewController::setAppearance(int segment)
{
    const int style = segment == 0 ? 0 : segment == 1 ? 1 : 2;
    AppManager::shared().applyAppearance(style, window);
    SavedData &settings = SavedData::shared();
    if (settings.appearanceSetting != style) {
        settings.appearanceSetting = style;
        settings.save();
    }
    Q_EMIT changed();
}

void MenuDialogViewController::chooseSyncFolder(const QString &path)
{
    if (path.isEmpty() || !QFileInfo(path).isDir()) {
        if (dialogs)
            dialogs->showMessage(unavailableMessage);
        return;
    }
    SavedData &settings = SavedData::shared();
    const QString folder = QDir(path).absolutePath();
    if (settings.cloudFolder == folder)
        return;
    settings.cloudFolder = folder;
    settings.save();
    AppPaths::ensureDirectory(QDir(folder).filePath(iCloudManager::cloudDocumentsFolderName));
    // A new folder is a new identity, as a sign-in is: it takes effect where the switch says.
    iCloudManager::shared().iCloudAccountAvailabilityChanged();
    Q_EMIT changed();
}

void MenuDialogViewController::close()
{
    SavedData &settings = SavedData::shared();
    const bool changedLocation = iCloudSwitch == settings.icloudOff;
    if (changedLocation) {
        settings.icloudOff = !iCloudSwitch;
        settings.save();
        iCloudManager &storage = iCloudManager::shared();
        storage.currentiCloudToken = storage.ubiquityIdentityToken();
        storage.findCloudContainer();
    }
    Q_EMIT finished();
    if (changedLocation && !iCloudSwitch && !settings.hasTurnedICloudOff && dialogs) {
        dialogs->showMessage(turnedOffWarning);
        settings.hasTurnedICloudOff = true;
        settings.save();
    }
}
