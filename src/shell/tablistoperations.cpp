#include "tablistoperations.h"

#include "appmanager.h"
#include "export/asciitabreader.h"
#include "export/documentmanager.h"
#include "export/musicxml.h"
#include "library/icloudmanager.h"
#include "library/lutegriddocument.h"
#include "library/tabfilenames.h"
#include "model/tabfileformat.h"
#include "services/analytics.h"
#include "shelllog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace TabListOperations {

namespace {

bool openAndClose(const QString &path)
{
    AppManager &manager = AppManager::shared();
    LutegridDocument *document = manager.documentFor(path);
    const bool wasClosed = document->documentState().testFlag(LutegridDocument::Closed);
    if (!document->open())
        return false;
    if (wasClosed)
        document->close();
    return true;
}

// The document of a file that has gone elsewhere is dropped when nothing holds it open; the
// next open makes one for the new place.
void forgetClosedDocument(const QString &fileName)
{
    AppManager &manager = AppManager::shared();
    LutegridDocument *document = manager.activeDocUrls.value(fileName);
    if (document && document->documentState().testFlag(LutegridDocument::Closed) &&
        !document->changeListener) {
        manager.activeDocUrls.remove(fileName);
        if (document->parent() == &manager)
            document->deleteLater();
    }
}

} // namespace

bool bringToHand(const QString &path)
{
    return QFileInfo::exists(path) || openAndClose(path);
}

std::optional<QString> deleteTab(const TabUrlInfo &tab, const QString &docsUrl,
                                 bool inDeletedFolder)
{
    AppManager &manager = AppManager::shared();
    const QString name = tab.plainName();
    if (manager.isOpenInEditor(tab.tabPath))
        return u"Cannot delete a tab that is currently opened."_qs;
    const QString source = QDir(docsUrl).filePath(inDeletedFolder ? tab.unmodifiedTabPath
                                                                  : tab.tabPath);
    if (!inDeletedFolder && !bringToHand(source))
        return u"Failed to delete "_qs + name + u'.';
    const auto deleted = manager.deletedFolderUrl();
    if (!deleted)
        return u"Failed in deleting "_qs + name + u'.';
    bool done = false;
    if (inDeletedFolder) {
        done = QFileInfo(source).isDir() ? QDir(source).removeRecursively()
                                         : QFile::remove(source);
    } else {
        // One earlier copy of the same name may wait in Deleted; a third is refused.
        QString target = QDir(*deleted).filePath(tab.tabPath);
        if (QFileInfo::exists(target))
            target = QDir(*deleted).filePath(u'^' + tab.tabPath);
        done = !QFileInfo::exists(target) && QFile::rename(source, target);
        if (done)
            forgetClosedDocument(tab.tabPath);
    }
    if (!done) {
        qCWarning(lcShell) << "file delete failed" << source;
        Analytics::logEvent(u"Tab_delete_fail"_qs);
        return u"Failed in deleting "_qs + name + u'.';
    }
    manager.removeTabTags(name);
    manager.refreshTabs();
    Analytics::logEvent(u"Tab_delete"_qs);
    return std::nullopt;
}

std::optional<QString> restoreTab(const TabUrlInfo &tab, const QString &deletedFolder)
{
    AppManager &manager = AppManager::shared();
    const QString name = tab.plainName();
    const auto storage = iCloudManager::shared().iCloudContainerUrl;
    if (!storage)
        return u"Failed to restore "_qs + name + u'.';
    const QString source = QDir(deletedFolder).filePath(tab.tabPath);
    if (!bringToHand(source))
        return u"Unable to restore "_qs + name + u'.';
    const QString target = QDir(*storage).filePath(tab.tabPath);
    std::optional<QString> message;
    if (QFileInfo::exists(target))
        message = u"Could not restore "_qs + name + u". Another tab already exists with that name."_qs;
    else if (!QFile::rename(source, target))
        message = u"Could not restore "_qs + name + u'.';
    else
        forgetClosedDocument(tab.tabPath);
    manager.refreshTabs();
    return message;
}

std::optional<QString> emptyDeletedFolder()
{
    const auto deleted = AppManager::shared().deletedFolderUrl();
    if (!deleted)
        return u"Issue removing all Deleted tabs."_qs;
    QDir folder(*deleted);
    const QFileInfoList entries =
        folder.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    std::optional<QString> message;
    for (const QFileInfo &entry : entries) {
        const bool removed = entry.isDir() && !entry.isSymLink()
                                 ? QDir(entry.filePath()).removeRecursively()
                                 : QFile::remove(entry.filePath());
        if (!removed) {
            message = u"Issue removing all Deleted tabs."_qs;
            break;
        }
    }
    AppManager::shared().refreshTabs();
    return message;
}

std::optional<QString> updateTabInfo(const std::optional<QString> &docsUrl,
                                     const QString &fileName,
                                     const std::optional<QString> &newName, bool makeCopy,
                                     const QStringList &tags)
{
    AppManager &manager = AppManager::shared();
    if (!docsUrl)
        return u"Unable to retrieve tabs. Please refresh list."_qs;
    const QString oldName = TabFileNames::plainName(fileName);
    if (!newName) {
        manager.setTabTags(oldName, tags);
        manager.refreshTabs();
        return std::nullopt;
    }
    const QDir folder(*docsUrl);
    const QString source = folder.filePath(fileName);
    const QString targetName = *newName + u'.' + documentExtension;
    const QString target = folder.filePath(targetName);
    if (!makeCopy) {
        if (manager.isOpenInEditor(fileName))
            return u"Can't rename a tab while it is being edited."_qs;
        if (!bringToHand(source))
            return u"Failed to rename tab"_qs;
        // A name that differs only in case is the same file where the file system says so.
        const bool sameFile = QFileInfo::exists(target) &&
                              QFileInfo(target).canonicalFilePath() ==
                                  QFileInfo(source).canonicalFilePath() &&
                              targetName != fileName;
        if (QFileInfo::exists(target) && !sameFile)
            return u"A tab with that name already exists"_qs;
        QFile file(source);
        if (!file.rename(target))
            return u"Unable to rename tab. Error - "_qs + file.errorString();
        forgetClosedDocument(fileName);
        manager.moveTabTags(oldName, *newName, tags);
        manager.refreshTabs();
        manager.requestReviewIfDue();
        Analytics::logEvent(u"Tab_rename"_qs);
        return std::nullopt;
    }
    if (!bringToHand(source))
        return u"Failed to duplicate tab"_qs;
    if (QFileInfo::exists(target))
        return u"A tab with that name already exists"_qs;
    if (!QFile::copy(source, target))
        return u"Unable to copy tab"_qs;
    manager.setTabTags(*newName, tags);
    manager.refreshTabs();
    Analytics::logEvent(u"Tab_copy"_qs);
    return std::nullopt;
}

std::optional<QString> importTabData(const std::optional<QString> &folder, const TabData &tabData)
{
    if (!folder)
        return std::nullopt;
    const QString url = QDir(*folder).filePath(tabData.title + u'.' + documentExtension);
    if (QFileInfo::exists(url))
        return u"That name is already taken"_qs;
    AppManager &manager = AppManager::shared();
    auto *document = new LutegridDocument(url, tabData, &manager);
    document->tabName = tabData.title;
    const bool saved = document->saveToURL(url, LutegridDocument::SaveOperation::ForCreating);
    document->deleteLater();
    if (!saved)
        return u"Import was unsuccessful."_qs;
    Analytics::logEvent(u"Tab import"_qs);
    manager.refreshTabs();
    return std::nullopt;
}

namespace {

ImportReading readImportedForm(const QString &path)
{
    const auto failed = [](const QString &description) {
        return ImportReading{std::nullopt, u"Import was unsuccessful.\n\n"_qs + description};
    };
    const QFileInfo info(path);
    if (!info.exists())
        return failed(u"The file could not be found."_qs);
    if (info.isDir())
        return failed(u"The file could not be read: it is a folder."_qs);
    // Nothing that size can be a tab: it is refused before a byte is read.
    if (info.size() > maximumTabFileBytes)
        return failed(u"The file is too large to be a tab."_qs);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        const bool denied = file.error() == QFileDevice::PermissionsError;
        QString text = denied ? u"Lutegrid does not have permission to access this file."_qs
                              : u"The file could not be read."_qs;
        if (denied)
            text += u"\n\nConsider moving the file into your Lutegrid folder and trying again."_qs;
        return failed(text);
    }
    const QByteArray bytes = file.read(maximumTabFileBytes + 1);
    if (file.error() != QFileDevice::NoError || bytes.size() > maximumTabFileBytes)
        return failed(u"The file could not be read."_qs);
    const QString suffix = info.suffix().toLower();
    if (suffix == u"txt") {
        AsciiTabResult text = AsciiTabReader::read(QString::fromUtf8(bytes));
        if (!text.tab)
            return failed(text.message);
        return ImportReading{std::move(text.tab), QString()};
    }
    if (suffix == MusicXml::fileExtension(false) || suffix == MusicXml::fileExtension(true)
        || suffix == u"xml") {
        // A plain ".xml" is taken as a score only if its root says so; the reader checks.
        MusicXml::ReadResult score = MusicXml::read(bytes);
        if (!score.tab)
            return failed(score.message);
        return ImportReading{std::move(score.tab), QString()};
    }
    if (info.suffix() != exchangeExtension)
        return failed(u"Not a proper .lgrd file."_qs);
    ImportError error;
    auto tab = tabDataFromExchangeData(bytes, &error);
    if (!tab)
        return failed(error.message.isEmpty()
                          ? u"Not a proper .lgrd file."_qs
                          : u"The file holds no readable tab: "_qs + error.message + u'.');
    return ImportReading{std::move(tab), QString()};
}

} // namespace

ImportReading readImportFile(const QString &path)
{
    ImportReading reading = readImportedForm(path);
    // Whatever the form, the tab becomes a document: one the document reader would refuse is
    // refused here, before it is saved.
    if (reading.tabData && !tabFitsDocument(*reading.tabData)) {
        return ImportReading{std::nullopt,
                             u"Import was unsuccessful.\n\nThe file is too large to be a tab."_qs};
    }
    return reading;
}

QStringList importSuffixes()
{
    return {exchangeExtension.toString(), u"txt"_qs, MusicXml::fileExtension(false),
            MusicXml::fileExtension(true), u"xml"_qs};
}

QString proposedImportName(const QString &path)
{
    const QString fileName = QFileInfo(path).fileName();
    const qsizetype dot = fileName.lastIndexOf(u'.');
    return dot < 0 ? u"Imported Tab"_qs : fileName.left(dot);
}

} // namespace TabListOperations
