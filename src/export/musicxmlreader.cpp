#include "musicxml.h"

#include "importedrows.h"
#include "library/tabedits.h"
#include "music/musicnote.h"
#include "mxlarchive.h"

#include <QHash>
#include <QXmlStreamReader>

#include <cmath>

namespace {

struct Lyric {
    QString number;
    QString text;
    QString syllabic;
};

struct Column {
    QList<std::pair<int, qint64>> frets;
    std::optional<QString> chordName;
    QList<Lyric> lyrics;
};

struct Measure {
    bool newSystem = false;
    bool withoutBar = false;
    QList<Column> columns;
};

struct Part {
    QList<Measure> measures;
    int staffLines = 0;
    QHash<int, QString> tuning;
    std::optional<qint64> capo;
    std::optional<double> tempo;
    int highestString = 0;
    bool hasFrets = false;
};

QString text(QXmlStreamReader &xml)
{
    return xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
}

// Our note names are sharps: a flat is the sharp below.
std::optional<QString> noteName(const QString &step, int alter)
{
    const auto natural = MusicNotes::fromText(step);
    if (!natural)
        return std::nullopt;
    const int position = ((MusicNotes::position(*natural) + alter) % 12 + 12) % 12;
    return MusicNotes::text(MusicNotes::allCases[size_t(position)]);
}

QString kindSuffix(const QString &kind)
{
    static const QHash<QString, QString> suffixes{
        {u"minor"_qs, u"m"_qs},           {u"augmented"_qs, u"aug"_qs},
        {u"diminished"_qs, u"dim"_qs},    {u"dominant"_qs, u"7"_qs},
        {u"major-seventh"_qs, u"maj7"_qs}, {u"minor-seventh"_qs, u"m7"_qs},
        {u"diminished-seventh"_qs, u"dim7"_qs}, {u"augmented-seventh"_qs, u"aug7"_qs},
        {u"half-diminished"_qs, u"m7b5"_qs}, {u"major-minor"_qs, u"mMaj7"_qs},
        {u"major-sixth"_qs, u"6"_qs},     {u"minor-sixth"_qs, u"m6"_qs},
        {u"dominant-ninth"_qs, u"9"_qs},  {u"major-ninth"_qs, u"maj9"_qs},
        {u"minor-ninth"_qs, u"m9"_qs},    {u"dominant-11th"_qs, u"11"_qs},
        {u"suspended-second"_qs, u"sus2"_qs}, {u"suspended-fourth"_qs, u"sus4"_qs},
        {u"power"_qs, u"5"_qs},
    };
    return suffixes.value(kind);
}

QString alterSign(const QString &alter)
{
    const int value = int(std::lround(alter.toDouble()));
    return value > 0 ? u"#"_qs : value < 0 ? u"b"_qs : QString();
}

std::optional<QString> readHarmony(QXmlStreamReader &xml)
{
    QString root;
    QString rootText;
    QString alter;
    QString suffix;
    QString bass;
    bool hasRoot = false;
    while (xml.readNextStartElement()) {
        if (xml.name() == u"root") {
            while (xml.readNextStartElement()) {
                if (xml.name() == u"root-step") {
                    rootText = xml.attributes().value(u"text"_qs).toString();
                    root = text(xml);
                    hasRoot = true;
                } else if (xml.name() == u"root-alter") {
                    alter = alterSign(text(xml));
                } else {
                    xml.skipCurrentElement();
                }
            }
        } else if (xml.name() == u"kind") {
            const bool hasText = xml.attributes().hasAttribute(u"text"_qs);
            const QString shown = xml.attributes().value(u"text"_qs).toString();
            const QString kind = text(xml);
            suffix = hasText ? shown : kindSuffix(kind);
        } else if (xml.name() == u"bass") {
            QString step;
            QString bassAlter;
            while (xml.readNextStartElement()) {
                if (xml.name() == u"bass-step")
                    step = text(xml);
                else if (xml.name() == u"bass-alter")
                    bassAlter = alterSign(text(xml));
                else
                    xml.skipCurrentElement();
            }
            if (!step.isEmpty())
                bass = u'/' + step + bassAlter;
        } else {
            xml.skipCurrentElement();
        }
    }
    if (!hasRoot)
        return std::nullopt;
    if (!rootText.isEmpty())
        return rootText;
    return root + alter + suffix + bass;
}

void readAttributes(QXmlStreamReader &xml, Part &part)
{
    while (xml.readNextStartElement()) {
        if (xml.name() != u"staff-details") {
            xml.skipCurrentElement();
            continue;
        }
        while (xml.readNextStartElement()) {
            if (xml.name() == u"staff-lines") {
                part.staffLines = text(xml).toInt();
            } else if (xml.name() == u"capo") {
                part.capo = text(xml).toLongLong();
            } else if (xml.name() == u"staff-tuning") {
                const int line = xml.attributes().value(u"line"_qs).toInt();
                QString step;
                int alter = 0;
                while (xml.readNextStartElement()) {
                    if (xml.name() == u"tuning-step")
                        step = text(xml);
                    else if (xml.name() == u"tuning-alter")
                        alter = int(std::lround(text(xml).toDouble()));
                    else
                        xml.skipCurrentElement();
                }
                if (const auto name = noteName(step, alter))
                    part.tuning.insert(line, *name);
            } else {
                xml.skipCurrentElement();
            }
        }
    }
}

void readSound(QXmlStreamReader &xml, Part &part)
{
    bool ok = false;
    const double tempo = xml.attributes().value(u"tempo"_qs).toDouble(&ok);
    if (ok && tempo > 0 && !part.tempo)
        part.tempo = tempo;
    xml.skipCurrentElement();
}

// The tempo of a direction sits in its <sound>, anywhere inside.
void readDirection(QXmlStreamReader &xml, Part &part)
{
    while (xml.readNextStartElement()) {
        if (xml.name() == u"sound")
            readSound(xml, part);
        else
            xml.skipCurrentElement();
    }
}

struct Note {
    bool chord = false;
    bool skip = false;
    std::optional<int> string;
    std::optional<qint64> fret;
    QList<Lyric> lyrics;
};

Note readNote(QXmlStreamReader &xml)
{
    Note note;
    while (xml.readNextStartElement()) {
        const QStringView name = xml.name();
        if (name == u"chord") {
            note.chord = true;
            xml.skipCurrentElement();
        } else if (name == u"grace" || name == u"cue") {
            note.skip = true;
            xml.skipCurrentElement();
        } else if (name == u"notations") {
            while (xml.readNextStartElement()) {
                if (xml.name() != u"technical") {
                    xml.skipCurrentElement();
                    continue;
                }
                while (xml.readNextStartElement()) {
                    bool ok = false;
                    if (xml.name() == u"string") {
                        const int value = text(xml).toInt(&ok);
                        if (ok)
                            note.string = value;
                    } else if (xml.name() == u"fret") {
                        const qint64 value = text(xml).toLongLong(&ok);
                        if (ok)
                            note.fret = value;
                    } else {
                        xml.skipCurrentElement();
                    }
                }
            }
        } else if (name == u"lyric") {
            Lyric lyric;
            lyric.number = xml.attributes().value(u"number"_qs).toString();
            while (xml.readNextStartElement()) {
                if (xml.name() == u"text")
                    lyric.text += xml.readElementText(QXmlStreamReader::SkipChildElements);
                else if (xml.name() == u"syllabic")
                    lyric.syllabic = text(xml);
                else
                    xml.skipCurrentElement();
            }
            note.lyrics.append(lyric);
        } else {
            xml.skipCurrentElement();
        }
    }
    return note;
}

Measure readMeasure(QXmlStreamReader &xml, Part &part)
{
    Measure measure;
    std::optional<QString> harmony;
    // Only the first voice: what follows a <backup> goes over the same time again.
    bool backedUp = false;
    while (xml.readNextStartElement()) {
        const QStringView name = xml.name();
        if (name == u"print") {
            measure.newSystem = measure.newSystem
                                || xml.attributes().value(u"new-system"_qs) == u"yes";
            xml.skipCurrentElement();
        } else if (name == u"attributes") {
            readAttributes(xml, part);
        } else if (name == u"sound") {
            readSound(xml, part);
        } else if (name == u"direction") {
            readDirection(xml, part);
        } else if (name == u"harmony") {
            if (const auto chord = readHarmony(xml))
                harmony = chord;
        } else if (name == u"backup") {
            backedUp = true;
            xml.skipCurrentElement();
        } else if (name == u"barline") {
            const bool right = xml.attributes().value(u"location"_qs) != u"left"
                               && xml.attributes().value(u"location"_qs) != u"middle";
            while (xml.readNextStartElement()) {
                if (xml.name() == u"bar-style" && text(xml) == u"none" && right)
                    measure.withoutBar = true;
                else if (xml.isStartElement())
                    xml.skipCurrentElement();
            }
        } else if (name == u"note") {
            const Note note = readNote(xml);
            if (backedUp || note.skip)
                continue;
            if (!note.chord || measure.columns.isEmpty())
                measure.columns.append(Column());
            Column &column = measure.columns.last();
            if (note.string && note.fret) {
                column.frets.append({*note.string, *note.fret});
                part.hasFrets = true;
                part.highestString = std::max(part.highestString, *note.string);
            }
            column.lyrics += note.lyrics;
            if (harmony && !column.chordName) {
                column.chordName = harmony;
                harmony.reset();
            }
        } else {
            xml.skipCurrentElement();
        }
    }
    return measure;
}

Part readPart(QXmlStreamReader &xml)
{
    Part part;
    while (xml.readNextStartElement()) {
        if (xml.name() == u"measure")
            part.measures.append(readMeasure(xml, part));
        else
            xml.skipCurrentElement();
    }
    return part;
}

// A row's lyric lines: the syllables of each verse number joined into words.
QStringList joinLyrics(const QList<Lyric> &lyrics)
{
    QStringList numbers;
    QHash<QString, QString> lines;
    QHash<QString, bool> open;
    for (const Lyric &lyric : lyrics) {
        if (!numbers.contains(lyric.number))
            numbers.append(lyric.number);
        QString &line = lines[lyric.number];
        if (!line.isEmpty() && !open.value(lyric.number))
            line += u' ';
        line += lyric.text;
        open[lyric.number] = lyric.syllabic == u"begin" || lyric.syllabic == u"middle";
    }
    QStringList result;
    for (const QString &number : numbers)
        result.append(lines.value(number));
    return result;
}

MusicXml::ReadResult tabOf(const Part &part, const QString &title)
{
    MusicXml::ReadResult result;
    const int strings = part.staffLines > 0 ? std::max(part.staffLines, part.highestString)
                                            : std::max(6, part.highestString);
    if (strings > 8) {
        result.message = u"The tab has "_qs + QString::number(strings)
                         + u" strings; Lutegrid takes 4 to 8."_qs;
        return result;
    }
    const int stringCount = std::max(strings, 4);
    QStringList notes;
    for (int line = 1; line <= stringCount && part.tuning.contains(line); ++line)
        notes.append(part.tuning.value(line));
    if (notes.size() != stringCount)
        notes = standardStringNotes(stringCount);

    bool systems = false;
    for (const Measure &measure : part.measures)
        systems = systems || measure.newSystem;

    QList<QList<TabColumnData>> rows;
    QList<QStringList> lyrics;
    QList<TabColumnData> row;
    QList<Lyric> rowLyrics;
    const auto endRow = [&] {
        const auto pieces = ImportedRows::fit(
            row, systems ? TabEdits::maxNumTabColumns : TabEdits::maxNumTabColumns / 2);
        for (qsizetype p = 0; p < pieces.size(); ++p) {
            rows.append(pieces[p]);
            lyrics.append(p == 0 ? joinLyrics(rowLyrics) : QStringList());
        }
        row.clear();
        rowLyrics.clear();
    };
    for (const Measure &measure : part.measures) {
        if (measure.newSystem && !row.isEmpty())
            endRow();
        for (const Column &source : measure.columns) {
            TabColumnData column(stringCount);
            column.chordName = source.chordName;
            for (const auto &[string, fret] : source.frets) {
                if (string >= 1 && string <= stringCount && fret >= 0)
                    column.columnItems[string - 1] = ColumnItemType::note(fret);
            }
            rowLyrics += source.lyrics;
            row.append(column);
        }
        if (!measure.withoutBar)
            row.append(TabColumnData(QList<ColumnItemType>(stringCount, ColumnItemType::bar())));
    }
    if (!row.isEmpty())
        endRow();

    TabData tab(title, ImportedRows::evened(rows, lyrics, stringCount), notes,
                part.capo.value_or(0), std::nullopt);
    if (part.tempo)
        tab.tempo = std::max<qint64>(1, std::llround(*part.tempo));
    result.tab = std::move(tab);
    return result;
}

} // namespace

MusicXml::ReadResult MusicXml::read(const QByteArray &bytes)
{
    ReadResult result;
    QByteArray score = bytes;
    if (MxlArchive::looksLikeArchive(bytes)) {
        QString message;
        const auto unpacked = MxlArchive::unpack(bytes, &message);
        if (!unpacked) {
            result.message = u"Not a readable MusicXML file: "_qs + message + u'.';
            return result;
        }
        score = *unpacked;
    }

    QXmlStreamReader xml(score);
    if (!xml.readNextStartElement()) {
        result.message = u"Not a readable MusicXML file."_qs;
        return result;
    }
    if (xml.name() == u"score-timewise") {
        result.message = u"Timewise MusicXML scores can't be read; save the score partwise."_qs;
        return result;
    }
    if (xml.name() != u"score-partwise") {
        result.message = u"Not a MusicXML score."_qs;
        return result;
    }
    QString title;
    std::optional<Part> chosen;
    while (xml.readNextStartElement()) {
        const QStringView name = xml.name();
        if (name == u"work") {
            while (xml.readNextStartElement()) {
                if (xml.name() == u"work-title" && title.isEmpty())
                    title = text(xml);
                else
                    xml.skipCurrentElement();
            }
        } else if (name == u"movement-title" && title.isEmpty()) {
            title = text(xml);
        } else if (name == u"part" && !chosen) {
            Part part = readPart(xml);
            if (part.hasFrets)
                chosen = std::move(part);
        } else {
            xml.skipCurrentElement();
        }
    }
    if (xml.hasError()) {
        result.message = u"Not a readable MusicXML file (line "_qs
                         + QString::number(xml.lineNumber()) + u": " + xml.errorString() + u").";
        return result;
    }
    if (!chosen) {
        result.message = u"The MusicXML file has no part with strings and frets to make a "
                         "tab from."_qs;
        return result;
    }
    return tabOf(*chosen, title);
}
