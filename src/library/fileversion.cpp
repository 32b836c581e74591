#include "fileversion.h"

#include "librarylog.h"
#include "tabfilenames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <algorithm>
#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

QDateTime dateFromParts(QStringView date, QStringView time, QStringView dateFormat)
{
    const QDate day = QDate::fromString(date.toString(), dateFormat.toString());
    if (!day.isValid())
        return {};
    QTime clock(0, 0);
    if (!time.isEmpty()) {
        clock = QTime::fromString(time.toString(), u"HHmmss"_qs);
        if (!clock.isValid())
            return {};
    }
    return QDateTime(day, clock);
}

QString randomDeviceMark()
{
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";
    QString mark;
    for (int i = 0; i < 7; ++i)
        mark.append(QLatin1Char(alphabet[QRandomGenerator::global()->bounded(32)]));
    return mark;
}

} // namespace

std::optional<FileVersion::Origin> FileVersion::conflictCopyOrigin(QStringView fileName)
{
    // Syncthing: "Song.sync-conflict-20261121-101530-ABCDEFG.lgrdi".
    static const QRegularExpression syncthing(
        u"^(.+)\\.sync-conflict-(\\d{8})-(\\d{6})-[A-Z0-9]{7}(\\..*)?$"_qs);
    // Nextcloud: "Song (conflicted copy 2026-11-21 101530).lgrdi".
    static const QRegularExpression nextcloud(
        u"^(.+) \\(conflicted copy (\\d{4}-\\d{2}-\\d{2}) (\\d{6})\\)(\\..*)?$"_qs);
    // Older ownCloud and Nextcloud clients: "Song_conflict-20261121-101530.lgrdi".
    static const QRegularExpression owncloud(u"^(.+)_conflict-(\\d{8})-(\\d{6})(\\..*)?$"_qs);
    // Dropbox: "Song (Name's conflicted copy 2026-11-21).lgrdi", and " (1)" for a second one.
    static const QRegularExpression dropbox(
        u"^(.+) \\((?:.+'s )?conflicted copy (\\d{4}-\\d{2}-\\d{2})(?: \\(\\d+\\))?\\)(\\..*)?$"_qs);

    const QString name = fileName.toString();
    if (auto m = syncthing.match(name); m.hasMatch()) {
        return Origin{m.captured(1) + m.captured(4),
                      dateFromParts(m.capturedView(2), m.capturedView(3), u"yyyyMMdd")};
    }
    if (auto m = nextcloud.match(name); m.hasMatch()) {
        return Origin{m.captured(1) + m.captured(4),
                      dateFromParts(m.capturedView(2), m.capturedView(3), u"yyyy-MM-dd")};
    }
    if (auto m = owncloud.match(name); m.hasMatch()) {
        return Origin{m.captured(1) + m.captured(4),
                      dateFromParts(m.capturedView(2), m.capturedView(3), u"yyyyMMdd")};
    }
    if (auto m = dropbox.match(name); m.hasMatch()) {
        return Origin{m.captured(1) + m.captured(3),
                      dateFromParts(m.capturedView(2), {}, u"yyyy-MM-dd")};
    }
    return std::nullopt;
}

QList<FileVersion> FileVersion::unresolvedConflictVersionsOfItemAtUrl(const QString &path)
{
    const QFileInfo original(path);
    const QString originalName = original.fileName();
    const QDir dir = original.absoluteDir();
    const QString prefix = TabFileNames::plainName(originalName);
    QList<FileVersion> versions;
    // Names alone first: a folder of thousands of tabs is read without a stat for each.
    const QStringList names = dir.entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        if (!name.startsWith(prefix) || name == originalName)
            continue;
        const auto origin = conflictCopyOrigin(name);
        if (!origin || origin->fileName != originalName)
            continue;
        const QFileInfo entry(dir.filePath(name));
        FileVersion version;
        version.url = entry.absoluteFilePath();
        version.originalUrl = original.absoluteFilePath();
        const QDateTime modified = entry.lastModified();
        if (modified.isValid())
            version.modificationDate = modified;
        else if (origin->nameDate && origin->nameDate->isValid())
            version.modificationDate = origin->nameDate;
        versions.append(version);
    }
    std::stable_sort(versions.begin(), versions.end(), [](const auto &a, const auto &b) {
        return a.modificationDate.value_or(QDateTime()) < b.modificationDate.value_or(QDateTime());
    });
    return versions;
}

bool FileVersion::removeOtherVersionsOfItemAtUrl(const QString &path)
{
    bool allRemoved = true;
    for (FileVersion &version : unresolvedConflictVersionsOfItemAtUrl(path))
        allRemoved = version.setResolved() && allRemoved;
    return allRemoved;
}

QString FileVersion::newConflictCopyPath(const QString &path, const QDateTime &when)
{
    // The form Syncthing uses, so that every client and every copy of this program reads it.
    const QFileInfo info(path);
    const QString name = info.fileName();
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString stem = dot > 0 ? name.left(dot) : name;
    const QString extension = dot > 0 ? name.mid(dot) : QString();
    return info.absoluteDir().filePath(stem + u".sync-conflict-"_qs +
                                       when.toString(u"yyyyMMdd-HHmmss"_qs) + u'-' +
                                       randomDeviceMark() + extension);
}

bool FileVersion::replaceItemAtUrl(const QString &target, QString *error) const
{
    QFile source(url);
    if (!source.open(QIODevice::ReadOnly)) {
        if (error)
            *error = source.errorString();
        return false;
    }
    const QByteArray bytes = source.readAll();
    if (!writeFileAtomically(target, bytes, error))
        return false;
    if (modificationDate) {
        QFile written(target);
        if (written.open(QIODevice::ReadWrite))
            written.setFileTime(*modificationDate, QFileDevice::FileModificationTime);
    }
    return true;
}

bool FileVersion::setResolved()
{
    if (resolved)
        return true;
    if (QFile::exists(url) && !QFile::remove(url)) {
        qCWarning(lcLibrary) << "cannot remove resolved version" << url;
        return false;
    }
    resolved = true;
    return true;
}

bool writeFileAtomically(const QString &path, const QByteArray &bytes, QString *error)
{
    const QFileInfo info(path);
    const QString tempPath = info.absoluteDir().filePath(
        TabFileNames::saveTempPrefix + info.fileName() + u'.' +
        QString::number(QRandomGenerator::global()->generate(), 36) + TabFileNames::saveTempSuffix);
    QFile temp(tempPath);
    if (!temp.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        if (error)
            *error = temp.errorString();
        return false;
    }
    bool written = temp.write(bytes) == bytes.size() && temp.flush();
#ifdef Q_OS_UNIX
    written = written && ::fsync(temp.handle()) == 0;
#endif
    temp.close();
    if (!written) {
        if (error)
            *error = temp.errorString();
        QFile::remove(tempPath);
        return false;
    }
    // rename(2) replaces the target in one step; QFile::rename refuses an existing target.
    std::error_code code;
    std::filesystem::rename(std::filesystem::path(tempPath.toStdU16String()),
                            std::filesystem::path(path.toStdU16String()), code);
    if (code) {
        if (error)
            *error = QString::fromStdString(code.message());
        QFile::remove(tempPath);
        return false;
    }
    return true;
}

void removeStaleSaveTemporaries(const QString &path, int minimumAgeSeconds)
{
    const QFileInfo info(path);
    const QDir dir = info.absoluteDir();
    const QString prefix = TabFileNames::saveTempPrefix + info.fileName() + u'.';
    const QDateTime limit = QDateTime::currentDateTime().addSecs(-minimumAgeSeconds);
    const QStringList names = dir.entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        if (!name.startsWith(prefix) || !name.endsWith(TabFileNames::saveTempSuffix))
            continue;
        const QString tempPath = dir.filePath(name);
        if (QFileInfo(tempPath).lastModified() < limit)
            QFile::remove(tempPath);
    }
}
