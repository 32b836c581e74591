#pragma once

#include "library/tabfilenames.h"

#include <QDir>
#include <QStringList>

// The tabs a folder lists, by their plain file names, sorted: what the library would show.
inline QStringList listedTabs(const QString &folder)
{
    QStringList listed;
    for (const QString &name : QDir(folder).entryList(QDir::Files | QDir::Hidden)) {
        if (TabFileNames::isTabEntryName(name))
            listed.append(TabFileNames::tabPathForEntry(name));
    }
    listed.sort();
    return listed;
}
