#include "convert.h"
#include "tabinput.h"

#include "export/asciitabreader.h"
#include "export/documentmanager.h"
#include "export/midiwriter.h"
#include "export/musicxml.h"
#include "model/tabfileformat.h"

#ifdef LUTEGRID_CLI_PDF
#include "tabpdf.h"
#endif

#include <QFileInfo>
#include <QSaveFile>

namespace {

enum class Form { Document, Exchange, Text, MusicXml, CompressedMusicXml, Midi, Pdf, Unknown };

Form formOf(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == documentExtension)
        return Form::Document;
    if (suffix == exchangeExtension)
        return Form::Exchange;
    if (suffix == u"txt")
        return Form::Text;
    if (suffix == MusicXml::fileExtension(false))
        return Form::MusicXml;
    if (suffix == MusicXml::fileExtension(true))
        return Form::CompressedMusicXml;
    if (suffix == MidiWriter::fileExtension())
        return Form::Midi;
    if (suffix == u"pdf")
        return Form::Pdf;
    return Form::Unknown;
}

// A document's name is its file name up to the first ".lgrd".
QString titleFromFileName(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const qsizetype cut = name.indexOf(u".lgrd");
    return cut >= 0 ? name.left(cut) : name;
}

TabExportConfiguration configurationOf(const TabData &tab, const ConvertOptions &options)
{
    TabExportConfiguration configuration{tab};
    configuration.notesOnTab = options.notesOnTab;
    configuration.showLyrics = options.showLyrics;
    configuration.showColumnHeaders = options.showColumnHeaders;
    configuration.showTabContent = options.showTabContent;
    configuration.lyricsBelow = options.lyricsBelow;
    configuration.twoColumns = options.twoColumns;
    return configuration;
}

} // namespace

QString convertTabFile(const QString &inputPath, const QString &outputPath,
                       const ConvertOptions &options)
{
    const Form inputForm = formOf(inputPath);
    const Form outputForm = formOf(outputPath);
    if (inputForm == Form::Unknown || inputForm == Form::Midi || inputForm == Form::Pdf)
        return inputPath + u": not a tab file (.lgrdi, .lgrd, .txt, .musicxml or .mxl)";
    if (outputForm == Form::Unknown)
        return outputPath
               + u": unknown output type (use .lgrdi, .lgrd, .txt, .musicxml, .mxl, .mid or .pdf)";

    QString readError;
    const std::optional<QByteArray> bytes = readTabInput(inputPath, &readError);
    if (!bytes)
        return readError;

    std::optional<TabData> tab;
    if (inputForm == Form::Document) {
        QString error;
        tab = tabDataFromDocumentData(*bytes, &error);
        if (!tab)
            return inputPath + u": unreadable tab document (" + error + u")";
        tab->title = titleFromFileName(inputPath);
    } else if (inputForm == Form::Text) {
        AsciiTabResult text = AsciiTabReader::read(QString::fromUtf8(*bytes));
        if (!text.tab)
            return inputPath + u": " + text.message;
        tab = std::move(text.tab);
        if (!text.foundTitle)
            tab->title = QFileInfo(inputPath).completeBaseName();
    } else if (inputForm == Form::MusicXml || inputForm == Form::CompressedMusicXml) {
        MusicXml::ReadResult score = MusicXml::read(*bytes);
        if (!score.tab)
            return inputPath + u": " + score.message;
        tab = std::move(score.tab);
        if (tab->title.isEmpty())
            tab->title = QFileInfo(inputPath).completeBaseName();
    } else {
        ImportError error;
        tab = tabDataFromExchangeData(*bytes, &error);
        if (!tab)
            return inputPath + u": " + error.message;
    }

    QByteArray output;
    switch (outputForm) {
    case Form::Document:
        output = documentData(*tab);
        break;
    case Form::Exchange: {
        const auto json = exchangeData(*tab);
        if (!json)
            return outputPath + u": the tab could not be written as JSON";
        output = *json;
        break;
    }
    case Form::Text:
        output =
            DocumentManager::asciiBytes(DocumentManager::tabText(configurationOf(*tab, options)));
        break;
    case Form::Pdf: {
#ifdef LUTEGRID_CLI_PDF
        const auto pdf = TabPdf::pdfData(configurationOf(*tab, options));
        if (!pdf)
            return outputPath + u": the PDF could not be made";
        output = *pdf;
        break;
#else
        return outputPath + u": this build has no PDF output (it was built without Qt GUI)";
#endif
    }
    case Form::MusicXml:
    case Form::CompressedMusicXml: {
        const auto score = MusicXml::write(*tab, outputForm == Form::CompressedMusicXml);
        if (!score)
            return outputPath + u": the tab could not be packed as MusicXML";
        output = *score;
        break;
    }
    case Form::Midi: {
        const auto midi = MidiWriter::write(*tab);
        if (!midi)
            return outputPath + u": the tab could not be written as MIDI";
        output = *midi;
        break;
    }
    case Form::Unknown:
        break;
    }

    QSaveFile file(outputPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(output) != output.size() || !file.commit())
        return outputPath + u": " + file.errorString();
    return {};
}
