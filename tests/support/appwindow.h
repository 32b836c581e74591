#pragma once

#include "library/icloudmanager.h"

#include <QQuickItem>
#include <QString>

// What every window test looks things up with.

// The first item of type T under `item`; with a name, the first visible one of that name.
template <typename T = QQuickItem> T *findItem(QQuickItem *item, const QString &name = {})
{
    if (!item)
        return nullptr;
    auto *typed = qobject_cast<T *>(item);
    if (typed && (name.isEmpty() || (item->objectName() == name && item->isVisible())))
        return typed;
    const QList<QQuickItem *> children = item->childItems();
    for (QQuickItem *child : children) {
        if (T *found = findItem<T>(child, name))
            return found;
    }
    return nullptr;
}

// The folder the tabs are listed from.
inline QString storageFolder()
{
    return iCloudManager::shared().iCloudContainerUrl.value_or(QString());
}
