#include "filechoosercontroller.h"

#include <QDir>
#include <QFileInfo>

FileChooserController::FileChooserController(QObject *parent) : QObject(parent)
{
    setFolder(QDir::homePath());
}

QVariantList FileChooserController::entries() const
{
    QVariantList list;
    for (const Entry &entry : listed)
        list.append(QVariantMap{{u"name"_qs, entry.name}, {u"isDir"_qs, entry.isDir}});
    return list;
}

void FileChooserController::setFolder(const QString &path)
{
    const QFileInfo info(path);
    current = info.isDir() ? info.absoluteFilePath() : QDir::homePath();
    list();
}

void FileChooserController::up()
{
    QDir dir(current);
    if (dir.cdUp())
        setFolder(dir.absolutePath());
}

void FileChooserController::activate(int index)
{
    if (index < 0 || index >= listed.size())
        return;
    const QString path = QDir(current).filePath(listed[index].name);
    if (listed[index].isDir)
        setFolder(path);
    else
        Q_EMIT chosen(path);
}

void FileChooserController::chooseCurrentFolder()
{
    Q_EMIT chosen(current);
}

void FileChooserController::list()
{
    listed.clear();
    const QDir dir(current);
    // A folder that can't be read simply lists nothing.
    for (const QFileInfo &info :
         dir.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase))
        listed.append({info.fileName(), true});
    if (!choosingFolder) {
        for (const QFileInfo &info : dir.entryInfoList(QDir::Files, QDir::Name | QDir::IgnoreCase)) {
            if (suffixes.isEmpty() || suffixes.contains(info.suffix(), Qt::CaseInsensitive))
                listed.append({info.fileName(), false});
        }
    }
    Q_EMIT changed();
}
