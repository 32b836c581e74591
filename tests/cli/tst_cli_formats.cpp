#include "export/asciitabreader.h"
#include "model/tabfileformat.h"
#include "testmain.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace {

struct Run {
    int exitCode = -1;
    QByteArray err;
};

Run cli(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(LUTEGRID_CLI), arguments);
    if (!process.waitForFinished(30000))
        qFatal("lutegrid-cli did not finish");
    return {process.exitCode(), process.readAllStandardError()};
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

const QByteArray forumTab = "Slow Song\n\ncapo 1\n\n"
                            "  G            D\n"
                            "e|--3-----|--2-----|\n"
                            "B|--0-----|--3-----|\n"
                            "G|--0-----|--2-----|\n"
                            "D|--0-----|--0-----|\n"
                            "A|--2-----|--------|\n"
                            "E|--3-----|--------|\n";

} // namespace

class TestCliFormats : public QObject {
    Q_OBJECT

    QTemporaryDir folder;
    QString path(const QString &name) const { return folder.filePath(name); }

private Q_SLOTS:
    void textIn()
    {
        writeFile(path(u"forum.txt"_qs), forumTab);
        Run run = cli({u"convert"_qs, path(u"forum.txt"_qs), path(u"forum.lgrd"_qs)});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        ImportError error;
        const auto tab = tabDataFromExchangeData(readFile(path(u"forum.lgrd"_qs)), &error);
        QVERIFY2(tab, qPrintable(error.message));
        QCOMPARE(tab->title, u"Slow Song"_qs);
        QCOMPARE(tab->capoFret, 1);
        const TabColumnData &first = tab->tabRowDatas[0].colDatas[0];
        QCOMPARE(first.chordName, u"G"_qs);
        QCOMPARE(first.columnItems.first(), ColumnItemType::note(3));
        QCOMPARE(first.columnItems.last(), ColumnItemType::note(3));

        // Our own text, read back and written again, is the same text.
        run = cli({u"convert"_qs, path(u"forum.lgrd"_qs), path(u"once.txt"_qs)});
        QCOMPARE(run.exitCode, 0);
        run = cli({u"convert"_qs, path(u"once.txt"_qs), path(u"twice.txt"_qs)});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(readFile(path(u"twice.txt"_qs)), readFile(path(u"once.txt"_qs)));
    }

    void textWithoutTabIsRefused()
    {
        writeFile(path(u"letter.txt"_qs), "Dear friend,\nno tab here.\n");
        const Run run = cli({u"convert"_qs, path(u"letter.txt"_qs), path(u"letter.lgrd"_qs)});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(run.err.contains(AsciiTabReader::noTabMessage().toUtf8()));
        QVERIFY(!QFile::exists(path(u"letter.lgrd"_qs)));
    }

    void musicXmlAndMidiOut()
    {
        writeFile(path(u"song.txt"_qs), forumTab);
        for (const QString &suffix : {u"musicxml"_qs, u"mxl"_qs}) {
            const QString score = path(u"song."_qs + suffix);
            Run run = cli({u"convert"_qs, path(u"song.txt"_qs), score});
            QVERIFY2(run.exitCode == 0, run.err.constData());
            run = cli({u"convert"_qs, score, path(u"back.txt"_qs)});
            QVERIFY2(run.exitCode == 0, run.err.constData());
            QVERIFY(readFile(path(u"back.txt"_qs)).contains("E |--3-----|--2---"));
        }
        const Run run = cli({u"convert"_qs, path(u"song.txt"_qs), path(u"song.mid"_qs)});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        QVERIFY(readFile(path(u"song.mid"_qs)).startsWith("MThd"));

        // MIDI is for writing only.
        const Run back = cli({u"convert"_qs, path(u"song.mid"_qs), path(u"x.lgrd"_qs)});
        QCOMPARE(back.exitCode, 1);
        QVERIFY(!QFile::exists(path(u"x.lgrd"_qs)));
        writeFile(path(u"junk.mxl"_qs), "PK\x03\x04 nothing");
        const Run junk = cli({u"convert"_qs, path(u"junk.mxl"_qs), path(u"x.lgrd"_qs)});
        QCOMPARE(junk.exitCode, 1);
        QVERIFY(junk.err.contains("junk.mxl"));
    }
};

LUTEGRID_TEST_MAIN(TestCliFormats)
#include "tst_cli_formats.moc"
