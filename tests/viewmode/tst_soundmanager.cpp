#include "model/tabdata.h"
#include "viewmode/samplecache.h"
#include "viewmode/sampler.h"
#include "viewmode/soundmanager.h"

#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QStringList standard = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};

// A column with one note at index (top line 0) and blanks elsewhere.
QList<ColumnItemType> singleNote(int stringCount, int index, qint64 fret)
{
    QList<ColumnItemType> items(stringCount, ColumnItemType::blank());
    items[index] = ColumnItemType::note(fret);
    return items;
}

QString sampleName(const NoteToPlay &note)
{
    return QFileInfo(note.fileURL.toLocalFile()).completeBaseName();
}

QStringList describe(const QList<NoteToPlay> &notes)
{
    QStringList out;
    for (const NoteToPlay &note : notes)
        out << sampleName(note) + u' ' + QString::number(note.semitoneDiff);
    return out;
}

// Where a sample must sit on the table, read from its name: open string plus "p" and fret.
struct NamedPitch {
    int position;
    int stringIndex;
    bool bass;
};

NamedPitch pitchFromName(const QString &name)
{
    static const QRegularExpression pattern(u"^(bass)?(Elittle|[EADGB])(?:p(\\d+))?$"_qs);
    const auto match = pattern.match(name);
    if (!match.hasMatch())
        return {-1, -1, false};
    const bool bass = !match.captured(1).isEmpty();
    const QString string = match.captured(2);
    const int fret = match.captured(3).toInt();
    // Open strings as table positions (A0 = 0), and their columnItems index.
    static const QHash<QString, std::pair<int, int>> guitar = {
        {u"E"_qs, {19, 5}}, {u"A"_qs, {24, 4}}, {u"D"_qs, {29, 3}},
        {u"G"_qs, {34, 2}}, {u"B"_qs, {38, 1}}, {u"Elittle"_qs, {43, 0}},
    };
    static const QHash<QString, std::pair<int, int>> bassStrings = {
        {u"E"_qs, {7, 3}},
        {u"A"_qs, {12, 2}},
        {u"D"_qs, {17, 1}},
        {u"G"_qs, {22, 0}},
    };
    const auto &table = bass ? bassStrings : guitar;
    if (!table.contains(string))
        return {-1, -1, bass};
    return {table[string].first + fret, table[string].second, bass};
}

} // namespace

class TestSoundManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void libraryMappingIsTheScaleFromA0ToB6();
    void everyRecordingSitsWhereItsNameSays();
    void openStringOctaves_data();
    void openStringOctaves();
    void notesToPlay_data();
    void notesToPlay();
    void chordStartsWithTheLowestString();
    void columnsThatMakeNoSound();
    void missingSampleFileSilencesOnlyThatString();
    void silentCallOnlyWarmsTheCache();
    void preloadMakesEveryShiftATabNeeds();
};

void TestSoundManager::libraryMappingIsTheScaleFromA0ToB6()
{
    const QList<AudioNote> &mapping = SoundManager::libraryMapping();
    QCOMPARE(mapping.size(), 75);
    const QList<std::tuple<int, MusicNote, int>> landmarks = {
        {0, MusicNote::A, 0},  {3, MusicNote::C, 1},  {15, MusicNote::C, 2},
        {27, MusicNote::C, 3}, {39, MusicNote::C, 4}, {51, MusicNote::C, 5},
        {63, MusicNote::C, 6}, {74, MusicNote::B, 6}, {2, MusicNote::B, 0},
    };
    for (const auto &[position, note, octave] : landmarks) {
        QCOMPARE(mapping[position].musicNote, note);
        QCOMPARE(mapping[position].octave, octave);
    }
    // Consecutive entries are consecutive semitones.
    for (int position = 1; position < mapping.size(); ++position) {
        const AudioNote &previous = mapping[position - 1];
        const AudioNote &entry = mapping[position];
        QCOMPARE(MusicNotes::position(entry.musicNote),
                 (MusicNotes::position(previous.musicNote) + 1) % 12);
        QCOMPARE(entry.octave, previous.octave + (entry.musicNote == MusicNote::C ? 1 : 0));
    }
}

void TestSoundManager::everyRecordingSitsWhereItsNameSays()
{
    const QList<AudioNote> &mapping = SoundManager::libraryMapping();
    const QString directory = SoundManager::defaultSampleDirectory();
    QSet<QString> names;
    for (int position = 0; position < mapping.size(); ++position) {
        const AudioNote &entry = mapping[position];
        QCOMPARE(entry.fileName.has_value(), entry.stringIndex >= 0);
        QCOMPARE(entry.bassFileName.has_value(), entry.bassStringIndex >= 0);
        for (const auto &[name, stringIndex, bass] :
             {std::tuple(entry.fileName, entry.stringIndex, false),
              std::tuple(entry.bassFileName, entry.bassStringIndex, true)}) {
            if (!name)
                continue;
            names.insert(*name);
            const NamedPitch named = pitchFromName(*name);
            QVERIFY2(named.position == position, qPrintable(*name));
            QCOMPARE(named.stringIndex, stringIndex);
            QCOMPARE(named.bass, bass);
            QVERIFY2(QFileInfo::exists(directory + u'/' + *name + u".wav"), qPrintable(*name));
        }
    }
    QCOMPARE(names.size(), 35);
}

void TestSoundManager::openStringOctaves_data()
{
    QTest::addColumn<QStringList>("stringNotes");
    QTest::addColumn<QList<int>>("octaves");

    auto notes = [](const char *text) {
        return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
    };
    QTest::newRow("no strings") << QStringList() << QList<int>();
    QTest::newRow("standard") << standard << QList<int>{4, 3, 3, 3, 2, 2};
    QTest::newRow("drop D") << notes("D A D G B E") << QList<int>{4, 3, 3, 3, 2, 2};
    QTest::newRow("open C") << notes("C G C G C E") << QList<int>{4, 4, 3, 3, 2, 2};
    QTest::newRow("baritone from B0") << notes("B E A D F# B") << QList<int>{2, 2, 2, 1, 1, 0};
    QTest::newRow("first string crosses C downward")
        << notes("A# D# G# C# F# A#") << QList<int>{3, 3, 3, 2, 2, 1};
    QTest::newRow("first string above the assumed note")
        << notes("F A# D# G# C F") << QList<int>{4, 4, 3, 3, 2, 2};
    QTest::newRow("first name no note") << notes("X A D G B E") << QList<int>{4, 3, 3, 3, 2};
    QTest::newRow("middle name no note") << notes("E X D G B E") << QList<int>{3, 2, 2, 2};
    QTest::newRow("ukulele") << notes("G C E A") << QList<int>{4, 4, 4, 4};
    QTest::newRow("tenor") << notes("A D F# B") << QList<int>{4, 4, 4, 4};
    QTest::newRow("six E") << notes("E E E E E E") << QList<int>{4, 4, 3, 3, 2, 2};
    QTest::newRow("six D") << notes("D D D D D D") << QList<int>{4, 4, 3, 3, 3, 2};
    QTest::newRow("bass") << notes("E A D G") << QList<int>{2, 2, 1, 1};
    QTest::newRow("five-string bass") << notes("B E A D G") << QList<int>{2, 2, 1, 1, 0};
    QTest::newRow("seven") << notes("B E A D G B E") << QList<int>{4, 3, 3, 3, 2, 2, 1};
    QTest::newRow("eight") << notes("F# B E A D G B E") << QList<int>{4, 3, 3, 3, 2, 2, 1, 1};
    QTest::newRow("same note twice is an octave") << notes("E E A D") << QList<int>{3, 2, 2, 1};
    QTest::newRow("three strings") << notes("E A D") << QList<int>{3, 3, 3};
    QTest::newRow("nine strings") << QStringList(9, u"E"_qs) << QList<int>(9, 3);
}

void TestSoundManager::openStringOctaves()
{
    QFETCH(QStringList, stringNotes);
    QFETCH(QList<int>, octaves);
    QCOMPARE(SoundManager::openStringOctaves(stringNotes), octaves);
}

void TestSoundManager::notesToPlay_data()
{
    QTest::addColumn<QStringList>("stringNotes");
    QTest::addColumn<int>("index");
    QTest::addColumn<qint64>("fret");
    QTest::addColumn<QString>("expected"); // sample and shift, or empty for silence

    auto notes = [](const char *text) {
        return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
    };
    QTest::newRow("high E open") << standard << 0 << qint64(0) << u"Elittle 0"_qs;
    QTest::newRow("high E fret 3 only from its own string")
        << standard << 0 << qint64(3) << u"Elittle 3"_qs;
    QTest::newRow("low E fret 3") << standard << 5 << qint64(3) << u"E 3"_qs;
    QTest::newRow("low E fret 5 prefers the lower") << standard << 5 << qint64(5) << u"E 5"_qs;
    QTest::newRow("low E fret 6 exact") << standard << 5 << qint64(6) << u"Ep6 0"_qs;
    QTest::newRow("high E fret 11") << standard << 0 << qint64(11) << u"Elittlep6 5"_qs;
    QTest::newRow("low E fret 22, no upper") << standard << 5 << qint64(22) << u"Ep12 10"_qs;
    QTest::newRow("A fret 10") << standard << 4 << qint64(10) << u"Ap6 4"_qs;
    QTest::newRow("B fret 1 over C") << standard << 1 << qint64(1) << u"B 1"_qs;
    QTest::newRow("drop D shifts down") << notes("D A D G B E") << 5 << qint64(0) << u"E -2"_qs;
    QTest::newRow("baritone needs no own string")
        << notes("B E A D G C") << 0 << qint64(0) << u"Ep6 2"_qs;
    QTest::newRow("bass G open") << notes("E A D G") << 0 << qint64(0) << u"bassG 0"_qs;
    QTest::newRow("bass A fret 15") << notes("E A D G") << 2 << qint64(15) << u"bassAp15 0"_qs;
    QTest::newRow("bass E fret 12 from its own string")
        << notes("E A D G") << 3 << qint64(12) << u"bassEp9 3"_qs;
    QTest::newRow("drop D bass below every recording")
        << notes("D A D G") << 3 << qint64(0) << u"bassE -2"_qs;
    QTest::newRow("ukulele A") << notes("G C E A") << 0 << qint64(0) << u"Gp12 2"_qs;
    QTest::newRow("seven-string low B") << notes("B E A D G B E") << 6 << qint64(0) << u"E -5"_qs;
    QTest::newRow("far from upper and lower picks the nearer, upper")
        << notes("E A D G B C") << 0 << qint64(0) << u"Elittle -4"_qs;
    QTest::newRow("fret 40 is off the table") << standard << 0 << qint64(40) << QString();
    QTest::newRow("last fret on the list") << standard << 5 << qint64(40) << u"Ep12 28"_qs;
    QTest::newRow("past the list") << standard << 5 << qint64(41) << QString();
    QTest::newRow("negative fret") << standard << 2 << qint64(-1) << QString();
    QTest::newRow("huge fret") << standard << 2 << qint64(1000000000000) << QString();
    QTest::newRow("string tuned to no note") << notes("E A D H B E") << 2 << qint64(0) << QString();
}

void TestSoundManager::notesToPlay()
{
    QFETCH(QStringList, stringNotes);
    QFETCH(int, index);
    QFETCH(qint64, fret);
    QFETCH(QString, expected);

    SoundManager manager;
    const auto notes =
        manager.notesToPlay(singleNote(int(stringNotes.size()), index, fret), stringNotes);
    QCOMPARE(describe(notes), expected.isEmpty() ? QStringList() : QStringList{expected});
}

void TestSoundManager::chordStartsWithTheLowestString()
{
    SoundManager manager;
    // C major, top line first: E4, C4, G3, E3, C3, nothing on the low E.
    const QList<ColumnItemType> chord = {
        ColumnItemType::note(0), ColumnItemType::note(1), ColumnItemType::note(0),
        ColumnItemType::note(2), ColumnItemType::note(3), ColumnItemType::blank(),
    };
    QCOMPARE(describe(manager.notesToPlay(chord, standard)),
             (QStringList{u"A 3"_qs, u"D 2"_qs, u"G 0"_qs, u"B 1"_qs, u"Elittle 0"_qs}));
}

void TestSoundManager::columnsThatMakeNoSound()
{
    SoundManager manager;
    const QList<ColumnItemType> marks = {
        ColumnItemType::blank(), ColumnItemType(ColumnItemType::Kind::hammer),
        ColumnItemType::bar(),   ColumnItemType(ColumnItemType::Kind::muted),
        ColumnItemType::blank(), ColumnItemType(ColumnItemType::Kind::slap),
    };
    QVERIFY(manager.notesToPlay(marks, standard).isEmpty());
    // Six items against a five-string tuning: nothing at all, even for the notes.
    QVERIFY(
        manager.notesToPlay(QList<ColumnItemType>(6, ColumnItemType::note(0)), standard.mid(0, 5))
            .isEmpty());
    QVERIFY(manager.notesToPlay({}, {}).isEmpty());
}

void TestSoundManager::missingSampleFileSilencesOnlyThatString()
{
    QTemporaryDir directory(QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"samples"_qs));
    QVERIFY(directory.isValid());
    QVERIFY(QFile::copy(SoundManager::defaultSampleDirectory() + u"/E.wav",
                        directory.filePath(u"E.wav"_qs)));
    SoundManager manager(directory.path());
    QList<ColumnItemType> both(6, ColumnItemType::blank());
    both[0] = ColumnItemType::note(0);
    both[5] = ColumnItemType::note(2);
    QCOMPARE(describe(manager.notesToPlay(both, standard)), QStringList{u"E 2"_qs});
    QCOMPARE(manager.notesToPlay(both, standard).first().fileURL,
             QUrl::fromLocalFile(directory.filePath(u"E.wav"_qs)));
}

void TestSoundManager::silentCallOnlyWarmsTheCache()
{
    SoundManager manager;
    manager.playColumnItems(singleNote(6, 5, 3), standard, true);
    const QString path = manager.sampleDirectory() + u"/E.wav";
    QVERIFY(manager.fileCache().find(path, 3));
    QVERIFY(manager.fileCache().find(path, 0));
    QCOMPARE(manager.fileCache().size(), 2);
    // Nothing reached the mixer.
    const std::vector<float> mix = manager.sampler().renderOffline(4096);
    QVERIFY(std::all_of(mix.begin(), mix.end(), [](float x) { return x == 0.0f; }));
    QCOMPARE(manager.sampler().activeVoiceCount(), 0);
    // Warm: the same buffer comes back, nothing is made again.
    const auto first = manager.fileCache().find(path, 3);
    manager.playColumnItems(singleNote(6, 5, 3), standard, true);
    QCOMPARE(manager.fileCache().find(path, 3), first);
    QCOMPARE(manager.fileCache().size(), 2);
}

void TestSoundManager::preloadMakesEveryShiftATabNeeds()
{
    SoundManager manager;
    TabData tab(u"preload"_qs);
    tab.stringNotes = standard;
    TabRowData row(0, 6);
    for (qint64 fret : {0, 1, 2, 3, 5, 7, 12})
        row.colDatas.append(TabColumnData(singleNote(6, 5, fret)));
    row.colDatas.append(TabColumnData(singleNote(6, 0, 1)));
    tab.tabRowDatas = {row, row};
    manager.preloadTab(tab);

    QSet<QPair<QString, int>> needed;
    for (const TabColumnData &column : row.colDatas) {
        for (const NoteToPlay &note : manager.notesToPlay(column.columnItems, standard))
            needed.insert({note.fileURL.toLocalFile(), note.semitoneDiff});
    }
    for (const auto &[path, shift] : needed)
        QVERIFY2(manager.fileCache().find(path, shift), qPrintable(path));
    // The needed shifts, plus the unshifted decode of each file they start from.
    QCOMPARE(manager.fileCache().size(), 10);
}

LUTEGRID_TEST_MAIN(TestSoundManager)
#include "tst_soundmanager.moc"
