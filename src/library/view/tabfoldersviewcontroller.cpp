#include "tabfoldersviewcontroller.h"

#include "shell/appmanager.h"
#include "services/saveddata.h"

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
