#include "asciitabblock.h"

#include <QRegularExpression>

#include <algorithm>
#include <numeric>

namespace {

// What may stand in a string line besides dashes; other characters read as blank.
const QString tabCharacters = u"-0123456789|hpbrxst/\\~_+*HPBRSTXv^=<>().:"_qs;

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

// The item a character stands for, or nothing for filler and unknown characters.
std::optional<ColumnItemType> markOf(QChar c)
{
    static const QString known = u"hpbrxst/\\~_+*"_qs;
    const QChar lower = c.toLower();
    if (known.contains(lower))
        return ColumnItemType::fromText(QString(lower));
    if (c == u'v')
        return ColumnItemType(ColumnItemType::Kind::vibrato);
    if (c == u'^')
        return ColumnItemType(ColumnItemType::Kind::bend);
    return std::nullopt;
}

struct Token {
    int line = 0;
    int start = 0;
    int end = 0;
    ColumnItemType item;
};

QList<Token> tokensOf(const QString &body, int line)
{
    QList<Token> tokens;
    for (int i = 0; i < body.size();) {
        const QChar c = body[i];
        if (isDigit(c)) {
            // Frets have one or two digits; a longer run is several notes.
            int j = i;
            while (j < body.size() && isDigit(body[j]) && j - i < 2)
                ++j;
            tokens.append({line, i, j - 1, ColumnItemType::note(body.mid(i, j - i).toLongLong())});
            i = j;
        } else if (c == u'|') {
            // A double bar is one bar.
            int j = i;
            while (j < body.size() && body[j] == u'|')
                ++j;
            tokens.append({line, i, j - 1, ColumnItemType::bar()});
            i = j;
        } else {
            if (const auto mark = markOf(c))
                tokens.append({line, i, i, *mark});
            ++i;
        }
    }
    return tokens;
}

struct Cluster {
    int start = 0;
    int end = 0;
    QList<Token> tokens;
};

// The step every gap between positions shares, leaving out the gaps of one that items written
// side by side ("5h7") make; 0 when no gap is left.
int stepOf(const QList<int> &positions)
{
    int step = 0;
    for (qsizetype k = 1; k < positions.size(); ++k) {
        if (positions[k] - positions[k - 1] >= 2)
            step = std::gcd(step, positions[k] - positions[k - 1]);
    }
    return step;
}

int smallestGap(const QList<int> &positions)
{
    int gap = 0;
    for (qsizetype k = 1; k < positions.size(); ++k) {
        const int g = positions[k] - positions[k - 1];
        if (g >= 2 && (gap == 0 || g < gap))
            gap = g;
    }
    return gap;
}

// Labels two wide, bodies of whole three-character cells, every item ending a cell: the lines
// our own export writes, where a wider shared step would still be one cell a column.
bool isOwnLayout(const QList<AsciiTabLine> &lines, const QList<Token> &tokens)
{
    const qsizetype length = lines.first().body.size();
    for (const AsciiTabLine &line : lines) {
        if (line.bodyOffset != 3 || line.body.size() != length || length % 3 != 0)
            return false;
    }
    return std::all_of(tokens.cbegin(), tokens.cend(),
                       [](const Token &token) { return token.end % 3 == 2; });
}

// Chord names written with no space between them ("Am7G") break where a name fits a column.
QList<std::pair<int, QString>> splitGlued(int position, const QString &word, int step)
{
    QList<std::pair<int, QString>> names;
    QString rest = word;
    while (step >= 2 && rest.size() > step && rest[step] >= u'A' && rest[step] <= u'G'
           && rest[step - 1] != u'/' && AsciiChordLine::isChordName(rest.left(step))
           && AsciiChordLine::isChordName(rest.mid(step))) {
        names.append({position, rest.left(step)});
        position += step;
        rest = rest.mid(step);
    }
    names.append({position, rest});
    return names;
}

} // namespace

std::optional<AsciiTabLine> AsciiTabLine::parse(const QString &line)
{
    const int n = int(line.size());
    int i = 0;
    while (i < n && line[i] == u' ')
        ++i;
    AsciiTabLine result;
    bool letterLabel = false;
    if (i < n && QStringLiteral("ABCDEFGabcdefg").contains(line[i])) {
        result.label = line[i++];
        if (i < n && (line[i] == u'#' || line[i] == u'b'))
            result.label += line[i++];
        letterLabel = true;
    } else if (i < n && isDigit(line[i])) {
        int j = i + 1;
        while (j < n && line[j] == u' ')
            ++j;
        if (j < n && (line[j] == u'|' || line[j] == u':')) {
            result.label = line[i];
            i = j;
        }
    }
    while (i < n && line[i] == u' ' && !result.label.isEmpty())
        ++i;
    int separators = 0;
    while (i < n && (line[i] == u'|' || line[i] == u':') && separators < 2) {
        ++i;
        ++separators;
    }
    if (separators == 0 && (i >= n || line[i] != u'-'))
        return std::nullopt;
    if (letterLabel && separators == 0 && result.label.size() > 1)
        return std::nullopt;

    QString body = line.mid(i);
    while (!body.isEmpty() && body.back().isSpace())
        body.chop(1);
    // Words after the closing bar ("x2", "repeat") are no part of the line.
    const qsizetype lastBar = body.lastIndexOf(u'|');
    if (lastBar >= 0) {
        const QString after = body.mid(lastBar + 1);
        if (std::any_of(after.cbegin(), after.cend(),
                        [](QChar c) { return c == u' ' || !tabCharacters.contains(c); }))
            body.truncate(lastBar + 1);
    }
    if (body.endsWith(u'|'))
        body.chop(1);
    if (body.size() < 3)
        return std::nullopt;
    int dashes = 0;
    int unknown = 0;
    for (const QChar c : body) {
        if (c == u'-')
            ++dashes;
        else if (!tabCharacters.contains(c))
            ++unknown;
    }
    if (dashes < 2 || dashes * 5 < body.size() || unknown * 10 > body.size())
        return std::nullopt;
    result.body = body;
    result.bodyOffset = i;
    return result;
}

bool AsciiChordLine::isChordName(const QString &word)
{
    static const QRegularExpression chord(
        u"^(?:[A-G](?:#|b)?(?:maj|min|m|M|dim|aug|sus|add|\\+|-|°|ø|\\d|#|b|\\(|\\))*"
        "(?:/[A-G](?:#|b)?)?)+$|^N\\.?C\\.?$"_qs);
    return chord.match(word).hasMatch();
}

std::optional<AsciiChordLine> AsciiChordLine::parse(const QString &line, int bodyOffset)
{
    static const QRegularExpression word(u"\\S+"_qs);
    AsciiChordLine result;
    for (auto it = word.globalMatch(line); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        if (!isChordName(match.captured()))
            return std::nullopt;
        result.names.append({int(match.capturedStart()) - bodyOffset, match.captured()});
    }
    if (result.names.isEmpty())
        return std::nullopt;
    return result;
}

QList<TabColumnData> AsciiTabBlock::columns(const QList<AsciiTabLine> &lines,
                                            const std::optional<AsciiChordLine> &chords)
{
    const int lineCount = int(lines.size());
    QList<Token> tokens;
    int bodyLength = 0;
    for (int l = 0; l < lineCount; ++l) {
        tokens += tokensOf(lines[l].body, l);
        bodyLength = std::max(bodyLength, int(lines[l].body.size()));
    }
    std::stable_sort(tokens.begin(), tokens.end(),
                     [](const Token &a, const Token &b) { return a.start < b.start; });

    // Items that overlap across lines are one column: "12" over "0" whichever way it leans.
    QList<Cluster> clusters;
    for (const Token &token : tokens) {
        if (!clusters.isEmpty() && token.start <= clusters.last().end) {
            clusters.last().end = std::max(clusters.last().end, token.end);
            clusters.last().tokens.append(token);
        } else {
            clusters.append({token.start, token.end, {token}});
        }
    }

    // Right-aligned sources share the step of their ends, left-aligned ones of their starts.
    QList<int> starts;
    QList<int> ends;
    for (const Cluster &cluster : clusters) {
        starts.append(cluster.start);
        ends.append(cluster.end);
    }
    // A step of several three-character cells is that many columns: dashes are kept as time.
    const auto cell = [](int shared) { return shared > 3 && shared % 3 == 0 ? 3 : shared; };
    const int endStep = cell(stepOf(ends));
    const int startStep = cell(stepOf(starts));
    bool byStart = startStep > endStep;
    int step = std::max(endStep, startStep);
    // Our own text export: three characters a column, items at the right of their cell.
    if (isOwnLayout(lines, tokens)) {
        byStart = false;
        step = 3;
    }
    // Uneven spacing shares no step: its narrowest gap is one column.
    if (step < 2)
        step = smallestGap(ends);
    if (step == 0)
        step = 3;
    const QList<int> &anchors = byStart ? starts : ends;

    // Items written side by side still each take a column, pushing the rest along.
    QList<int> indexes;
    for (const int anchor : anchors)
        indexes.append(indexes.isEmpty() ? anchor / step
                                         : std::max(anchor / step, indexes.last() + 1));
    int count = (bodyLength + step - 1) / step;
    if (!indexes.isEmpty())
        count = std::max(count, indexes.last() + 1);
    QList<TabColumnData> columns(count, TabColumnData(lineCount));

    for (qsizetype c = 0; c < clusters.size(); ++c) {
        const int index = indexes[c];
        QList<ColumnItemType> items(lineCount, ColumnItemType::blank());
        QList<bool> taken(lineCount, false);
        int bars = 0;
        for (const Token &token : clusters[c].tokens) {
            if (taken[token.line])
                continue;
            taken[token.line] = true;
            if (token.item.isBar())
                ++bars;
            else
                items[token.line] = token.item;
        }
        // A bar drawn through most lines is a bar; a stray one is nothing.
        if (bars * 2 >= lineCount)
            items.fill(ColumnItemType::bar());
        columns[index].columnItems = items;
    }

    // A name stands over the column whose items it touches, else over the column it starts in.
    const auto columnUnder = [&](int at, int width) {
        for (qsizetype c = 0; c < clusters.size(); ++c) {
            if (clusters[c].end >= at && clusters[c].start <= at + width)
                return indexes[c];
            if (clusters[c].start > at + width)
                break;
        }
        return std::clamp(std::max(at, 0) / step, 0, count - 1);
    };
    if (chords) {
        for (const auto &[position, word] : chords->names) {
            for (const auto &[at, name] : splitGlued(position, word, step)) {
                int index = columnUnder(at, int(name.size()));
                while (index < count && columns[index].chordName)
                    ++index;
                if (index < count)
                    columns[index].chordName = name;
            }
        }
    }
    return columns;
}
