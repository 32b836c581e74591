#include "exportsharing.h"

#include "services/apppaths.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>

namespace {

// The freedesktop file-manager interface selects the files in their folder; Files, Dolphin,
// Nemo and Thunar answer it.
bool showItemsOverDBus(const QStringList &paths)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    QStringList uris;
    for (const QString &path : paths)
        uris.append(QUrl::fromLocalFile(path).toString());
    QDBusMessage call = QDBusMessage::createMethodCall(
        u"org.freedesktop.FileManager1"_qs, u"/org/freedesktop/FileManager1"_qs,
        u"org.freedesktop.FileManager1"_qs, u"ShowItems"_qs);
    call << uris << QString();
    return bus.call(call, QDBus::Block, 3000).type() == QDBusMessage::ReplyMessage;
}

} // namespace

std::function<bool(const QUrl &)> ExportSharing::urlOpener = [](const QUrl &url) {
    return QDesktopServices::openUrl(url);
};
std::function<bool(const QStringList &)> ExportSharing::fileManagerShow = showItemsOverDBus;

ExportSharing::ExportSharing(QObject *parent) : QObject(parent) {}

QString ExportSharing::fileName(const QString &path)
{
    return QFileInfo(path).fileName();
}

QString ExportSharing::showInFolder(const QStringList &paths) const
{
    if (paths.isEmpty())
        return u"There are no files to show."_qs;
    if (fileManagerShow && fileManagerShow(paths))
        return u"Shown in the file manager."_qs;
    // Without a file manager that selects, the folder itself opens.
    const QString folder = QFileInfo(paths.first()).absolutePath();
    if (urlOpener && urlOpener(QUrl::fromLocalFile(folder)))
        return u"Opened the Exports folder."_qs;
    return u"No file manager could be opened. The files are in "_qs +
           QDir::toNativeSeparators(folder);
}

QString ExportSharing::copyFiles(const QStringList &paths) const
{
    if (paths.isEmpty())
        return u"There are no files to copy."_qs;
    QList<QUrl> urls;
    QByteArray gnome("copy");
    for (const QString &path : paths) {
        urls.append(QUrl::fromLocalFile(path));
        gnome += '\n' + urls.last().toEncoded();
    }
    auto *mime = new QMimeData;
    mime->setUrls(urls);
    // File managers that paste files look for their own form as well.
    mime->setData(u"x-special/gnome-copied-files"_qs, gnome);
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (!clipboard)
        return u"The clipboard is not available."_qs;
    clipboard->setMimeData(mime);
    return paths.size() == 1 ? u"Copied 1 file. Paste it into a folder or a message."_qs
                             : u"Copied "_qs + QString::number(paths.size()) +
                                   u" files. Paste them into a folder or a message."_qs;
}

QString ExportSharing::openFile(const QString &path) const
{
    if (!QFileInfo::exists(path))
        return fileName(path) + u" is no longer there."_qs;
    if (urlOpener && urlOpener(QUrl::fromLocalFile(path)))
        return u"Opened "_qs + fileName(path) + u'.';
    return u"No program could open "_qs + fileName(path) + u'.';
}

QString ExportSharing::openHelp() const
{
    // The guide ships in the resources; a browser needs it as a file.
    const QString folder = QDir(AppPaths::temporaryDirectory()).filePath(u"Guide"_qs);
    const QString page = QDir(folder).filePath(u"index.html"_qs);
    QFile::remove(page);
    if (!AppPaths::ensureDirectory(folder) ||
        !QFile::copy(u":/Lutegrid/Export/guide/index.html"_qs, page))
        return u"The guide could not be opened."_qs;
    QFile::setPermissions(page, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                    QFile::ReadOther);
    QUrl url = QUrl::fromLocalFile(page);
    url.setFragment(u"exportSection"_qs);
    if (urlOpener && urlOpener(url))
        return QString();
    return u"No browser could open the guide."_qs;
}
