#include "tabfoldersviewcontroller.h"

#include "shell/appmanager.h"
#include "dialoghost.h"
#include "exportalldialogviewcontroller.h"
#include "menudialogviewcontroller.h"
#include "services/saveddata.h"

#include <QQmlEngine>
#include <QTimer>

TabFoldersViewController::TabFoldersViewController(QObject *parent) : QObject(parent)
{
    refresh();
}

QString TabFoldersViewController::title() const
{
    return SavedData::shared().icloudOff ? u"Folders (Local)"_qs : u"Folders"_qs;
}

QStringList TabFoldersViewController::rows() const
{
    return QStringList{u"All Tabs"_qs, u"Unlabeled"_qs, u"Deleted"_qs} + labels;
}

void TabFoldersViewController::refreshTriggered()
{
    AppManager::shared().refreshTabs();
    refresh();
}

void TabFoldersViewController::refresh()
{
    labels = AppManager::shared().allTagNames();
    Q_EMIT changed();
}

void TabFoldersViewController::openRow(int row)
{
    if (row == AllTabs)
        Q_EMIT listRequested(QString(), false, false);
    else if (row == Unlabeled)
        Q_EMIT listRequested(QString(), true, false);
    else if (row == Deleted)
        Q_EMIT listRequested(QString(), false, true);
    else if (row - fixedRowCount() < labels.size() && row >= 0)
        Q_EMIT listRequested(labels[row - fixedRowCount()], false, false);
}

void TabFoldersViewController::setScene(DialogHost *host, SceneWindow *sceneWindow)
{
    dialogs = host;
    window = sceneWindow;
}

MenuDialogViewController *TabFoldersViewController::makeMenu()
{
    auto *menu = new MenuDialogViewController(dialogs, window, this);
    QQmlEngine::setObjectOwnership(menu, QQmlEngine::CppOwnership);
    // The title follows the storage location, and the labels are the other store's.
    connect(menu, &MenuDialogViewController::finished, this, &TabFoldersViewController::refresh);
    connect(menu, &MenuDialogViewController::finished, menu,
            [menu] { QTimer::singleShot(1000, menu, &QObject::deleteLater); });
    return menu;
}

ExportAllDialogViewController *TabFoldersViewController::makeBackup()
{
    auto *backup = new ExportAllDialogViewController(this);
    QQmlEngine::setObjectOwnership(backup, QQmlEngine::CppOwnership);
    connect(backup, &ExportAllDialogViewController::finished, backup,
            [backup] { QTimer::singleShot(1000, backup, &QObject::deleteLater); });
    return backup;
}
