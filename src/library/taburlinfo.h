#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// One entry of a tab list, as a scan of the storage folder found it.
struct TabUrlInfo {
    // The entry's name in the folder: the placeholder's name for a file not yet downloaded.
    QString unmodifiedTabPath;
    // "Song.lgrdi".
    QString tabPath;
    std::optional<QDateTime> dateModified;
    QStringList tags;

    QString plainName() const;

    friend bool operator==(const TabUrlInfo &, const TabUrlInfo &) = default;
};

// Newest first; entries without a date after those with one. Stable otherwise.
void sortNewestFirst(QList<TabUrlInfo> &tabs);
// By plain name, numbers compared by value ("Song 2" before "Song 10").
void sortAlphabetically(QList<TabUrlInfo> &tabs);
