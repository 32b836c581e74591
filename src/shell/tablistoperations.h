#pragma once

#include "library/taburlinfo.h"
#include "model/tabdata.h"

#include <QString>
#include <QStringList>

#include <optional>

// What a list screen does to the tab files: delete to the Deleted folder and restore from it,
// empty it, rename, duplicate, import. Each gives the message the user must see, or nothing
// when all went well; nothing has changed on disk when a message comes back, except where
// the message says so.
namespace TabListOperations {

// Before a file is moved or copied it must be at hand: a synced file that is only a
// placeholder is brought in by opening its document and closing it again. False if that
// failed.
bool bringToHand(const QString &path);

// `docsUrl` is the folder the list shows: the storage folder, or its Deleted folder.
std::optional<QString> deleteTab(const TabUrlInfo &tab, const QString &docsUrl,
                                 bool inDeletedFolder);
std::optional<QString> restoreTab(const TabUrlInfo &tab, const QString &deletedFolder);
std::optional<QString> emptyDeletedFolder();

// Rename (`makeCopy` off) or duplicate a tab of `docsUrl`; with no new name only the labels
// change. The lists are refreshed after every change.
std::optional<QString> updateTabInfo(const std::optional<QString> &docsUrl,
                                     const QString &fileName,
                                     const std::optional<QString> &newName, bool makeCopy,
                                     const QStringList &tags);

// The imported tab as a new document of the folder, named after its title.
std::optional<QString> importTabData(const std::optional<QString> &folder, const TabData &tabData);

// Reads a file for import, by its extension: the exchange form ".lgrd", a plain-text tab
// ".txt", or a MusicXML score (".musicxml", ".mxl", ".xml"). A file of any shape gives a tab
// or the message to show.
struct ImportReading {
    std::optional<TabData> tabData;
    QString message;
};
ImportReading readImportFile(const QString &path);
// The extensions readImportFile takes, for the file chooser.
QStringList importSuffixes();
// The name the import dialog proposes: the file name up to its last ".".
QString proposedImportName(const QString &path);

} // namespace TabListOperations
