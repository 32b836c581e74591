#include "exportdialogviewcontroller.h"

#include "services/analytics.h"

#include <QFileInfo>

ExportDialogViewController::ExportDialogViewController(TabExportConfiguration config,
                                                       Exporter exportFunction, QObject *parent)
    : QObject(parent), exportConfig(std::move(config)), exporter(std::move(exportFunction)),
      fileNameField(exportConfig.tabData.title)
{
    if (!exporter)
        exporter = &DocumentManager::exportToPath;
}

void ExportDialogViewController::setFileName(const QString &name)
{
    if (name == fileNameField)
        return;
    fileNameField = name;
    Q_EMIT changed();
}

void ExportDialogViewController::setError(const QString &text)
{
    errorLabel = text;
    Q_EMIT changed();
}

void ExportDialogViewController::editingBegan()
{
    if (!errorLabel.isEmpty())
        setError(QString());
}

void ExportDialogViewController::exportTab()
{
    if (currentState != Input || !exportButtEnabled)
        return;
    const QString name = DocumentManager::trimmedTabName(fileNameField);
    if (const auto message = DocumentManager::validateTabName(name)) {
        setError(*message);
        return;
    }
    if (!lgrdOn && !txtOn && !pdfOn && !musicXmlOn && !midiOn) {
        setError(u"Select an export option"_qs);
        return;
    }
    errorLabel.clear();
    runPass(false);
    if (overwriteNames.isEmpty()) {
        currentState = Done;
        Analytics::logEvent(analyticsEvent());
    } else {
        QStringList lines;
        for (const QString &clash : std::as_const(overwriteNames))
            lines.append(u"• "_qs + clash);
        overwriteNames.clear();
        overwriteFileList = lines.join(u"\n\n"_qs);
        currentState = Asking;
        exportButtEnabled = true;
    }
    Q_EMIT changed();
}

void ExportDialogViewController::runPass(bool overwrite)
{
    exportButtEnabled = false;
    const QString base = DocumentManager::trimmedTabName(fileNameField);
    const QList<std::pair<bool, ExportType>> order{
        {lgrdOn, ExportType::LGRD},         {txtOn, ExportType::TXT}, {pdfOn, ExportType::PDF},
        {musicXmlOn, ExportType::MUSICXML}, {midiOn, ExportType::MIDI}};
    for (const auto &[on, type] : order) {
        if (!on)
            continue;
        const QString name = base + u'.' + DocumentManager::fileExtension(type);
        const QString path = DocumentManager::exportUrl(name);
        if (!overwrite && QFileInfo::exists(path)) {
            overwriteNames.append(name);
            continue;
        }
        // A failure leaves the format out; the pass goes on.
        if (const auto written = exporter(type, exportConfig, path))
            exportedFileUrls.append(*written);
    }
}

QString ExportDialogViewController::analyticsEvent() const
{
    const auto flag = [](bool on) { return on ? u"1"_qs : u"0"_qs; };
    QString event = u"Export "_qs + flag(lgrdOn) + u' ' + flag(txtOn) + u' ' + flag(pdfOn);
    // The older three-flag name stays as it was, so past counts still compare.
    if (musicXmlOn || midiOn)
        event += u' ' + flag(musicXmlOn) + u' ' + flag(midiOn);
    return event;
}

void ExportDialogViewController::confirmOverwrite()
{
    if (currentState != Asking)
        return;
    runPass(true);
    currentState = Done;
    Q_EMIT changed();
}

void ExportDialogViewController::cancelOverwrite()
{
    if (currentState != Asking)
        return;
    currentState = Input;
    Q_EMIT changed();
}

void ExportDialogViewController::finishExporting()
{
    Q_EMIT finished();
}

QStringList ExportDialogViewController::exportedFiles() const
{
    QStringList files;
    for (const QString &path : exportedFileUrls) {
        if (!files.contains(path))
            files.append(path);
    }
    return files;
}

QString ExportDialogViewController::successDetails() const
{
    const QStringList files = exportedFiles();
    if (files.isEmpty())
        return u"Nothing could be written to the Exports folder."_qs;
    QStringList names;
    for (const QString &path : files)
        names.append(QFileInfo(path).fileName());
    return u"Saved in the Exports folder:\n"_qs + names.join(u'\n');
}
