#include "asciitabreader.h"

#include "asciitabblock.h"
#include "importedrows.h"
#include "library/tabedits.h"
#include "music/musicnote.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

struct Block {
    int first = 0;
    QList<AsciiTabLine> lines;
    int end() const { return first + int(lines.size()); }
};

// A run of string lines split into blocks of 4 to 8; runs that can't be split are no tab.
QList<Block> splitRun(int first, const QList<AsciiTabLine> &run)
{
    const int n = int(run.size());
    if (n < 4)
        return {};
    if (n <= 8)
        return {Block{first, run}};
    // Blocks written without a line between them: the labels repeat, or the count divides.
    for (int size = 4; size <= 8; ++size) {
        if (n % size != 0)
            continue;
        bool repeats = true;
        for (int i = size; i < n && repeats; ++i)
            repeats = run[i].label == run[i % size].label;
        if (!repeats)
            continue;
        QList<Block> blocks;
        for (int at = 0; at < n; at += size)
            blocks.append(Block{first + at, run.mid(at, size)});
        return blocks;
    }
    return {};
}

// "e", "Bb", "D#" as one of our note names; nothing for labels that name no note.
std::optional<QString> noteOfLabel(const QString &label)
{
    if (label.isEmpty() || !QStringLiteral("ABCDEFGabcdefg").contains(label[0]))
        return std::nullopt;
    QString name(label[0].toUpper());
    if (label.size() == 1)
        return name;
    if (label.size() != 2)
        return std::nullopt;
    const auto natural = MusicNotes::fromText(name);
    if (!natural)
        return std::nullopt;
    const int position = MusicNotes::position(*natural);
    if (label[1] == u'#')
        return MusicNotes::text(MusicNotes::allCases[size_t((position + 1) % 12)]);
    if (label[1] == u'b')
        return MusicNotes::text(MusicNotes::allCases[size_t((position + 11) % 12)]);
    return std::nullopt;
}

std::optional<QStringList> tuningOf(const Block &block)
{
    QStringList notes;
    for (const AsciiTabLine &line : block.lines) {
        const auto note = noteOfLabel(line.label);
        if (!note)
            return std::nullopt;
        notes.prepend(*note);
    }
    return notes;
}

bool isBlankLine(const QString &line)
{
    return line.trimmed().isEmpty();
}

// A row's text: the lines between two blocks, less the indent the string labels take.
QStringList lyricLinesOf(const QStringList &lines, int from, int to, int indent)
{
    QStringList lyrics;
    for (int i = from; i < to; ++i) {
        if (isBlankLine(lines[i]))
            continue;
        QString line = lines[i];
        int strip = 0;
        while (strip < indent && strip < line.size() && line[strip] == u' ')
            ++strip;
        while (!line.isEmpty() && line.back().isSpace())
            line.chop(1);
        lyrics.append(line.mid(strip));
    }
    return lyrics;
}

// The title, intro and capo that stand before the first block's own text.
void readHeader(const QStringList &lines, int end, TabData &tab, AsciiTabResult &result)
{
    static const QRegularExpression capo(u"^\\s*capo\\D{0,16}?(\\d{1,2})\\b"_qs,
                                         QRegularExpression::CaseInsensitiveOption);
    int titleLine = -1;
    QStringList intro;
    for (int i = 0; i < end; ++i) {
        if (titleLine < 0) {
            if (!isBlankLine(lines[i])) {
                titleLine = i;
                tab.title = lines[i].trimmed();
                result.foundTitle = true;
            }
            continue;
        }
        const QRegularExpressionMatch match = capo.match(lines[i]);
        if (match.hasMatch()) {
            tab.capoFret = match.captured(1).toLongLong();
            continue;
        }
        intro.append(lines[i]);
    }
    while (!intro.isEmpty() && isBlankLine(intro.first()))
        intro.removeFirst();
    while (!intro.isEmpty() && isBlankLine(intro.last()))
        intro.removeLast();
    if (!intro.isEmpty())
        tab.introText = intro.join(u'\n');
}

} // namespace

QString AsciiTabReader::noTabMessage()
{
    return u"No tab found in the text. A tab needs 4 to 8 string lines such as e|--0--3--|."_qs;
}

AsciiTabResult AsciiTabReader::read(const QString &text)
{
    AsciiTabResult result;
    QString normalized = text;
    normalized.replace(u"\r\n"_qs, u"\n"_qs);
    normalized.replace(u'\r', u'\n');
    normalized.replace(u'\t', u"    "_qs);
    const QStringList lines = normalized.split(u'\n');

    QList<Block> blocks;
    for (int i = 0; i < lines.size();) {
        QList<AsciiTabLine> run;
        const int first = i;
        while (i < lines.size()) {
            auto line = AsciiTabLine::parse(lines[i]);
            if (!line)
                break;
            run.append(*line);
            ++i;
        }
        blocks += splitRun(first, run);
        if (run.isEmpty())
            ++i;
    }
    if (blocks.isEmpty()) {
        result.message = noTabMessage();
        return result;
    }

    const int stringCount = int(blocks.first().lines.size());
    TabData tab(QString(), stringCount);
    for (const Block &block : blocks) {
        if (block.lines.size() != stringCount)
            continue;
        if (const auto tuning = tuningOf(block)) {
            tab.stringNotes = *tuning;
            result.foundTuning = true;
            break;
        }
    }

    // The first block's text is the paragraph that touches it; above that is the header.
    int paragraph = blocks.first().first;
    while (paragraph > 0 && !lines[paragraph - 1].isEmpty())
        --paragraph;
    readHeader(lines, paragraph, tab, result);

    QList<QList<TabColumnData>> rowColumns;
    QList<QStringList> rowLyrics;
    int textFrom = paragraph;
    for (const Block &block : blocks) {
        const int indent = block.lines.first().bodyOffset;
        int textTo = block.first;
        std::optional<AsciiChordLine> chords;
        if (textTo > textFrom) {
            chords = AsciiChordLine::parse(lines[textTo - 1], indent);
            if (chords)
                --textTo;
        }
        const QList<TabColumnData> columns = AsciiTabBlock::columns(block.lines, chords);
        const QStringList lyrics = lyricLinesOf(lines, textFrom, textTo, indent);
        bool firstPiece = true;
        const auto pieces = ImportedRows::fit(columns, TabEdits::maxNumTabColumns);
        for (const QList<TabColumnData> &piece : pieces) {
            rowColumns.append(piece);
            rowLyrics.append(firstPiece ? lyrics : QStringList());
            firstPiece = false;
        }
        textFrom = block.end();
    }

    tab.tabRowDatas = ImportedRows::evened(rowColumns, rowLyrics, stringCount);
    result.tab = std::move(tab);
    return result;
}
