#include "apppaths.h"

#include <QDir>
#include <QStandardPaths>

namespace AppPaths {

namespace {

QString home()
{
    return qEnvironmentVariable("LUTEGRID_HOME");
}

QString underHome(const QString &name, QStandardPaths::StandardLocation location,
                  const QString &suffix)
{
    const QString override = home();
    if (!override.isEmpty())
        return QDir(override).filePath(name);
    return QDir(QStandardPaths::writableLocation(location)).filePath(suffix);
}

} // namespace

QString documentDirectory()
{
    return underHome(u"Documents"_qs, QStandardPaths::AppDataLocation, u"Documents"_qs);
}

QString libraryDirectory()
{
    return underHome(u"Library"_qs, QStandardPaths::AppDataLocation, u"Library"_qs);
}

QString temporaryDirectory()
{
    return underHome(u"tmp"_qs, QStandardPaths::TempLocation, u"lutegrid"_qs);
}

QString exportsDirectory()
{
    return QDir(temporaryDirectory()).filePath(u"Exports"_qs);
}

QString configDirectory()
{
    return underHome(u"Config"_qs, QStandardPaths::AppConfigLocation, QString());
}

QString defaultSyncDirectory()
{
    return underHome(u"Sync"_qs, QStandardPaths::HomeLocation, u"Lutegrid"_qs);
}

bool ensureDirectory(const QString &path)
{
    return QDir().mkpath(path);
}

} // namespace AppPaths
