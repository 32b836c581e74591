#include "musicxml.h"

#include "mxlarchive.h"
#include "music/stringpitches.h"
#include "tabtimeline.h"

#include <QRegularExpression>
#include <QXmlStreamWriter>

namespace {

constexpr std::array<const char *, 12> steps = {"C", "C", "D", "D", "E", "F",
                                                "F", "G", "G", "A", "A", "B"};
constexpr std::array<int, 12> alters = {0, 1, 0, 1, 0, 0, 1, 0, 1, 0, 1, 0};

bool isBarColumn(const TabColumnData &column)
{
    return !column.columnItems.isEmpty() && column.columnItems.first().isBar();
}

void writePitch(QXmlStreamWriter &xml, int midi)
{
    // The schema's octaves run 0 to 9.
    while (midi < 12)
        midi += 12;
    while (midi > 119)
        midi -= 12;
    xml.writeStartElement(u"pitch"_qs);
    xml.writeTextElement(u"step"_qs, QString::fromLatin1(steps[midi % 12]));
    if (alters[midi % 12])
        xml.writeTextElement(u"alter"_qs, QString::number(alters[midi % 12]));
    xml.writeTextElement(u"octave"_qs, QString::number(midi / 12 - 1));
    xml.writeEndElement();
}

// A root and the rest of the name as the kind's text; a name with no root keeps the whole name
// as the root's display text.
void writeHarmony(QXmlStreamWriter &xml, const QString &name)
{
    static const QRegularExpression rooted(u"^([A-G])([#b]?)(.*)$"_qs,
                                           QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = rooted.match(name);
    xml.writeStartElement(u"harmony"_qs);
    xml.writeStartElement(u"root"_qs);
    xml.writeStartElement(u"root-step"_qs);
    if (!match.hasMatch())
        xml.writeAttribute(u"text"_qs, name);
    xml.writeCharacters(match.hasMatch() ? match.captured(1) : u"C"_qs);
    xml.writeEndElement();
    if (match.hasMatch() && !match.captured(2).isEmpty())
        xml.writeTextElement(u"root-alter"_qs, match.captured(2) == u"#" ? u"1"_qs : u"-1"_qs);
    xml.writeEndElement();
    xml.writeStartElement(u"kind"_qs);
    const QString rest = match.hasMatch() ? match.captured(3) : QString();
    xml.writeAttribute(u"text"_qs, rest);
    xml.writeCharacters(!match.hasMatch() ? u"none"_qs : rest.isEmpty() ? u"major"_qs
                                                                         : u"other"_qs);
    xml.writeEndElement();
    xml.writeEndElement();
}

class ScoreWriter {
public:
    ScoreWriter(const TabData &tab, QByteArray *out)
        : tab(tab), xml(out), timeline(TabTimeline::of(tab)),
          pitches(StringPitches::openStringMidiPitches(tab.stringNotes))
    {
    }

    void write()
    {
        xml.setAutoFormatting(true);
        xml.setAutoFormattingIndent(1);
        xml.writeStartDocument();
        xml.writeDTD(u"<!DOCTYPE score-partwise PUBLIC \"-//Recordare//DTD MusicXML 4.0 "
                     "Partwise//EN\" \"http://www.musicxml.org/dtds/partwise.dtd\">"_qs);
        xml.writeStartElement(u"score-partwise"_qs);
        xml.writeAttribute(u"version"_qs, u"4.0"_qs);
        xml.writeStartElement(u"work"_qs);
        xml.writeTextElement(u"work-title"_qs, tab.title);
        xml.writeEndElement();
        xml.writeStartElement(u"identification"_qs);
        xml.writeStartElement(u"encoding"_qs);
        xml.writeTextElement(u"software"_qs, u"Lutegrid"_qs);
        xml.writeEndElement();
        xml.writeEndElement();
        xml.writeStartElement(u"part-list"_qs);
        xml.writeStartElement(u"score-part"_qs);
        xml.writeAttribute(u"id"_qs, u"P1"_qs);
        xml.writeTextElement(u"part-name"_qs, tab.stringCount() == 4 ? u"Bass"_qs
                                                                      : u"Guitar"_qs);
        xml.writeEndElement();
        xml.writeEndElement();
        xml.writeStartElement(u"part"_qs);
        xml.writeAttribute(u"id"_qs, u"P1"_qs);
        writeMeasures();
        xml.writeEndElement();
        xml.writeEndElement();
        xml.writeEndDocument();
    }

private:
    void writeMeasures()
    {
        qsizetype slot = 0;
        for (qsizetype r = 0; r < tab.tabRowDatas.size(); ++r) {
            const TabRowData &row = tab.tabRowDatas[r];
            // A row break that is no bar: the measure ends without a bar line.
            if (r > 0) {
                if (measureOpen)
                    closeMeasure(true);
                newSystem = true;
            }
            lyrics = row.lyricLines;
            for (qsizetype c = 0; c < row.colDatas.size(); ++c) {
                const TabColumnData &column = row.colDatas[c];
                if (column.chordName)
                    pendingChord = column.chordName;
                if (isBarColumn(column)) {
                    if (measureOpen)
                        closeMeasure(false);
                    continue;
                }
                if (slot >= timeline.slots.size())
                    break;
                writeColumn(column, timeline.slots[slot++]);
            }
        }
        if (measureOpen)
            closeMeasure(true);
        if (measureNumber == 0) {
            openMeasure();
            closeMeasure(false);
        }
    }

    void openMeasure()
    {
        xml.writeStartElement(u"measure"_qs);
        xml.writeAttribute(u"number"_qs, QString::number(++measureNumber));
        measureOpen = true;
        if (newSystem && measureNumber > 1) {
            xml.writeStartElement(u"print"_qs);
            xml.writeAttribute(u"new-system"_qs, u"yes"_qs);
            xml.writeEndElement();
        }
        newSystem = false;
        if (measureNumber == 1) {
            writeAttributes();
            xml.writeStartElement(u"sound"_qs);
            xml.writeAttribute(u"tempo"_qs, QString::number(timeline.tempo));
            xml.writeEndElement();
        }
    }

    void closeMeasure(bool withoutBar)
    {
        if (withoutBar) {
            xml.writeStartElement(u"barline"_qs);
            xml.writeAttribute(u"location"_qs, u"right"_qs);
            xml.writeTextElement(u"bar-style"_qs, u"none"_qs);
            xml.writeEndElement();
        }
        xml.writeEndElement();
        measureOpen = false;
    }

    void writeAttributes()
    {
        xml.writeStartElement(u"attributes"_qs);
        xml.writeTextElement(u"divisions"_qs, QString::number(timeline.ticksPerQuarter));
        xml.writeStartElement(u"key"_qs);
        xml.writeTextElement(u"fifths"_qs, u"0"_qs);
        xml.writeEndElement();
        if (timeline.measureTicks > 0 && timeline.measureTicks % timeline.ticksPerQuarter == 0) {
            xml.writeStartElement(u"time"_qs);
            xml.writeTextElement(u"beats"_qs,
                                 QString::number(timeline.measureTicks / timeline.ticksPerQuarter));
            xml.writeTextElement(u"beat-type"_qs, u"4"_qs);
            xml.writeEndElement();
        }
        xml.writeStartElement(u"clef"_qs);
        xml.writeTextElement(u"sign"_qs, u"TAB"_qs);
        xml.writeTextElement(u"line"_qs, u"5"_qs);
        xml.writeEndElement();
        xml.writeStartElement(u"staff-details"_qs);
        const int strings = tab.stringCount();
        xml.writeTextElement(u"staff-lines"_qs, QString::number(strings));
        for (int line = 1; line <= strings; ++line) {
            // Lines count from the lowest string; pitches from the top line.
            const auto pitch = pitches.value(strings - line);
            if (!pitch)
                continue;
            xml.writeStartElement(u"staff-tuning"_qs);
            xml.writeAttribute(u"line"_qs, QString::number(line));
            const int midi = std::clamp(*pitch, 12, 119);
            xml.writeTextElement(u"tuning-step"_qs, QString::fromLatin1(steps[midi % 12]));
            if (alters[midi % 12])
                xml.writeTextElement(u"tuning-alter"_qs, QString::number(alters[midi % 12]));
            xml.writeTextElement(u"tuning-octave"_qs, QString::number(midi / 12 - 1));
            xml.writeEndElement();
        }
        if (tab.capoFret > 0)
            xml.writeTextElement(u"capo"_qs, QString::number(tab.capoFret));
        xml.writeEndElement();
        xml.writeEndElement();
    }

    void writeColumn(const TabColumnData &column, const TabTimeline::Slot &slot)
    {
        if (!measureOpen)
            openMeasure();
        if (slot.start > cursor)
            writeRest(slot.start - cursor, false);
        cursor = slot.start + slot.duration;
        if (pendingChord) {
            writeHarmony(xml, *pendingChord);
            pendingChord.reset();
        }
        const int strings = int(column.columnItems.size());
        bool first = true;
        for (int i = 0; i < strings; ++i) {
            const ColumnItemType &item = column.columnItems[i];
            if (!item.isNote() || item.fret() < 0)
                continue;
            xml.writeStartElement(u"note"_qs);
            if (!first)
                xml.writeEmptyElement(u"chord"_qs);
            const auto open = pitches.value(i);
            const qint64 sounding = qint64(open.value_or(60)) + std::max<qint64>(tab.capoFret, 0)
                                    + std::min<qint64>(item.fret(), 127);
            writePitch(xml, int(std::min<qint64>(sounding, 127)));
            xml.writeTextElement(u"duration"_qs, QString::number(slot.duration));
            xml.writeTextElement(u"voice"_qs, u"1"_qs);
            xml.writeStartElement(u"notations"_qs);
            xml.writeStartElement(u"technical"_qs);
            xml.writeTextElement(u"string"_qs, QString::number(i + 1));
            xml.writeTextElement(u"fret"_qs, QString::number(item.fret()));
            xml.writeEndElement();
            xml.writeEndElement();
            if (first)
                writeLyrics();
            xml.writeEndElement();
            first = false;
        }
        if (first)
            writeRest(slot.duration, true);
    }

    void writeRest(qint64 duration, bool withLyrics)
    {
        xml.writeStartElement(u"note"_qs);
        xml.writeEmptyElement(u"rest"_qs);
        xml.writeTextElement(u"duration"_qs, QString::number(duration));
        xml.writeTextElement(u"voice"_qs, u"1"_qs);
        if (withLyrics)
            writeLyrics();
        xml.writeEndElement();
    }

    // A row's lyric lines go with its first note, one verse number a line.
    void writeLyrics()
    {
        for (qsizetype k = 0; k < lyrics.size(); ++k) {
            xml.writeStartElement(u"lyric"_qs);
            xml.writeAttribute(u"number"_qs, QString::number(k + 1));
            xml.writeTextElement(u"syllabic"_qs, u"single"_qs);
            xml.writeTextElement(u"text"_qs, lyrics[k]);
            xml.writeEndElement();
        }
        lyrics.clear();
    }

    const TabData &tab;
    QXmlStreamWriter xml;
    TabTimeline timeline;
    QList<std::optional<int>> pitches;
    int measureNumber = 0;
    bool measureOpen = false;
    bool newSystem = false;
    qint64 cursor = 0;
    std::optional<QString> pendingChord;
    QStringList lyrics;
};

} // namespace

QString MusicXml::fileExtension(bool compressed)
{
    return compressed ? u"mxl"_qs : u"musicxml"_qs;
}

QByteArray MusicXml::scoreXml(const TabData &tab)
{
    QByteArray out;
    ScoreWriter(tab, &out).write();
    return out;
}

std::optional<QByteArray> MusicXml::write(const TabData &tab, bool compressed)
{
    const QByteArray score = scoreXml(tab);
    if (!compressed)
        return score;
    return MxlArchive::pack(score);
}
