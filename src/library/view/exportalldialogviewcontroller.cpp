#include "exportalldialogviewcontroller.h"

#include "library/icloudmanager.h"

#include <QFileInfo>

TabBackup::PdfMaker &ExportAllDialogViewController::pdfMaker()
{
    static TabBackup::PdfMaker maker;
    return maker;
}

ExportAllDialogViewController::ExportAllDialogViewController(QObject *parent)
    : QObject(parent),
      run(std::make_unique<TabBackup>(iCloudManager::shared().iCloudContainerUrl, pdfMaker()))
{
    connect(run.get(), &TabBackup::progressChanged, this, &ExportAllDialogViewController::changed);
    connect(run.get(), &TabBackup::finished, this, [this](const QString &failure) {
        isDone = true;
        text = failure.isEmpty() ? run->resultText() : failure;
        Q_EMIT changed();
    });
    connect(run.get(), &TabBackup::cancelled, this, &ExportAllDialogViewController::finished);
}

double ExportAllDialogViewController::progress() const
{
    return run->progress();
}

bool ExportAllDialogViewController::running() const
{
    return run->running();
}

QString ExportAllDialogViewController::zipPath() const
{
    return run->zipPath;
}

QString ExportAllDialogViewController::zipFolder() const
{
    return run->zipPath.isEmpty() ? QString() : QFileInfo(run->zipPath).absolutePath();
}

void ExportAllDialogViewController::start()
{
    if (const auto failure = run->start()) {
        isDone = true;
        text = *failure;
    } else {
        text = u"Exporting tabs…"_qs;
    }
    Q_EMIT changed();
}

void ExportAllDialogViewController::cancel()
{
    if (run->running()) {
        // Finished comes with the cancelled run, once any open tab has closed.
        run->cancel();
        return;
    }
    Q_EMIT finished();
}
