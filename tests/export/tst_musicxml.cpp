#include "export/documentmanager.h"
#include "export/musicxml.h"
#include "export/mxlarchive.h"

#include "randomtab.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace {

// Each row's columns that sound, as "string:fret" lists: what MusicXML has to carry.
QList<QStringList> soundingColumns(const TabData &tab)
{
    QList<QStringList> rows;
    for (const TabRowData &row : tab.tabRowDatas) {
        QStringList columns;
        for (const TabColumnData &column : row.colDatas) {
            QStringList notes;
            for (qsizetype i = 0; i < column.columnItems.size(); ++i) {
                if (column.columnItems[i].isNote())
                    notes.append(QString::number(i + 1) + u':' + column.columnItems[i].text());
            }
            if (!notes.isEmpty())
                columns.append(notes.join(u' ') + u' ' + column.chordName.value_or(QString()));
        }
        rows.append(columns);
    }
    return rows;
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QString schemaPath()
{
    return QStringLiteral(LUTEGRID_TEST_DATA "/musicxml-4.0/musicxml.xsd");
}

// xmllint's verdict on the files: empty when all are valid.
QString validate(const QStringList &files)
{
    QProcess lint;
    lint.start(u"xmllint"_qs, QStringList{u"--noout"_qs, u"--nonet"_qs, u"--schema"_qs,
                                          schemaPath()} + files);
    if (!lint.waitForFinished(120000))
        return u"xmllint did not finish"_qs;
    if (lint.exitStatus() == QProcess::NormalExit && lint.exitCode() == 0)
        return {};
    return QString::fromUtf8(lint.readAllStandardError()).left(4000);
}

TabData playedByMeasure(TabData tab)
{
    ViewModePlaybackOptions options;
    options.playbackByMeasure = true;
    options.playbackBeatsPerMeasure = 3;
    options.playbackSpeed = 96;
    tab.playbackOptions = options;
    return tab;
}

const char *foreignScore = R"(<?xml version="1.0" encoding="UTF-8"?>
<score-partwise version="3.1">
  <movement-title>Borrowed Tune</movement-title>
  <part-list>
    <score-part id="P1"><part-name>Voice</part-name></score-part>
    <score-part id="P2"><part-name>Guitar</part-name></score-part>
  </part-list>
  <part id="P1">
    <measure number="1">
      <note><pitch><step>C</step><octave>4</octave></pitch><duration>4</duration></note>
    </measure>
  </part>
  <part id="P2">
    <measure number="1">
      <attributes>
        <divisions>2</divisions>
        <staff-details>
          <staff-lines>6</staff-lines>
          <staff-tuning line="1"><tuning-step>D</tuning-step><tuning-octave>2</tuning-octave></staff-tuning>
          <staff-tuning line="2"><tuning-step>A</tuning-step><tuning-octave>2</tuning-octave></staff-tuning>
          <staff-tuning line="3"><tuning-step>D</tuning-step><tuning-octave>3</tuning-octave></staff-tuning>
          <staff-tuning line="4"><tuning-step>G</tuning-step><tuning-octave>3</tuning-octave></staff-tuning>
          <staff-tuning line="5"><tuning-step>B</tuning-step><tuning-alter>-1</tuning-alter><tuning-octave>3</tuning-octave></staff-tuning>
          <staff-tuning line="6"><tuning-step>E</tuning-step><tuning-octave>4</tuning-octave></staff-tuning>
        </staff-details>
      </attributes>
      <direction><direction-type><words>Slowly</words></direction-type><sound tempo="72"/></direction>
      <harmony><root><root-step>A</root-step></root><kind>minor</kind></harmony>
      <note><pitch><step>A</step><octave>2</octave></pitch><duration>2</duration>
        <notations><technical><string>5</string><fret>0</fret></technical></notations>
        <lyric number="1"><syllabic>begin</syllabic><text>hel</text></lyric></note>
      <note><chord/><pitch><step>E</step><octave>4</octave></pitch><duration>2</duration>
        <notations><technical><fret>0</fret><string>1</string></technical></notations></note>
      <note><rest/><duration>2</duration></note>
      <backup><duration>4</duration></backup>
      <note><pitch><step>D</step><octave>2</octave></pitch><duration>4</duration><voice>2</voice>
        <notations><technical><string>6</string><fret>0</fret></technical></notations></note>
    </measure>
    <measure number="2">
      <harmony><root><root-step>F</root-step><root-alter>1</root-alter></root><kind>dominant</kind>
        <bass><bass-step>A</bass-step><bass-alter>1</bass-alter></bass></harmony>
      <note><grace/><pitch><step>G</step><octave>3</octave></pitch>
        <notations><technical><string>3</string><fret>5</fret></technical></notations></note>
      <note><pitch><step>G</step><octave>3</octave></pitch><duration>4</duration>
        <notations><technical><string>3</string><fret>12</fret></technical></notations>
        <lyric number="1"><syllabic>end</syllabic><text>lo</text></lyric></note>
    </measure>
  </part>
</score-partwise>
)";

} // namespace

class TestMusicXml : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void exportThenImportKeepsFretsAndStrings()
    {
        QRandomGenerator random(1804);
        for (int round = 0; round < 120; ++round) {
            TabData tab = randomTab(random, {false, false});
            if (round % 3 == 1)
                tab = playedByMeasure(tab);
            tab.tempo = 60 + random.bounded(100);
            const bool compressed = round % 2;
            const auto bytes = MusicXml::write(tab, compressed);
            QVERIFY(bytes);
            QCOMPARE(MxlArchive::looksLikeArchive(*bytes), compressed);
            const MusicXml::ReadResult back = MusicXml::read(*bytes);
            QVERIFY2(back.tab, qPrintable(back.message));
            QCOMPARE(back.tab->title, tab.title);
            QCOMPARE(back.tab->stringNotes, tab.stringNotes);
            QCOMPARE(back.tab->capoFret, tab.capoFret);
            QCOMPARE(back.tab->tempo, tab.playbackOptions ? 96 : tab.tempo);
            QCOMPARE(soundingColumns(*back.tab), soundingColumns(tab));
            QCOMPARE(back.tab->tabRowDatas.size(), tab.tabRowDatas.size());
            for (qsizetype r = 0; r < tab.tabRowDatas.size(); ++r)
                QCOMPARE(back.tab->tabRowDatas[r].lyricLines, tab.tabRowDatas[r].lyricLines);
        }
    }

    void exportsValidateAgainstTheSchema()
    {
        if (QStandardPaths::findExecutable(u"xmllint"_qs).isEmpty())
            QFAIL("xmllint is missing (Debian package libxml2-utils)");
        QVERIFY2(QFile::exists(schemaPath()), qPrintable(schemaPath()));
        QTemporaryDir folder;
        QStringList files;
        QRandomGenerator random(4);
        for (int i = 0; i < 12; ++i) {
            TabData tab = randomTab(random);
            if (i % 2)
                tab = playedByMeasure(tab);
            // Text that XML must escape, and names with no root.
            tab.title = u"Rock & <Roll> \"live\""_qs;
            tab.tabRowDatas[0].colDatas[0].chordName = u"N.C."_qs;
            tab.tabRowDatas[0].colDatas[1].chordName = u"x<&>"_qs;
            tab.tabRowDatas[0].lyricLines = {u"love & <hate>"_qs, QString()};
            const QString path = folder.filePath(u"tab%1.musicxml"_qs.arg(i));
            QVERIFY(writeFile(path, MusicXml::scoreXml(tab)));
            files.append(path);
        }
        // An empty tab and a tab of bars are scores too.
        TabData empty(u"Empty"_qs, 6);
        QVERIFY(writeFile(folder.filePath(u"empty.musicxml"_qs), MusicXml::scoreXml(empty)));
        files.append(folder.filePath(u"empty.musicxml"_qs));
        empty.tabRowDatas.append(TabRowData(
            {TabColumnData(QList<ColumnItemType>(6, ColumnItemType::bar()))}, {}));
        QVERIFY(writeFile(folder.filePath(u"bars.musicxml"_qs), MusicXml::scoreXml(empty)));
        files.append(folder.filePath(u"bars.musicxml"_qs));
        QCOMPARE(validate(files), QString());
    }

    void compressedScoreIsAZipOthersRead()
    {
        QRandomGenerator random(9);
        const TabData tab = randomTab(random);
        const auto bytes = MusicXml::write(tab, true);
        QVERIFY(bytes);
        QTemporaryDir folder;
        const QString archive = folder.filePath(u"tab.mxl"_qs);
        QVERIFY(writeFile(archive, *bytes));
        QProcess unzip;
        unzip.setWorkingDirectory(folder.path());
        unzip.start(u"unzip"_qs, {u"-q"_qs, archive, u"-d"_qs, u"out"_qs});
        QVERIFY(unzip.waitForFinished(60000));
        QCOMPARE(unzip.exitCode(), 0);
        QFile mime(folder.filePath(u"out/mimetype"_qs));
        QVERIFY(mime.open(QIODevice::ReadOnly));
        QCOMPARE(mime.readAll(), QByteArray("application/vnd.recordare.musicxml"));
        QVERIFY(QFile::exists(folder.filePath(u"out/META-INF/container.xml"_qs)));
        QCOMPARE(validate({folder.filePath(u"out/score.musicxml"_qs)}), QString());
        // The stored first entry lets a reader tell the type from the file's first bytes.
        QCOMPARE(bytes->mid(30, 8), QByteArray("mimetype"));
    }

    void readsAScoreFromANotationProgram()
    {
        const MusicXml::ReadResult result = MusicXml::read(QByteArray(foreignScore));
        QVERIFY2(result.tab, qPrintable(result.message));
        const TabData &tab = *result.tab;
        QCOMPARE(tab.title, u"Borrowed Tune"_qs);
        QCOMPARE(tab.stringNotes,
                 (QStringList{u"D"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"A#"_qs, u"E"_qs}));
        QCOMPARE(tab.tempo, 72);
        QCOMPARE(tab.tabRowDatas.size(), 1);
        const TabRowData &row = tab.tabRowDatas.first();
        QCOMPARE(row.lyricLines, QStringList{u"hello"_qs});
        // The second voice and the grace note stay out; the rest is a blank column.
        QCOMPARE(soundingColumns(tab).first(),
                 (QStringList{u"1:0 5:0 Am"_qs, u"3:12 F#7/A#"_qs}));
        QVERIFY(row.colDatas[1].isAllBlank());
        QVERIFY(row.colDatas[2].hasBar());
        QVERIFY(row.colDatas[4].hasBar());
    }

    // The export folder takes them as it takes the other forms.
    void exportFilesByType()
    {
        QRandomGenerator random(77);
        const TabExportConfiguration configuration{randomTab(random)};
        for (const ExportType type : {ExportType::MUSICXML, ExportType::MXL, ExportType::MIDI}) {
            const auto path = DocumentManager::exportFile(type, configuration, u"Song"_qs);
            QVERIFY(path);
            QVERIFY(path->endsWith(u"Song."_qs + DocumentManager::fileExtension(type)));
            QFile file(*path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            if (type == ExportType::MIDI)
                QVERIFY(bytes.startsWith("MThd"));
            else
                QVERIFY(MusicXml::read(bytes).tab);
        }
    }

    void badInputGivesAMessage_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("e|--0--|");
        QTest::newRow("other xml") << QByteArray("<?xml version=\"1.0\"?><html><p/></html>");
        QTest::newRow("timewise") << QByteArray("<score-timewise version=\"4.0\"/>");
        QTest::newRow("cut short") << QByteArray(foreignScore).left(2500);
        QTest::newRow("no frets")
            << QByteArray("<score-partwise><part id=\"P1\"><measure number=\"1\"><note><pitch>"
                          "<step>C</step><octave>4</octave></pitch><duration>1</duration>"
                          "</note></measure></part></score-partwise>");
        QTest::newRow("too many strings")
            << QByteArray("<score-partwise><part id=\"P1\"><measure><note><notations><technical>"
                          "<string>12</string><fret>1</fret></technical></notations></note>"
                          "</measure></part></score-partwise>");
        QTest::newRow("damaged archive") << QByteArray("PK\x03\x04 this is no zip at all");
        QByteArray archive = *MxlArchive::pack(QByteArray(foreignScore));
        archive.truncate(archive.size() / 2);
        QTest::newRow("archive cut short") << archive;
    }

    void badInputGivesAMessage()
    {
        QFETCH(QByteArray, bytes);
        const MusicXml::ReadResult result = MusicXml::read(bytes);
        QVERIFY(!result.tab);
        QVERIFY(!result.message.isEmpty());
    }
};

LUTEGRID_TEST_MAIN(TestMusicXml)
#include "tst_musicxml.moc"
