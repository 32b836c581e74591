#include "conflictresolver.h"

#include "librarylog.h"
#include "services/analytics.h"
#include "library/lutegriddocument.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

namespace {

// A free path for a copy of `fileURL` taken at `date` in `folder`: the tab's name, a blank and
// the date, then a counter while the name is taken.
QString copyPath(const QString &folder, const QString &fileURL, const QDateTime &date)
{
    const QString fileName = QFileInfo(fileURL).fileName();
    const qsizetype cut = fileName.indexOf(u".lgrd");
    const QString stem = QDir(folder).filePath((cut < 0 ? fileName : fileName.left(cut)) + u' ' +
                                               ConflictResolver::fileNameDateText(date));
    QString target = stem + u".lgrdi"_qs;
    for (int counter = 2; QFileInfo::exists(target); ++counter)
        target = stem + u' ' + QString::number(counter) + u".lgrdi"_qs;
    return target;
}

} // namespace

ConflictResolver::ConflictResolver(QList<FileVersion> fileVersions, LutegridDocument *document)
    : fileVersions(std::move(fileVersions)), gDocument(document)
{
}

QString ConflictResolver::dateText(const QDateTime &date)
{
    return QLocale().toString(date, QLocale::ShortFormat);
}

QString ConflictResolver::fileNameDateText(const QDateTime &date)
{
    QString text = dateText(date);
    for (QChar &c : text) {
        if (c == u'/' || c == u'\\')
            c = u'-';
        else if (c == u':')
            c = u'.';
    }
    return text;
}

QStringList ConflictResolver::rowTitles() const
{
    QStringList titles{u"Current"_qs};
    for (const FileVersion &version : fileVersions)
        titles.append(version.modificationDate ? dateText(*version.modificationDate) : QString());
    titles.append(u"All"_qs);
    return titles;
}

void ConflictResolver::confirmSelection(int row)
{
    if (row <= 0)
        keepCurrent();
    else if (row <= fileVersions.size())
        takeVersion(row - 1);
    else
        keepAll();
}

void ConflictResolver::resolveAll()
{
    for (FileVersion &version : fileVersions)
        version.setResolved();
    if (gDocument)
        gDocument->checkFile();
}

QString ConflictResolver::deletedFolder() const
{
    const QString folder =
        QDir(QFileInfo(gDocument->fileURL()).absolutePath()).filePath(u"Deleted"_qs);
    QDir().mkpath(folder);
    return folder;
}

bool ConflictResolver::keepVersionInDeleted(const FileVersion &version)
{
    const QDateTime date = version.modificationDate.value_or(QDateTime::currentDateTime());
    const QString target = copyPath(deletedFolder(), gDocument->fileURL(), date);
    QString error;
    if (version.replaceItemAtUrl(target, &error))
        return true;
    qCWarning(lcLibrary) << "cannot keep discarded version as" << target << error;
    return false;
}

void ConflictResolver::keepCurrent()
{
    if (!gDocument)
        return;
    // What the sync client kept of the other machines' edits is not thrown away: each
    // version waits in Deleted, to be restored as a tab of its own.
    for (const FileVersion &version : std::as_const(fileVersions))
        keepVersionInDeleted(version);
    if (!FileVersion::removeOtherVersionsOfItemAtUrl(gDocument->fileURL()))
        Analytics::logEvent(u"Conflict res_current f"_qs);
    resolveAll();
    Analytics::logEvent(u"Conflict res_current"_qs);
}

void ConflictResolver::takeVersion(int index)
{
    if (!gDocument || index < 0 || index >= fileVersions.size())
        return;
    const QString fileURL = gDocument->fileURL();
    // The content that the chosen version replaces, and the versions not chosen, wait in
    // Deleted.
    const QString current = copyPath(deletedFolder(), fileURL,
                                     QFileInfo(fileURL).lastModified());
    if (!QFile::copy(fileURL, current))
        qCWarning(lcLibrary) << "cannot keep the replaced content as" << current;
    for (int i = 0; i < fileVersions.size(); ++i) {
        if (i != index)
            keepVersionInDeleted(fileVersions[i]);
    }
    QString error;
    if (!fileVersions[index].replaceItemAtUrl(fileURL, &error)) {
        qCWarning(lcLibrary) << "cannot replace by version" << fileURL << error;
        Analytics::logEvent(u"Conflict res_diff f"_qs);
    } else {
        if (!FileVersion::removeOtherVersionsOfItemAtUrl(fileURL))
            Analytics::logEvent(u"Conflict res_diff f"_qs);
        gDocument->revertToContentsOfURL(fileURL);
        Analytics::logEvent(u"Conflict res_diff"_qs);
    }
    resolveAll();
}

void ConflictResolver::keepAll()
{
    if (!gDocument)
        return;
    const QString fileURL = gDocument->fileURL();
    const qsizetype cut = fileURL.indexOf(u".lgrd", QFileInfo(fileURL).absolutePath().size());
    const QString base = cut < 0 ? fileURL : fileURL.left(cut);
    for (FileVersion &version : fileVersions) {
        if (!version.modificationDate)
            continue;
        const QString stem = base + u' ' + fileNameDateText(*version.modificationDate);
        QString target = stem + u".lgrdi"_qs;
        for (int counter = 2; QFileInfo::exists(target); ++counter)
            target = stem + u' ' + QString::number(counter) + u".lgrdi"_qs;
        QString error;
        if (!version.replaceItemAtUrl(target, &error)) {
            qCWarning(lcLibrary) << "cannot keep version as" << target << error;
            Analytics::logEvent(u"Conflict res_all f"_qs);
            continue;
        }
        version.setResolved();
    }
    if (gDocument)
        gDocument->checkFile();
    Analytics::logEvent(u"Conflict res_all"_qs);
}
