#pragma once

#include <QString>
#include <QStringView>

// Which names in a storage folder are tabs. Sync clients and our own saves leave temporary,
// lock and conflict files beside the tabs, and their names often contain ".lgrd" too.
namespace TabFileNames {

// The tab's name: the file name cut at the first ".lgrd".
QString plainName(QStringView fileName);

// The file name a listing entry stands for: "Song.lgrdi" for the placeholder
// ".Song.lgrdi.icloud" of a file not yet downloaded, otherwise the name itself.
QString tabPathForEntry(QStringView entryName);

// Whether a folder entry (not a directory) is listed as a tab. Names that begin with "~" or
// "." are tabs like any other, but for the marks of temporary files.
bool isTabEntryName(QStringView entryName);

// Temporary and lock files of sync clients, editors and our own saves.
bool isTemporaryName(QStringView entryName);

// Prefix and suffix of the temporary file that a save writes before renaming it into place:
// hidden, and with the markers that the common sync clients skip.
inline constexpr QStringView saveTempPrefix = u".~lg.";
inline constexpr QStringView saveTempSuffix = u".tmp";

} // namespace TabFileNames
