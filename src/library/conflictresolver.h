#pragma once

#include "fileversion.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>

class LutegridDocument;

// What the conflict dialog does with the user's choice: row 0 keeps the current file, rows 1
// to n take one version, and the last row keeps everything, each version as a tab of its own.
// Whatever a choice discards goes into the Deleted folder as a tab of its own, so that no
// machine's edits are lost wherever the folder syncs.
class ConflictResolver {
public:
    ConflictResolver(QList<FileVersion> fileVersions, LutegridDocument *document);

    QList<FileVersion> fileVersions;
    QPointer<LutegridDocument> gDocument;

    // "Current", a date and time for each version (empty without one), "All".
    QStringList rowTitles() const;
    void confirmSelection(int row);

    void keepCurrent();
    void takeVersion(int index);
    void keepAll();

    // The date as the picker shows it, and as it goes into a file name, where the characters
    // that a path can't hold are replaced.
    static QString dateText(const QDateTime &date);
    static QString fileNameDateText(const QDateTime &date);

private:
    void resolveAll();
    // "Deleted" beside the document's file, made if missing.
    QString deletedFolder() const;
    bool keepVersionInDeleted(const FileVersion &version);
};
