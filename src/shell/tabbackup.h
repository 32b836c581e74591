#pragma once

#include "model/tabdata.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <optional>

class LutegridDocument;

// The back-up archive: every tab of the storage folder opened in turn, written as "N.lgrd"
// and "N.pdf" into "Backup_<date>" in the temporary area, and that folder zipped into
// "Lutegrid_Backup.zip". A tab that another window holds open is tried again in later rounds.
// One step runs per turn of the event loop, so the progress shows and Cancel is heard.
class TabBackup : public QObject {
    Q_OBJECT

public:
    // Writes a tab's PDF to a path; false if it could not. Without one no PDF is written.
    using PdfMaker = std::function<bool(const TabData &, const QString &path)>;
    static inline const QString zipName = u"Lutegrid_Backup.zip"_qs;

    TabBackup(std::optional<QString> docsUrl, PdfMaker pdfMaker, QObject *parent = nullptr);
    ~TabBackup() override;

    // Rounds over the tabs that could not be opened, and the wait before each.
    int maxRetries = 5;
    int retryDelay = 1000;

    std::optional<QString> docsUrl;
    QStringList tabUrlsToExport;
    QStringList tryAgainURLs;
    int successfulExportCount = 0;
    int goalExportCount = 0;
    int numRetries = 0;
    std::optional<QString> archiveURL;
    bool aTabIsOpen = false;
    bool waitingToCloseDialogAfterTabClose = false;

    // Where the zip went, once done.
    QString zipPath;
    QStringList failedNames;

    // Gives the message that ends the run before it began, or nothing.
    std::optional<QString> start();
    // Stops the run and removes the temporary folder; with a tab open, once it has closed.
    void cancel();
    bool running() const { return isRunning; }
    double progress() const;
    // "N tabs exported" and the failures, as the results screen shows them.
    QString resultText() const;

    // "Backup_" and today's date, with every "/" made "_".
    static QString archiveFolderName(const QDate &date);
    // Zips a folder, the folder itself as the archive's top entry. Gives an error text or
    // nothing.
    static std::optional<QString> zipFolder(const QString &folder, const QString &zipPath);

Q_SIGNALS:
    void progressChanged();
    // After each pass over the list, before the next round waits.
    void roundFinished(int round);
    // The run is over: `message` is set when it failed as a whole.
    void finished(const QString &message);
    // A cancel that waited for a tab to close is through.
    void cancelled();

private:
    void step();
    void finishTab();
    void finish();
    void removeArchiveFolder();

    PdfMaker pdfMaker;
    QTimer stepTimer;
    LutegridDocument *openDocument = nullptr;
    QString openUrl;
    bool isRunning = false;
    bool cancelRequested = false;
};
