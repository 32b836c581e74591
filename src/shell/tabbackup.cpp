#include "tabbackup.h"

#include "appmanager.h"
#include "library/lutegriddocument.h"
#include "library/tabfilenames.h"
#include "model/tabfileformat.h"
#include "services/analytics.h"
#include "services/apppaths.h"
#include "shelllog.h"

#include <QDate>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QLocale>
#include <QSaveFile>

#include <zip.h>

namespace {

bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(bytes);
    return file.commit();
}

} // namespace

TabBackup::TabBackup(std::optional<QString> docsUrl, PdfMaker pdfMaker, QObject *parent)
    : QObject(parent), docsUrl(std::move(docsUrl)), pdfMaker(std::move(pdfMaker))
{
    stepTimer.setSingleShot(true);
    connect(&stepTimer, &QTimer::timeout, this, &TabBackup::step);
}

TabBackup::~TabBackup()
{
    if (openDocument)
        openDocument->close();
}

QString TabBackup::archiveFolderName(const QDate &date)
{
    QString text = QLocale().toString(date, QLocale::ShortFormat);
    text.replace(u'/', u'_');
    return u"Backup_"_qs + text;
}

std::optional<QString> TabBackup::start()
{
    if (!docsUrl)
        return u"Unable to locate documents. Please check connection and try again."_qs;
    const QDir folder(*docsUrl);
    const QStringList names =
        folder.entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        if (!TabFileNames::isTabEntryName(name))
            continue;
        tabUrlsToExport.append(folder.filePath(TabFileNames::tabPathForEntry(name)));
    }
    goalExportCount = int(tabUrlsToExport.size());
    const QString archive =
        QDir(AppPaths::temporaryDirectory()).filePath(archiveFolderName(QDate::currentDate()));
    if (QFileInfo::exists(archive))
        QDir(archive).removeRecursively();
    if (!AppPaths::ensureDirectory(archive)) {
        tabUrlsToExport.clear();
        return u"Back-up folder creation was unsuccessful."_qs;
    }
    archiveURL = archive;
    isRunning = true;
    stepTimer.start(0);
    return std::nullopt;
}

double TabBackup::progress() const
{
    if (!isRunning && !zipPath.isEmpty())
        return 1.0;
    return goalExportCount > 0 ? double(successfulExportCount) / goalExportCount : 0.0;
}

void TabBackup::step()
{
    if (!isRunning)
        return;
    if (openDocument) {
        finishTab();
        if (isRunning)
            stepTimer.start(0);
        return;
    }
    if (!tabUrlsToExport.isEmpty()) {
        const QString url = tabUrlsToExport.takeFirst();
        LutegridDocument *document = AppManager::shared().documentFor(url);
        // Another window has it: later.
        if (!document->documentState().testFlag(LutegridDocument::Closed)) {
            tryAgainURLs.append(url);
        } else {
            document->tabName = TabFileNames::plainName(QFileInfo(url).fileName());
            const bool opened = document->open();
            if (opened && document->tabData) {
                openDocument = document;
                openUrl = url;
                aTabIsOpen = true;
            } else {
                if (opened)
                    document->close();
                tryAgainURLs.append(url);
            }
        }
        stepTimer.start(0);
        return;
    }
    if (!tryAgainURLs.isEmpty() && numRetries < maxRetries) {
        Q_EMIT roundFinished(numRetries);
        ++numRetries;
        tabUrlsToExport = std::exchange(tryAgainURLs, {});
        stepTimer.start(retryDelay);
        return;
    }
    for (const QString &url : std::as_const(tryAgainURLs))
        failedNames.append(TabFileNames::plainName(QFileInfo(url).fileName()));
    tryAgainURLs.clear();
    finish();
}

void TabBackup::finishTab()
{
    LutegridDocument *document = std::exchange(openDocument, nullptr);
    const QString name = TabFileNames::plainName(QFileInfo(openUrl).fileName());
    const QDir archive(*archiveURL);
    bool written = document->tabData.has_value();
    if (written && pdfMaker)
        written = pdfMaker(*document->tabData, archive.filePath(name + u".pdf"_qs));
    if (written) {
        const auto bytes = exchangeData(*document->tabData);
        written = bytes && writeBytes(archive.filePath(name + u".lgrd"_qs), *bytes);
    }
    document->close();
    aTabIsOpen = false;
    if (written) {
        ++successfulExportCount;
        Q_EMIT progressChanged();
    } else {
        failedNames.append(name);
    }
    if (waitingToCloseDialogAfterTabClose) {
        isRunning = false;
        removeArchiveFolder();
        Q_EMIT cancelled();
    }
}

void TabBackup::finish()
{
    isRunning = false;
    const QString zipFolderPath = AppPaths::exportsDirectory();
    AppPaths::ensureDirectory(zipFolderPath);
    const QString target = QDir(zipFolderPath).filePath(zipName);
    if (const auto error = zipFolder(*archiveURL, target)) {
        removeArchiveFolder();
        Q_EMIT finished(*error);
        return;
    }
    zipPath = target;
    removeArchiveFolder();
    Analytics::logEvent(u"Backup export"_qs);
    Q_EMIT progressChanged();
    Q_EMIT finished(QString());
}

void TabBackup::cancel()
{
    stepTimer.stop();
    if (aTabIsOpen && openDocument) {
        // The tab's files are written and it is closed at the next step, then the run ends.
        waitingToCloseDialogAfterTabClose = true;
        tabUrlsToExport.clear();
        tryAgainURLs.clear();
        stepTimer.start(0);
        return;
    }
    isRunning = false;
    removeArchiveFolder();
    Q_EMIT cancelled();
}

void TabBackup::removeArchiveFolder()
{
    if (archiveURL)
        QDir(*archiveURL).removeRecursively();
}

QString TabBackup::resultText() const
{
    QString text = QString::number(successfulExportCount) + u" tabs exported"_qs;
    if (failedNames.isEmpty())
        return text + u"\n😎 0 tabs failed to export"_qs;
    text += u'\n' + QString::number(failedNames.size()) + u" tabs failed to export:"_qs;
    for (const QString &name : failedNames)
        text += u'\n' + name;
    return text;
}

std::optional<QString> TabBackup::zipFolder(const QString &folder, const QString &zipPath)
{
    QFile::remove(zipPath);
    int error = 0;
    zip_t *archive = zip_open(QFile::encodeName(zipPath).constData(), ZIP_CREATE | ZIP_TRUNCATE,
                              &error);
    if (!archive) {
        zip_error_t zipError;
        zip_error_init_with_code(&zipError, error);
        const QString text = QString::fromUtf8(zip_error_strerror(&zipError));
        zip_error_fini(&zipError);
        return u"The back-up archive could not be made: "_qs + text;
    }
    const QDir base = QFileInfo(folder).absoluteDir();
    const auto fail = [archive]() -> std::optional<QString> {
        const QString text = QString::fromUtf8(zip_strerror(archive));
        zip_discard(archive);
        return u"The back-up archive could not be made: "_qs + text;
    };
    if (zip_dir_add(archive, (QFileInfo(folder).fileName() + u'/').toUtf8().constData(),
                    ZIP_FL_ENC_UTF_8) < 0)
        return fail();
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    QStringList files;
    while (it.hasNext())
        files.append(it.next());
    files.sort();
    for (const QString &file : std::as_const(files)) {
        zip_source_t *source =
            zip_source_file(archive, QFile::encodeName(file).constData(), 0, 0);
        if (!source)
            return fail();
        const QByteArray entry = base.relativeFilePath(file).toUtf8();
        if (zip_file_add(archive, entry.constData(), source, ZIP_FL_ENC_UTF_8) < 0) {
            zip_source_free(source);
            return fail();
        }
    }
    // The files are read here, so the folder must still be there.
    if (zip_close(archive) < 0)
        return fail();
    return std::nullopt;
}
