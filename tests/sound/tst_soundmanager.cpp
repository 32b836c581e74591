#include "model/tabdata.h"
#include "sound/samplecache.h"
#include "sound/sampler.h"
#include "sound/soundmanager.h"

#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

namespace {

QStringList notes(const char16_t *text)
{
    return QString::fromUtf16(text).split(u' ', Qt::SkipEmptyParts);
}

const QStringList standard = notes(u"E A D G B E");

// A column as the tab reads it, top line first: frets, marks, "-" for a blank.
QList<ColumnItemType> itemsOf(const char16_t *text)
{
    QList<ColumnItemType> items;
    for (const QString &token : notes(text))
        items.append(ColumnItemType::fromText(token));
    return items;
}

// Sample and shift of each note, joined by ", ".
QString describe(const QList<NoteToPlay> &notes)
{
    QStringList out;
    for (const NoteToPlay &note : notes) {
        out << QFileInfo(note.fileURL.toLocalFile()).completeBaseName() + u' ' +
                   QString::number(note.semitoneDiff);
    }
    return out.join(u", ");
}

} // namespace

class TestSoundManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyRecordingSitsWhereItsNameSays();
    void openStringOctaves_data();
    void openStringOctaves();
    void notesToPlay_data();
    void notesToPlay();
    void missingSampleFileSilencesOnlyThatString();
    void silentCallOnlyWarmsTheCache();
    void preloadMakesEveryShiftATabNeeds();
};

void TestSoundManager::everyRecordingSitsWhereItsNameSays()
{
    // The table is the scale from A0 to B6. A recording's name says its open string and fret:
    // its table position (A0 = 0) and its columnItems index follow. That each file is there
    // and decodes, tst_sampler checks; that it sounds its note, the sample_pitch test.
    const QList<AudioNote> &mapping = SoundManager::libraryMapping();
    QCOMPARE(mapping.size(), 75);
    static const QRegularExpression pattern(u"^((?:bass)?(?:Elittle|[EADGB]))(?:p(\\d+))?$"_qs);
    const QHash<QString, std::pair<int, int>> openStrings = {
        {u"E"_qs, {19, 5}},     {u"A"_qs, {24, 4}},     {u"D"_qs, {29, 3}},
        {u"G"_qs, {34, 2}},     {u"B"_qs, {38, 1}},     {u"Elittle"_qs, {43, 0}},
        {u"bassE"_qs, {7, 3}},  {u"bassA"_qs, {12, 2}}, {u"bassD"_qs, {17, 1}},
        {u"bassG"_qs, {22, 0}},
    };
    QSet<QString> names;
    for (int position = 0; position < mapping.size(); ++position) {
        const AudioNote &entry = mapping[position];
        for (const auto &[name, stringIndex, bass] :
             {std::tuple(entry.fileName, entry.stringIndex, false),
              std::tuple(entry.bassFileName, entry.bassStringIndex, true)}) {
            if (!name)
                continue;
            names.insert(*name);
            const auto match = pattern.match(*name);
            QVERIFY2(match.hasMatch() && openStrings.contains(match.captured(1)),
                     qPrintable(*name));
            const auto [open, string] = openStrings.value(match.captured(1));
            QVERIFY2(open + match.captured(2).toInt() == position, qPrintable(*name));
            QCOMPARE(string, stringIndex);
            QCOMPARE(name->startsWith(u"bass"), bass);
        }
    }
    QCOMPARE(names.size(), 35);
}

void TestSoundManager::openStringOctaves_data()
{
    QTest::addColumn<QStringList>("stringNotes");
    QTest::addColumn<QList<int>>("octaves");

    const auto row = [](const char *name, const char16_t *tuning, const QList<int> &octaves) {
        QTest::newRow(name) << notes(tuning) << octaves;
    };
    row("no strings", u"", {});
    row("standard", u"E A D G B E", {4, 3, 3, 3, 2, 2});
    row("drop D", u"D A D G B E", {4, 3, 3, 3, 2, 2});
    row("open C", u"C G C G C E", {4, 4, 3, 3, 2, 2});
    row("baritone from B0", u"B E A D F# B", {2, 2, 2, 1, 1, 0});
    row("first string crosses C downward", u"A# D# G# C# F# A#", {3, 3, 3, 2, 2, 1});
    row("first string above the assumed note", u"F A# D# G# C F", {4, 4, 3, 3, 2, 2});
    row("first name no note", u"X A D G B E", {4, 3, 3, 3, 2});
    row("ukulele", u"G C E A", {4, 4, 4, 4});
    row("six E", u"E E E E E E", {4, 4, 3, 3, 2, 2});
    row("bass", u"E A D G", {2, 2, 1, 1});
    row("five-string bass", u"B E A D G", {2, 2, 1, 1, 0});
    row("seven", u"B E A D G B E", {4, 3, 3, 3, 2, 2, 1});
    row("eight", u"F# B E A D G B E", {4, 3, 3, 3, 2, 2, 1, 1});
    row("same note twice is an octave", u"E E A D", {3, 2, 2, 1});
    row("three strings", u"E A D", {3, 3, 3});
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
    QTest::addColumn<QList<ColumnItemType>>("column");
    QTest::addColumn<QString>("expected"); // sample and shift of each note, lowest string first

    const auto row = [](const char *name, const char16_t *tuning, const char16_t *column,
                        const char16_t *expected) {
        QTest::newRow(name) << notes(tuning) << itemsOf(column) << QString::fromUtf16(expected);
    };
    const char16_t *six = u"E A D G B E";
    row("low E fret 5 prefers the lower", six, u"- - - - - 5", u"E 5");
    row("low E fret 6 exact", six, u"- - - - - 6", u"Ep6 0");
    row("low E fret 22, no upper", six, u"- - - - - 22", u"Ep12 10");
    row("B fret 1 over C", six, u"- 1 - - - -", u"B 1");
    row("drop D shifts down", u"D A D G B E", u"- - - - - 0", u"E -2");
    row("baritone needs no own string", u"B E A D G C", u"0 - - - - -", u"Ep6 2");
    row("bass G open", u"E A D G", u"0 - - -", u"bassG 0");
    row("bass E fret 12 from its own string", u"E A D G", u"- - - 12", u"bassEp9 3");
    row("ukulele A", u"G C E A", u"0 - - -", u"Gp12 2");
    row("seven-string low B", u"B E A D G B E", u"- - - - - - 0", u"E -5");
    row("far from upper and lower picks the nearer, upper", u"E A D G B C", u"0 - - - - -",
        u"Elittle -4");
    row("fret 40 is off the table", six, u"40 - - - - -", u"");
    row("last fret on the list", six, u"- - - - - 40", u"Ep12 28");
    row("past the list", six, u"- - - - - 41", u"");
    row("negative fret", six, u"- - -1 - - -", u"");
    row("string tuned to no note", u"E A D H B E", u"- - 0 - - -", u"");
    // C major: E4, C4, G3, E3, C3, nothing on the low E.
    row("chord starts with the lowest string", six, u"0 1 0 2 3 -",
        u"A 3, D 2, G 0, B 1, Elittle 0");
    row("marks make no sound", six, u"- h | x - s", u"");
    row("six items against five strings, even notes", u"E A D G B", u"0 0 0 0 0 0", u"");
}

void TestSoundManager::notesToPlay()
{
    QFETCH(QStringList, stringNotes);
    QFETCH(QList<ColumnItemType>, column);
    QFETCH(QString, expected);
    QCOMPARE(describe(SoundManager().notesToPlay(column, stringNotes)), expected);
}

void TestSoundManager::missingSampleFileSilencesOnlyThatString()
{
    QTemporaryDir directory(QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"samples"_qs));
    QVERIFY(directory.isValid());
    QVERIFY(QFile::copy(SoundManager::defaultSampleDirectory() + u"/E.wav",
                        directory.filePath(u"E.wav"_qs)));
    SoundManager manager(directory.path());
    const auto notes = manager.notesToPlay(itemsOf(u"0 - - - - 2"), standard);
    QCOMPARE(describe(notes), u"E 2"_qs);
    QCOMPARE(notes.first().fileURL, QUrl::fromLocalFile(directory.filePath(u"E.wav"_qs)));
}

void TestSoundManager::silentCallOnlyWarmsTheCache()
{
    SoundManager manager;
    manager.playColumnItems(itemsOf(u"- - - - - 3"), standard, true);
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
    manager.playColumnItems(itemsOf(u"- - - - - 3"), standard, true);
    QCOMPARE(manager.fileCache().find(path, 3), first);
    QCOMPARE(manager.fileCache().size(), 2);
}

void TestSoundManager::preloadMakesEveryShiftATabNeeds()
{
    SoundManager manager;
    TabData tab(u"preload"_qs, 6);
    tab.stringNotes = standard;
    TabRowData row(0, 6);
    for (const char16_t *column : {u"- - - - - 0", u"- - - - - 1", u"- - - - - 2", u"- - - - - 3",
                                   u"- - - - - 5", u"- - - - - 7", u"- - - - - 12", u"1 - - - - -"})
        row.colDatas.append(TabColumnData(itemsOf(column)));
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
