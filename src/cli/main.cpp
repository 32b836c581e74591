#include "convert.h"
#include "play.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#ifdef LUTEGRID_CLI_PDF
#include <QGuiApplication>
#endif

#include <cstdio>
#include <memory>

namespace {

const char *usageText =
    "Usage: lutegrid-cli convert IN OUT [--notes-on-tab] [--no-lyrics] [--no-headers] [--no-tab]\n"
    "                                   [--lyrics-below] [--two-columns]\n"
    "       lutegrid-cli play FILE [--row R] [--tempo N]\n"
    "\n"
    "Converts a tab between its forms, chosen by each file's extension:\n"
    "  .lgrdi  a tab document, as the library keeps it\n"
    "  .lgrd   the JSON exchange form, for sharing and back-ups\n"
    "  .txt    plain ASCII text, three characters a column; read: any plain-text tab\n"
    "  .musicxml, .mxl  MusicXML, plain or compressed: a TAB staff with strings and frets\n"
    "  .mid    a MIDI file (output only), timed as playback times the columns\n"
    "  .pdf    US Letter pages as view mode shows the tab (output only), for printing\n"
    "\n"
    "A document takes its title from its file name; an exchange file carries its own.\n"
    "\n"
    "Options for text and PDF output:\n"
    "  --notes-on-tab  note names instead of fret numbers\n"
    "  --no-lyrics     leave out lyric lines\n"
    "  --no-headers    leave out chord names\n"
    "  --no-tab        leave out the tab lines\n"
    "Options for PDF output:\n"
    "  --lyrics-below  lyric lines under the tab lines instead of over them\n"
    "  --two-columns   two rows side by side\n"
    "\n"
    "play sounds a tab (.lgrdi or .lgrd) through the default sound output, column by column\n"
    "at the tab's playback speed, and returns when the last note has rung out:\n"
    "  --row R    start at row R, counting from 0 (default 0)\n"
    "  --tempo N  N beats a minute instead of the tab's own\n"
    "\n"
    "convert exits 0 on success and prints nothing; on failure either command prints one line\n"
    "and exits 1.\n";

int usage(FILE *stream, int code)
{
    std::fputs(usageText, stream);
    return code;
}

// The command line speaks in its own one-line messages: Qt's remarks (a missing runtime folder
// and the like) stay out of them.
void quietMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "lutegrid-cli: %s\n", qPrintable(message));
}

// PDF pages need fonts, hence a QGuiApplication; everything else runs without one.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char *argv[])
{
#ifdef LUTEGRID_CLI_PDF
    // The output of "convert IN OUT" is the third word that isn't an option.
    QList<QByteArray> words;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] != '-')
            words.append(QByteArray(argv[i]));
    }
    if (words.size() >= 3 && words[0] == "convert" && words[2].toLower().endsWith(".pdf")) {
        // No window is ever shown, so no display is needed either.
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(quietMessages);
        return std::make_unique<QGuiApplication>(argc, argv);
    }
#endif
    return std::make_unique<QCoreApplication>(argc, argv);
}

} // namespace

int main(int argc, char *argv[])
{
    const std::unique_ptr<QCoreApplication> app = makeApplication(argc, argv);
    QCoreApplication::setOrganizationName(u"Lutegrid"_qs);
    QCoreApplication::setApplicationName(u"Lutegrid"_qs);

    QCommandLineParser parser;
    parser.addPositionalArgument(u"command"_qs, u"convert or play"_qs);
    const QCommandLineOption help({u"h"_qs, u"help"_qs}, u"Show this help."_qs);
    const QCommandLineOption notesOnTab(u"notes-on-tab"_qs, u"Note names."_qs);
    const QCommandLineOption noLyrics(u"no-lyrics"_qs, u"No lyrics."_qs);
    const QCommandLineOption noHeaders(u"no-headers"_qs, u"No chord names."_qs);
    const QCommandLineOption noTab(u"no-tab"_qs, u"No tab lines."_qs);
    const QCommandLineOption lyricsBelow(u"lyrics-below"_qs, u"Lyrics below."_qs);
    const QCommandLineOption twoColumns(u"two-columns"_qs, u"Two columns."_qs);
    const QCommandLineOption row(u"row"_qs, u"First row."_qs, u"R"_qs);
    const QCommandLineOption tempo(u"tempo"_qs, u"Beats a minute."_qs, u"N"_qs);
    parser.addOptions(
        {help, notesOnTab, noLyrics, noHeaders, noTab, lyricsBelow, twoColumns, row, tempo});
    if (!parser.parse(QCoreApplication::arguments())) {
        std::fprintf(stderr, "lutegrid-cli: %s\n", qPrintable(parser.errorText()));
        return usage(stderr, 2);
    }
    if (parser.isSet(help))
        return usage(stdout, 0);

    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() == 3 && arguments[0] == u"convert") {
        ConvertOptions options;
        options.notesOnTab = parser.isSet(notesOnTab);
        options.showLyrics = !parser.isSet(noLyrics);
        options.showColumnHeaders = !parser.isSet(noHeaders);
        options.showTabContent = !parser.isSet(noTab);
        options.lyricsBelow = parser.isSet(lyricsBelow);
        options.twoColumns = parser.isSet(twoColumns);
        const QString error = convertTabFile(arguments[1], arguments[2], options);
        if (!error.isEmpty()) {
            std::fprintf(stderr, "lutegrid-cli: %s\n", qPrintable(error));
            return 1;
        }
        return 0;
    }
    if (arguments.size() == 2 && arguments[0] == u"play") {
        PlayOptions options;
        bool ok = true;
        if (parser.isSet(row))
            options.row = parser.value(row).toInt(&ok);
        if (ok && parser.isSet(tempo))
            options.tempo = parser.value(tempo).toLongLong(&ok);
        if (!ok) {
            std::fputs("lutegrid-cli: --row and --tempo take whole numbers\n", stderr);
            return usage(stderr, 2);
        }
        const QString error = playTabFile(arguments[1], options);
        if (!error.isEmpty()) {
            std::fprintf(stderr, "lutegrid-cli: %s\n", qPrintable(error));
            return 1;
        }
        return 0;
    }
    return usage(stderr, 2);
}
