#include "export/tabviewprintrenderer.h"
#include "surfacepalette.h"
#include "tabpdf.h"

#include "testfiles.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QStringList standardSix{u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};

// Row r: lyric "verse r words", chord "Am" over column 0 and "G7" over column 15, fret r + 10
// on the top line at column 3.
TabRowData row(int r)
{
    QList<TabColumnData> columns;
    for (int c = 0; c < 30; ++c) {
        QList<ColumnItemType> items(6, ColumnItemType::blank());
        if (c == 3)
            items[0] = ColumnItemType::note(r + 10);
        std::optional<QString> chord;
        if (c == 0)
            chord = u"Am"_qs;
        else if (c == 15)
            chord = u"G7"_qs;
        columns.append(TabColumnData(items, chord));
    }
    return TabRowData(columns, {u"verse %1 words"_qs.arg(r)});
}

TabExportConfiguration song(int rows)
{
    QList<TabRowData> rowDatas;
    for (int r = 0; r < rows; ++r)
        rowDatas.append(row(r));
    TabExportConfiguration config{TabData(
        u"Moonlit Road"_qs, rowDatas, standardSix, 0,
        u"Play it slowly and let the open strings ring. Chords: https://example.com/moonlit."_qs)};
    return config;
}

struct Run {
    int exitCode = -1;
    QString out;
};

Run run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60000))
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput())};
}

QString pageText(const QString &pdf, int page)
{
    return run(u"pdftotext"_qs,
               {u"-f"_qs, QString::number(page), u"-l"_qs, QString::number(page), pdf, u"-"_qs})
        .out;
}

// Where each needle stands in the text, in the order given; -1 for a missing one.
bool inOrder(const QString &text, const QStringList &needles)
{
    qsizetype at = 0;
    for (const QString &needle : needles) {
        at = text.indexOf(needle, at);
        if (at < 0) {
            qWarning() << "not found in order:" << needle << "in" << text;
            return false;
        }
        at += needle.size();
    }
    return true;
}

QString shotsDir()
{
    const QString dir =
        QDir(QCoreApplication::applicationDirPath()).filePath(u"../../../shots-export"_qs);
    QDir().mkpath(dir);
    return QDir(dir).absolutePath();
}

} // namespace

class TestPdf : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    QString write(const TabExportConfiguration &config, const QString &name)
    {
        const QString path = dir.filePath(name);
        if (!TabPdf::writePdf(config, path))
            return {};
        return path;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        if (QStandardPaths::findExecutable(u"pdftotext"_qs).isEmpty())
            QSKIP("poppler-utils is missing (scripts/common.sh installs it)");
    }

    void pagesReadBackInOrder()
    {
        const QString pdf = write(song(9), u"Moonlit Road.pdf"_qs);
        QVERIFY(!pdf.isEmpty());
        const QString info = run(u"pdfinfo"_qs, {pdf}).out;
        QVERIFY2(info.contains(QRegularExpression(u"Page size:\\s+612 x 792 pts"_qs)),
                 qPrintable(info));
        QVERIFY2(info.contains(QRegularExpression(u"Pages:\\s+3\\n"_qs)), qPrintable(info));
        // Vector text with the fonts inside the file.
        const QString fonts = run(u"pdffonts"_qs, {pdf}).out;
        QVERIFY(!fonts.contains(
            QRegularExpression(u" no\\s+(yes|no)\\s+(yes|no)\\s+\\d+\\s+\\d+\\n"_qs)));

        // The address in the intro is a link a reader can follow, without the full stop.
        QVERIFY(readFile(pdf).contains("(https://example.com/moonlit)"));

        // Three rows a page, as the pagination test works out.
        const QString first = pageText(pdf, 1);
        QVERIFY(inOrder(first, {u"Moonlit Road"_qs, u"Play it slowly"_qs, u"verse 0 words"_qs,
                                u"Am"_qs, u"G7"_qs, u"10"_qs, u"verse 1 words"_qs, u"11"_qs,
                                u"verse 2 words"_qs, u"12"_qs, u"Lutegrid"_qs}));
        QVERIFY(!first.contains(u"verse 3"_qs));
        const QString second = pageText(pdf, 2);
        QVERIFY(
            inOrder(second, {u"verse 3 words"_qs, u"13"_qs, u"verse 5 words"_qs, u"Lutegrid"_qs}));
        QVERIFY(!second.contains(u"Moonlit"_qs));
        QVERIFY(inOrder(pageText(pdf, 3),
                        {u"verse 6 words"_qs, u"verse 8 words"_qs, u"18"_qs, u"Lutegrid"_qs}));

        QVERIFY(run(u"pdftoppm"_qs, {u"-png"_qs, u"-r"_qs, u"60"_qs, pdf,
                                     QDir(shotsDir()).filePath(u"pdf-single"_qs)})
                    .exitCode == 0);
    }

    void optionsReachThePage()
    {
        auto config = song(120);
        // Without the intro seven pairs fit on the first page too.
        config.tabData.introText.reset();
        config.twoColumns = true;
        config.lyricsBelow = true;
        const QString pdf = write(config, u"pairs.pdf"_qs);
        QVERIFY(!pdf.isEmpty());
        QVERIFY(run(u"pdfinfo"_qs, {pdf}).out.contains(QRegularExpression(u"Pages:\\s+9\\n"_qs)));
        // Fourteen rows a page: the second begins with row 14.
        const QString second = pageText(pdf, 2);
        QVERIFY(second.contains(u"verse 14 words"_qs));
        QVERIFY(!second.contains(u"verse 13 words"_qs) && !second.contains(u"verse 28 words"_qs));
        QVERIFY(run(u"pdftoppm"_qs, {u"-png"_qs, u"-r"_qs, u"60"_qs, u"-l"_qs, u"1"_qs, pdf,
                                     QDir(shotsDir()).filePath(u"pdf-pairs"_qs)})
                    .exitCode == 0);

        auto bare = song(3);
        bare.showLyrics = false;
        bare.showColumnHeaders = false;
        const QString text = pageText(write(bare, u"bare.pdf"_qs), 1);
        QVERIFY(text.contains(u"Moonlit Road"_qs) && text.contains(u"12"_qs));
        QVERIFY(!text.contains(u"verse"_qs) && !text.contains(u"G7"_qs));
    }

    // A dark screen must not print light text: every pixel of the page is a grey.
    void darkModePrintsBlackOnWhite()
    {
        SurfacePalette::instance()->setDark(true);
        const QString pdf = write(song(2), u"dark.pdf"_qs);
        SurfacePalette::instance()->setDark(false);
        const QString png = dir.filePath(u"dark"_qs);
        QCOMPARE(run(u"pdftoppm"_qs, {u"-png"_qs, u"-r"_qs, u"40"_qs, u"-singlefile"_qs, pdf, png})
                     .exitCode,
                 0);
        const QImage page(png + u".png"_qs);
        QVERIFY(!page.isNull());
        QCOMPARE(page.pixel(2, 2), qRgb(255, 255, 255));
        int dark = 0;
        for (int y = 0; y < page.height(); ++y) {
            for (int x = 0; x < page.width(); ++x) {
                const QRgb p = page.pixel(x, y);
                QVERIFY2(qRed(p) == qGreen(p) && qGreen(p) == qBlue(p),
                         qPrintable(u"colour at %1,%2"_qs.arg(x).arg(y)));
                dark += qRed(p) < 100;
            }
        }
        QVERIFY(dark > 500);
    }

    void aTabWithoutRowsHasNoPages()
    {
        const QString pdf =
            write(TabExportConfiguration{TabData(u"Empty"_qs, {}, standardSix, 0, std::nullopt)},
                  u"empty.pdf"_qs);
        QVERIFY(!pdf.isEmpty());
        // poppler calls a page tree of none invalid, so the file itself is checked: one empty
        // page tree, nothing drawn.
        const QByteArray bytes = readFile(pdf);
        QVERIFY(bytes.startsWith("%PDF-"));
        QVERIFY(bytes.contains("/Count 0") && !bytes.contains("/Type /Page "));
        QVERIFY(bytes.trimmed().endsWith("%%EOF"));
    }
};

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
    QGuiApplication app(argc, argv);
    TestPdf test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_pdf.moc"
