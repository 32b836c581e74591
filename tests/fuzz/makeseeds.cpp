// Writes the fuzz targets' seed corpora with the program's own writers, plus the fixtures that
// other writers made:  fuzz_make_seeds OUTPUT_FOLDER  (one sub-folder per target).
#include "../export/randomtab.h"
#include "export/documentmanager.h"
#include "library/tabtagstore.h"
#include "model/tabfileformat.h"
#include "services/cloudkeyvaluestore.h"
#include "services/saveddata.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTimeZone>

#include <cstdio>

namespace {

QString outputRoot;

void write(const QString &target, const QString &name, const QByteArray &bytes)
{
    QDir().mkpath(outputRoot + u'/' + target);
    QFile file(outputRoot + u'/' + target + u'/' + name);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(file.fileName()));
        std::exit(1);
    }
}

void copyFixture(const QString &target, const QString &fixture)
{
    QFile file(QStringLiteral(LUTEGRID_TEST_DATA) + u'/' + fixture);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "no fixture %s\n", qPrintable(fixture));
        std::exit(1);
    }
    write(target, fixture, file.readAll());
}

// Small tabs that between them hold every item kind, every string count, both lyric forms,
// names in several scripts, play-back choices and an empty tab.
QList<TabData> seedTabs()
{
    QList<TabData> tabs;
    tabs.append(TabData(u"Empty"_qs, 6));
    tabs.last().tabRowDatas.clear();

    TabRowData marks(ColumnItemType::kindCount + 2, 6);
    for (int k = 0; k < ColumnItemType::kindCount; ++k) {
        const auto kind = ColumnItemType::Kind(k);
        marks.colDatas[k].setColumnItem(k % 6, kind == ColumnItemType::Kind::note
                                                    ? ColumnItemType::note(k + 10)
                                                    : ColumnItemType(kind));
    }
    marks.colDatas[1].chordName = u"F#m7b5"_qs;
    marks.colDatas[2].chordName = QString();
    marks.lyricLines = {u"first line"_qs, QString(), u"third"_qs};
    TabData kinds(u"Kinds"_qs, {marks}, standardStringNotes(6), 3, u"Intro\ttext"_qs);
    kinds.playbackOptions = ViewModePlaybackOptions{120, 2, true, 3, true};
    kinds.tempo = 132;
    kinds.lyricSize = 140;
    tabs.append(kinds);

    TabRowData unicode(4, 7);
    unicode.colDatas[0].setColumnItem(0, ColumnItemType::note(0));
    unicode.colDatas[0].chordName = u"Ré♯ 😀"_qs;
    unicode.lyricLines = {u"Ça va? Привет, 世界 \"quoted\" \\ back"_qs};
    TabData scripts(u"Scripts"_qs, {unicode}, {u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs,
                                                u"B"_qs, u"É"_qs},
                    std::nullopt, std::nullopt);
    tabs.append(scripts);

    QRandomGenerator random(19);
    for (int i = 0; i < 6; ++i)
        tabs.append(randomTab(random));
    return tabs;
}

void documentSeeds(const QList<TabData> &tabs)
{
    for (qsizetype i = 0; i < tabs.size(); ++i)
        write(u"document"_qs, u"tab%1.lgrdi"_qs.arg(i), documentData(tabs[i]));
    for (const char *fixture : {"platform_tab.lgrdi", "hostile_shared_rows.lgrdi",
                                "hostile_cycle.plist",
                                "hostile_expansion.plist", "hostile_nul_key.plist",
                                "hostile_past_end.plist", "nested_archive.plist"})
        copyFixture(u"document"_qs, QString::fromLatin1(fixture));
}

void exchangeSeeds(const QList<TabData> &tabs)
{
    for (qsizetype i = 0; i < tabs.size(); ++i)
        write(u"exchange"_qs, u"tab%1.lgrd"_qs.arg(i), exchangeData(tabs[i]).value_or(""));
    // Forms other writers use: no tuning, the one old lyric, numbers written as text.
    write(u"exchange"_qs, u"no_tuning.lgrd"_qs,
          R"({"title":"t","tabRows":[{"columns":[["3","","h"],["x","<","12"]],)"
          R"("columnHeaders":["Am",null],"lyrics":"old line"}]})");
    write(u"exchange"_qs, u"minimal.lgrd"_qs, R"({"tabRows":[]})");
    write(u"exchange"_qs, u"odd_numbers.lgrd"_qs,
          R"({"cFret":"2","tempo":1e3,"stringNotes":["E","A","D","G"],"tabRows":[)"
          R"({"columns":[["1","2","3","4"]],"lyricLines":["a","b"],"lyrics":"a"}]})");
}

void asciiSeeds(const QList<TabData> &tabs)
{
    for (qsizetype i = 0; i < tabs.size(); ++i) {
        TabExportConfiguration configuration{tabs[i]};
        configuration.lyricsBelow = i % 2;
        configuration.notesOnTab = i % 3 == 0;
        write(u"asciitab"_qs, u"tab%1.txt"_qs.arg(i),
              DocumentManager::tabText(configuration).toUtf8());
    }
    write(u"asciitab"_qs, u"forum.txt"_qs,
          "Tuning: D A D G B E   Capo 2\n\n"
          "   Am        C/G\n"
          "e|-----0-----|---0----|\n"
          "B|---1---1---|-1---1--|\n"
          "G|-2-------2-|--------|\n"
          "D|-----------|--------|\n"
          "A|0----------|3-------|\n"
          "E|-----------|--------|\n"
          "when the rain comes\n");
    write(u"asciitab"_qs, u"dashes.txt"_qs,
          "--5h7p5--\n--------\n--7/9\\7--\n-----\n\n----x----\n----~----\n");
}

void settingsSeeds()
{
    SavedData plain(QString(), nullptr);
    write(u"settings"_qs, u"defaults.plist"_qs, plain.fileData());
    SavedData full(QString(), nullptr);
    full.createdFirstTab = true;
    full.tabCreateCount = -3;
    full.notesOnTab = true;
    full.recentChords = QList<RecentChord>{{u"G"_qs, false}, {u"Mine"_qs, true}};
    full.customChordShortcuts = QList<ChordShortcut>{
        {u"Mine"_qs, {ColumnItemType::note(1), ColumnItemType::blank(),
                      ColumnItemType(ColumnItemType::Kind::muted)}, true}};
    full.lastReviewRequestDate = 7.25e8;
    full.defaultStringCount = 7;
    full.appearanceSetting = 2;
    full.cloudFolder = u"/home/someone/Sync"_qs;
    write(u"settings"_qs, u"full.plist"_qs, full.fileData());
    copyFixture(u"settings"_qs, u"platform_settings.plist"_qs);
}

void labelSeeds()
{
    write(u"labels"_qs, u"empty.plist"_qs, TabTagStore::localFileData({}));
    write(u"labels"_qs, u"labels.plist"_qs,
          TabTagStore::localFileData({{u"Song"_qs, {u"Folk"_qs, u"Learn"_qs}},
                                      {u"Другая"_qs, {u"Folk"_qs}},
                                      {u"Bare"_qs, {}}}));
}

void keyValueSeeds()
{
    const QVariantMap tags{{u"Song"_qs, QVariantList{u"Folk"_qs, u"Learn"_qs}},
                           {u"Other"_qs, QVariantList{}}};
    const QVariantMap values{
        {u"tabtags"_qs, tags},
        {u"custchords"_qs,
         QVariantList{ChordShortcut{u"Mine"_qs, {ColumnItemType::note(2)}, true}.archivedData()}},
        {u"number"_qs, qint64(-42)},
        {u"big"_qs, qint64(1) << 40},
        {u"real"_qs, 0.5},
        {u"flag"_qs, true},
        {u"when"_qs, QDateTime(QDate(2024, 2, 29), QTime(12, 0), QTimeZone::utc())},
        {u"nested"_qs, QVariantList{QVariantList{QVariantMap{{u"k"_qs, u"v"_qs}}}}},
    };
    write(u"keyvalue"_qs, u"values.plist"_qs, *CloudKeyValueStore::fileDataForValues(values));
    write(u"keyvalue"_qs, u"empty.plist"_qs, *CloudKeyValueStore::fileDataForValues({}));
    write(u"keyvalue"_qs, u"tags.plist"_qs,
          *CloudKeyValueStore::fileDataForValues({{u"tabtags"_qs, tags}}));
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_make_seeds OUTPUT_FOLDER\n");
        return 2;
    }
    outputRoot = QString::fromLocal8Bit(argv[1]);
    const QList<TabData> tabs = seedTabs();
    documentSeeds(tabs);
    exchangeSeeds(tabs);
    asciiSeeds(tabs);
    settingsSeeds();
    labelSeeds();
    keyValueSeeds();
    return 0;
}
