// Prints the cost of reading a 2,000-line plain-text tab and of writing the 1,000-row benchmark
// tab as MusicXML and MIDI.
#include "benchtab.h"
#include "benchutil.h"

#include "export/asciitabreader.h"
#include "export/documentmanager.h"
#include "export/midiwriter.h"
#include "export/musicxml.h"

namespace {

// The first `count` lines of `text`.
QString firstLines(const QString &text, int count)
{
    return text.split(u'\n').mid(0, count).join(u'\n');
}

// A forum-style tab: chord line, six labelled lines of irregular width, a lyric line.
QString forumText(int lineCount)
{
    static const QStringList labels{u"e"_qs, u"B"_qs, u"G"_qs, u"D"_qs, u"A"_qs, u"E"_qs};
    QStringList lines;
    for (int block = 0; lines.size() < lineCount; ++block) {
        lines.append(u"  Am        C         G/B       F"_qs);
        for (int s = 0; s < 6; ++s) {
            QString line = labels[s] + u'|';
            for (int bar = 0; bar < 4; ++bar)
                line += (s + block + bar) % 3 ? u"--5h7p5--12--|"_qs : u"---0----3----|"_qs;
            lines.append(line);
        }
        lines.append(u"  and the words go here, verse "_qs + QString::number(block));
        lines.append(QString());
    }
    return lines.mid(0, lineCount).join(u'\n');
}

} // namespace

int main(int argc, char *argv[])
{
    BenchEnvironment environment(argc, argv);
    const TabData tab = makeBenchmarkTab();

    const QString ownText = firstLines(DocumentManager::tabText(TabExportConfiguration{tab}), 2000);
    const QString forum = forumText(2000);
    std::optional<TabData> read;
    const double ownRead = bestOf([&] { read = AsciiTabReader::read(ownText).tab; });
    const qsizetype ownRows = read ? read->tabRowDatas.size() : 0;
    const double forumRead = bestOf([&] { read = AsciiTabReader::read(forum).tab; });
    const qsizetype forumRows = read ? read->tabRowDatas.size() : 0;

    QByteArray score;
    const double xmlWrite = bestOf([&] { score = MusicXml::scoreXml(tab); });
    QByteArray mxl;
    const double mxlWrite = bestOf([&] { mxl = MusicXml::write(tab, true).value(); });
    const double xmlRead = bestOf([&] { MusicXml::read(score).tab.value(); });
    QByteArray midi;
    const double midiWrite = bestOf([&] { midi = MidiWriter::write(tab).value(); });
    const TabData song = makeBenchmarkTab(40, 32);
    const double songMidiWrite = bestOf([&] { MidiWriter::write(song).value(); });

    printFigure("text read, 2,000 lines of our own", ownRead, "ms");
    printFigure("  rows read", double(ownRows), "rows");
    printFigure("text read, 2,000 forum lines", forumRead, "ms");
    printFigure("  rows read", double(forumRows), "rows");
    printFigure("MusicXML write, 1,000 rows", xmlWrite, "ms");
    printFigure(".mxl write, 1,000 rows", mxlWrite, "ms");
    printFigure("MusicXML read back", xmlRead, "ms");
    printFigure("MIDI write, 1,000 rows", midiWrite, "ms");
    printFigure("MIDI write, 40 rows of 32", songMidiWrite, "ms");
    printFigure("MusicXML size", double(score.size()), "bytes");
    printFigure(".mxl size", double(mxl.size()), "bytes");
    printFigure("MIDI size", double(midi.size()), "bytes");
    return 0;
}
