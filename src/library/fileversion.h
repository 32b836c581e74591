#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

// A version of a tab that lost a conflict: a copy that a sync client (or our own save, on
// finding the file changed under it) left beside the file. Resolving a version removes the
// copy, so a version nobody resolved is reported again.
class FileVersion {
public:
    // The copy's path.
    QString url;
    // The file it is a version of.
    QString originalUrl;
    // When the version was last changed: the copy's own date, else the date in its name.
    std::optional<QDateTime> modificationDate;
    bool resolved = false;

    // The unresolved versions of a file, oldest first.
    static QList<FileVersion> unresolvedConflictVersionsOfItemAtUrl(const QString &path);
    // Removes every conflict copy of the file; false if one could not be removed.
    static bool removeOtherVersionsOfItemAtUrl(const QString &path);

    // For a conflict copy's file name, the file name of the tab it is a version of, with the
    // date that the sync client wrote into the name.
    struct Origin {
        QString fileName;
        std::optional<QDateTime> nameDate;
    };
    static std::optional<Origin> conflictCopyOrigin(QStringView fileName);

    // A copy name of our own for a version of `path` taken at `when`.
    static QString newConflictCopyPath(const QString &path, const QDateTime &when);

    // Writes the version's content to `target`, whole or not at all.
    bool replaceItemAtUrl(const QString &target, QString *error = nullptr) const;
    // Marks the version as dealt with: its copy goes away.
    bool setResolved();
};

// Writes bytes to a file by way of a hidden temporary file in the same folder that is renamed
// over it, so the file holds the old bytes or the new ones, whatever happens to the process.
bool writeFileAtomically(const QString &path, const QByteArray &bytes, QString *error = nullptr);
// Removes what writes to `path` left behind when their process died, once older than
// `minimumAgeSeconds` (younger ones may belong to a save in progress elsewhere).
void removeStaleSaveTemporaries(const QString &path, int minimumAgeSeconds = 60);
