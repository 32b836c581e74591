#pragma once

#include <QString>

// Every folder the program touches. With LUTEGRID_HOME set they all lie under it, which is
// how tests and benchmarks keep away from a user's real tabs.
namespace AppPaths {

// Holds "Local" (tabs kept on this machine) and "Exports".
QString documentDirectory();
// Holds "data.plist", "tabtag.plist" and, until a synced folder is chosen, the key-value store.
QString libraryDirectory();
QString temporaryDirectory();
// The "Exports" folder of the temporary area.
QString exportsDirectory();
// Settings of the desktop program itself, such as where its window was.
QString configDirectory();
// Where the program suggests a synced folder.
QString defaultSyncDirectory();

// Makes the folder if it is missing; false if that failed.
bool ensureDirectory(const QString &path);

} // namespace AppPaths
