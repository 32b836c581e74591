#include "export/midiwriter.h"

#include "testmain.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace {

// Debian's mido reads the file back: one "seconds pitch" line for every note that starts.
const char *readBack = R"(
import sys, mido
now = 0.0
for message in mido.MidiFile(sys.argv[1]):
    now += message.time
    if message.type == 'note_on' and message.velocity > 0:
        print('%.4f %d' % (now, message.note))
)";

QStringList notesOf(const QByteArray &midi)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(u"tab.mid"_qs);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(midi) != midi.size())
        return {u"cannot write"_qs};
    file.close();
    QProcess python;
    // The Debian interpreter, where python3-mido is installed.
    python.start(u"/usr/bin/python3"_qs, {u"-c"_qs, QString::fromUtf8(readBack), path});
    if (!python.waitForFinished(60000) || python.exitCode() != 0)
        return {QString::fromUtf8(python.readAllStandardError())};
    return QString::fromUtf8(python.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

TabColumnData column(QList<std::pair<int, qint64>> frets)
{
    TabColumnData data(6);
    for (const auto &[line, fret] : frets)
        data.columnItems[line] = ColumnItemType::note(fret);
    return data;
}

TabColumnData bar()
{
    return TabColumnData(QList<ColumnItemType>(6, ColumnItemType::bar()));
}

} // namespace

class TestMidi : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Two columns a beat at 120 beats a minute: a column every quarter second. Open strings
    // of standard tuning are E4 B3 G3 D3 A2 E2 (64 59 55 50 45 40), the capo adds 2.
    void pitchesAndOnsetsFollowTuningCapoAndTempo()
    {
        TabData tab(u"Tune"_qs,
                    {TabRowData({column({{0, 0}, {5, 3}}), TabColumnData(6), column({{2, 5}}),
                                 bar(), column({{4, 12}})},
                                {})},
                    standardStringNotes(6), 2, std::nullopt);
        ViewModePlaybackOptions playback;
        playback.playbackSpeed = 120;
        playback.playbackColumnsInBeat = 2;
        tab.playbackOptions = playback;
        const auto midi = MidiWriter::write(tab);
        QVERIFY(midi);
        QCOMPARE(notesOf(*midi), (QStringList{u"0.0000 66"_qs, u"0.0000 45"_qs,
                                              u"0.5000 62"_qs, u"0.7500 59"_qs}));
    }

    // By measure, every measure lasts the beats of a measure: two columns in the first, four
    // in the second, four beats at 60 a minute.
    void evenedMeasuresSpreadTheColumns()
    {
        TabData tab(u"Tune"_qs,
                    {TabRowData({column({{0, 1}}), column({{0, 2}}), bar(), column({{0, 3}}),
                                 column({{0, 4}}), column({{0, 5}}), column({{0, 6}}), bar()},
                                {})},
                    {u"D"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs}, 0, std::nullopt);
        ViewModePlaybackOptions playback;
        playback.playbackSpeed = 60;
        playback.playbackByMeasure = true;
        playback.playbackBeatsPerMeasure = 4;
        tab.playbackOptions = playback;
        const auto midi = MidiWriter::write(tab);
        QVERIFY(midi);
        QCOMPARE(notesOf(*midi),
                 (QStringList{u"1.0000 65"_qs, u"3.0000 66"_qs, u"4.0000 67"_qs,
                              u"5.0000 68"_qs, u"6.0000 69"_qs, u"7.0000 70"_qs}));
    }

    // A bass tab sounds from E1 (28) up; the tab's own tempo
    // stands when it keeps no playback options.
    void bassAtTheTabsTempo()
    {
        TabData tab(u"Bass"_qs, {TabRowData({TabColumnData({ColumnItemType::blank(),
                                                            ColumnItemType::blank(),
                                                            ColumnItemType::note(2),
                                                            ColumnItemType::note(0)}),
                                             TabColumnData({ColumnItemType::note(5),
                                                            ColumnItemType::blank(),
                                                            ColumnItemType::blank(),
                                                            ColumnItemType::blank()})},
                                            {})},
                    standardStringNotes(4), 0, std::nullopt);
        tab.tempo = 150;
        const auto midi = MidiWriter::write(tab);
        QVERIFY(midi);
        QCOMPARE(notesOf(*midi),
                 (QStringList{u"0.0000 35"_qs, u"0.0000 28"_qs, u"0.4000 48"_qs}));
    }

    // A column a second; silent columns between the notes make the gaps from one event to the
    // next need two (a second), three (forty seconds) and four bytes (4,400 seconds) of delta.
    void longGapsKeepTheirOnsets()
    {
        QList<TabColumnData> columns(4443, TabColumnData(6));
        columns[0] = column({{0, 0}});
        columns[41] = column({{0, 1}});
        columns[4442] = column({{0, 2}});
        TabData tab(u"Gaps"_qs, {TabRowData(columns, {})}, standardStringNotes(6), 0,
                    std::nullopt);
        ViewModePlaybackOptions playback;
        playback.playbackSpeed = 60;
        playback.playbackColumnsInBeat = 1;
        tab.playbackOptions = playback;
        const auto midi = MidiWriter::write(tab);
        QVERIFY(midi);
        QCOMPARE(notesOf(*midi),
                 (QStringList{u"0.0000 64"_qs, u"41.0000 65"_qs, u"4442.0000 66"_qs}));
    }
};

LUTEGRID_TEST_MAIN(TestMidi)
#include "tst_midi.moc"
