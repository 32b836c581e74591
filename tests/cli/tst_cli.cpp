#include "model/tabfileformat.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace {

struct Run {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run cli(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(LUTEGRID_CLI), arguments);
    if (!process.waitForFinished(30000))
        qFatal("lutegrid-cli did not finish");
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    file.write(bytes);
}

TabData songTab()
{
    TabRowData row(4, 6);
    row.colDatas[0].setColumnItem(5, ColumnItemType::note(3));
    row.colDatas[0].chordName = u"G"_qs;
    row.colDatas[2].setColumnItem(0, ColumnItemType::bar());
    row.lyricLines = {u"Caf\u00e9 au lait"_qs};
    TabData tab(u"Song"_qs, {row}, standardStringNotes(6), 2, u"Gently"_qs);
    tab.tempo = 95;
    return tab;
}

} // namespace

class TestCli : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(dir.isValid()); }
    void exchangeRoundTripsThroughDocument();
    void documentFromAnotherWriterTakesItsFileName();
    void textWithOptions();
    void pdfWithOptionsWithoutADisplay();
    void unreadableInputSaysWhatAndWhere_data();
    void unreadableInputSaysWhatAndWhere();
    void oversizeInputIsRefusedUnread();
    void helpAndUsage();

private:
    QString path(const QString &name) const { return QDir(dir.path()).filePath(name); }
    QTemporaryDir dir;
};

void TestCli::exchangeRoundTripsThroughDocument()
{
    const QByteArray original = exchangeData(songTab()).value();
    writeFile(path(u"Song.lgrd"_qs), original);
    QDir(dir.path()).mkdir(u"back"_qs);

    Run toDocument = cli({u"convert"_qs, path(u"Song.lgrd"_qs), path(u"Song.lgrdi"_qs)});
    QCOMPARE(toDocument.exitCode, 0);
    QVERIFY(toDocument.out.isEmpty() && toDocument.err.isEmpty());
    QVERIFY(tabDataFromDocumentData(readFile(path(u"Song.lgrdi"_qs))));

    Run back = cli({u"convert"_qs, path(u"Song.lgrdi"_qs), path(u"back/Song.lgrd"_qs)});
    QCOMPARE(back.exitCode, 0);
    QCOMPARE(readFile(path(u"back/Song.lgrd"_qs)), original);
}

void TestCli::documentFromAnotherWriterTakesItsFileName()
{
    QFile::copy(QStringLiteral(LUTEGRID_TEST_DATA "/platform_tab.lgrdi"),
                path(u"Night Walk.lgrdi.lgrdi"_qs));
    QCOMPARE(
        cli({u"convert"_qs, path(u"Night Walk.lgrdi.lgrdi"_qs), path(u"out.lgrd"_qs)}).exitCode, 0);
    const QJsonObject json = QJsonDocument::fromJson(readFile(path(u"out.lgrd"_qs))).object();
    QCOMPARE(json.value(u"title").toString(), u"Night Walk"_qs);
    QCOMPARE(json.value(u"cFret").toInt(), 2);
}

void TestCli::textWithOptions()
{
    writeFile(path(u"Song.lgrd"_qs), exchangeData(songTab()).value());
    QCOMPARE(cli({u"convert"_qs, path(u"Song.lgrd"_qs), path(u"Song.txt"_qs)}).exitCode, 0);
    const QByteArray text = readFile(path(u"Song.txt"_qs));
    QVERIFY2(text.startsWith("Song\n\nGently\n\ncapo on fret 2"), text.constData());
    QVERIFY(text.contains("Cafe au lait"));
    QVERIFY(text.contains("G  "));
    QVERIFY(text.contains("--3"));

    QCOMPARE(cli({u"convert"_qs, path(u"Song.lgrd"_qs), path(u"notes.txt"_qs), u"--notes-on-tab"_qs,
                  u"--no-lyrics"_qs, u"--no-headers"_qs})
                 .exitCode,
             0);
    const QByteArray notes = readFile(path(u"notes.txt"_qs));
    // Fret 3 on the low E string is a G.
    QVERIFY2(notes.contains("--G"), notes.constData());
    QVERIFY(!notes.contains("Cafe"));
    QVERIFY(!notes.contains("G  "));

    QCOMPARE(
        cli({u"convert"_qs, path(u"Song.lgrd"_qs), path(u"bare.txt"_qs), u"--no-tab"_qs}).exitCode,
        0);
    QVERIFY(!readFile(path(u"bare.txt"_qs)).contains("|"));
}

void TestCli::pdfWithOptionsWithoutADisplay()
{
#ifndef LUTEGRID_CLI_PDF
    QSKIP("this build has no PDF output");
#endif
    if (QStandardPaths::findExecutable(u"pdftotext"_qs).isEmpty())
        QSKIP("poppler-utils is missing (scripts/common.sh installs it)");
    writeFile(path(u"Song.lgrd"_qs), exchangeData(songTab()).value());
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        environment.remove(QString::fromLatin1(name));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(LUTEGRID_CLI),
                  {u"convert"_qs, path(u"Song.lgrd"_qs), path(u"Song.pdf"_qs),
                   u"--two-columns"_qs, u"--lyrics-below"_qs, u"--no-headers"_qs});
    QVERIFY(process.waitForFinished(60000));
    QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());
    QVERIFY(readFile(path(u"Song.pdf"_qs)).startsWith("%PDF-"));

    QProcess text;
    text.start(u"pdftotext"_qs, {u"-layout"_qs, path(u"Song.pdf"_qs), u"-"_qs});
    QVERIFY(text.waitForFinished(30000));
    const QString page = QString::fromUtf8(text.readAllStandardOutput());
    // Title, then the intro, then the tab with its lyric under it.
    const qsizetype title = page.indexOf(u"Song"_qs);
    const qsizetype intro = page.indexOf(u"Gently"_qs);
    const qsizetype lyric = page.indexOf(u"Caf\u00e9 au lait"_qs);
    QVERIFY2(title >= 0 && intro > title && lyric > intro, qPrintable(page));
    QVERIFY(page.contains(u"CAPO"_qs) && page.contains(u"Lutegrid"_qs));
}

void TestCli::unreadableInputSaysWhatAndWhere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("output");
    QTest::newRow("garbage document")
        << u"bad.lgrdi"_qs << QByteArray("not an archive") << u"x.lgrd"_qs;
    QTest::newRow("json in document") << u"json.lgrdi"_qs << QByteArray("{}") << u"x.txt"_qs;
    QTest::newRow("no title") << u"notitle.lgrd"_qs << QByteArray(R"({"tabRows":[]})")
                              << u"x.lgrdi"_qs;
    QTest::newRow("not an object") << u"list.lgrd"_qs << QByteArray("[]") << u"x.lgrdi"_qs;
    QTest::newRow("missing") << u"missing.lgrd"_qs << QByteArray() << u"x.lgrdi"_qs;
    QTest::newRow("unknown input type") << u"song.pdf"_qs << QByteArray("%PDF") << u"x.lgrdi"_qs;
}

void TestCli::unreadableInputSaysWhatAndWhere()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, output);
    if (name != u"missing.lgrd")
        writeFile(path(name), bytes);
    const Run run = cli({u"convert"_qs, path(name), path(output)});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.err.count('\n'), 1);
    QVERIFY2(run.err.contains(path(name).toUtf8()), run.err.constData());
    QVERIFY(!QFile::exists(path(output)));
}

void TestCli::oversizeInputIsRefusedUnread()
{
    // A sparse file one byte past the limit costs no disk, and reading it whole would.
    for (const QString &name : {u"huge.lgrd"_qs, u"huge.lgrdi"_qs}) {
        QFile huge(path(name));
        QVERIFY(huge.open(QIODevice::WriteOnly));
        QVERIFY(huge.resize(maximumTabFileBytes + 1));
        huge.close();
        for (const QString &command : {u"convert"_qs, u"play"_qs}) {
            QStringList arguments{command, path(name)};
            if (command == u"convert")
                arguments.append(path(u"out.lgrdi"_qs));
            const Run run = cli(arguments);
            QCOMPARE(run.exitCode, 1);
            QCOMPARE(run.err.count('\n'), 1);
            QVERIFY2(run.err.contains("too large"), run.err.constData());
            QVERIFY(!QFile::exists(path(u"out.lgrdi"_qs)));
        }
    }

    // A device without end, under a name the reader takes, is read only up to the limit.
    if (!QFile::exists(u"/dev/zero"_qs))
        QSKIP("no /dev/zero");
    QVERIFY(QFile::link(u"/dev/zero"_qs, path(u"zero.lgrd"_qs)));
    const Run run = cli({u"convert"_qs, path(u"zero.lgrd"_qs), path(u"out.lgrdi"_qs)});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.err.contains("too large"), run.err.constData());
    QVERIFY(!QFile::exists(path(u"out.lgrdi"_qs)));
}

void TestCli::helpAndUsage()
{
    const Run help = cli({u"--help"_qs});
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.out.contains("convert IN OUT"));
    QVERIFY(help.out.contains("--notes-on-tab"));
    QVERIFY(cli({u"convert"_qs, u"only-one.lgrd"_qs}).exitCode != 0);
    QVERIFY(cli({}).exitCode != 0);
}

LUTEGRID_TEST_MAIN(TestCli)
#include "tst_cli.moc"
