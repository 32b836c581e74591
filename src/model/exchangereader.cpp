#include "exchangereader.h"

#include "jsoninteger.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

using ExchangeReader::DirectResult;
using ExchangeReader::Verdict;

QString noTitleMessage()
{
    return u"The tab has no title."_qs;
}

QString noRowsMessage()
{
    return u"The tab has no rows."_qs;
}

QString damagedRowMessage(qsizetype index)
{
    return u"Row %1 of the tab is damaged."_qs.arg(index + 1);
}

// Files from before rows held several lyric lines carry just the one, under "lyrics".
void adoptSingleLyric(const std::optional<QString> &single, QStringList &lines)
{
    if (!single || !lines.isEmpty())
        return;
    const auto isBlankOrTab = [](QChar c) { return c == u' ' || c == u'\t'; };
    if (!std::all_of(single->begin(), single->end(), isBlankOrTab))
        lines.append(*single);
}

// The members besides the rows, alike in both readers.
struct TabMembers {
    std::optional<QStringList> stringNotes;
    std::optional<qint64> capoFret;
    std::optional<QString> intro;
    std::optional<qint64> tempo;

    void applyTo(TabData &tab) &&
    {
        if (stringNotes)
            tab.stringNotes = std::move(*stringNotes);
        if (capoFret)
            tab.capoFret = *capoFret;
        if (intro) {
            QString trimmed = intro->trimmed();
            if (!trimmed.isEmpty())
                tab.introText = std::move(trimmed);
        }
        if (tempo)
            tab.tempo = *tempo;
    }
};

// ---- Straight from the bytes ----------------------------------------------------------------

// Reads the exchange form in one pass over its UTF-8. Every function that returns bool answers
// "still sure": false means the bytes hold something this reader leaves to the tree reader,
// which is also how a syntax error gets the JSON parser's own message.
class DirectParser {
public:
    explicit DirectParser(QByteArrayView bytes)
        : p(reinterpret_cast<const Byte *>(bytes.data())), end(p + bytes.size())
    {
    }

    DirectResult read(int defaultStringCount)
    {
        std::optional<QString> title;
        bool rowsAreArray = false;
        TabMembers members;
        unsigned seen = 0;
        skipSpace();
        if (p >= end || *p != '{')
            return {};
        const bool sure = forEachMember([&](const Text &key) {
            static constexpr const char *names[] = {"title", "tabRows", "stringNotes",
                                                    "cFret", "intro",   "tempo"};
            const int name = nameIndex(key, names);
            if (name < -1 || !firstSighting(seen, name))
                return false;
            switch (name) {
            case 0:
                return readOptionalString(title, 1);
            case 1:
                if (*p != '[')
                    return skipValue(1);
                rowsAreArray = true;
                return readRows();
            case 2: {
                if (*p != '[')
                    return skipValue(1);
                QStringList notes;
                bool allStrings = true;
                if (!readStringList(notes, allStrings, 1))
                    return false;
                if (allStrings)
                    members.stringNotes = std::move(notes);
                return true;
            }
            case 3:
                return readInteger(members.capoFret, 1);
            case 4:
                return readOptionalString(members.intro, 1);
            case 5:
                return readInteger(members.tempo, 1);
            default:
                return skipValue(1);
            }
        });
        skipSpace();
        if (!sure || p != end)
            return {};

        if (!title)
            return {Verdict::refused, std::nullopt, noTitleMessage()};
        if (!rowsAreArray)
            return {Verdict::refused, std::nullopt, noRowsMessage()};
        if (firstDamagedRow >= 0)
            return {Verdict::refused, std::nullopt, damagedRowMessage(firstDamagedRow)};
        TabData tab(*title, defaultStringCount);
        tab.tabRowDatas = std::move(rows);
        std::move(members).applyTo(tab);
        return {Verdict::read, std::move(tab), QString()};
    }

private:
    using Byte = unsigned char;

    // A JSON string as it stands in the bytes, quotes left off.
    struct Text {
        const Byte *begin = nullptr;
        const Byte *end = nullptr;
        bool escaped = false;
        bool ascii = true;

        QByteArrayView bytes() const
        {
            return QByteArrayView(reinterpret_cast<const char *>(begin), end - begin);
        }
    };

    // Deeper than any exchange file goes, and far below where the tree parser gives up.
    static constexpr int maximumDepth = 64;

    static bool isDigit(Byte c) { return c >= '0' && c <= '9'; }

    static bool isHex(Byte c)
    {
        return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    }

    static int hexValue(Byte c)
    {
        if (isDigit(c))
            return c - '0';
        return (c | 0x20) - 'a' + 10;
    }

    // The length of the well-formed UTF-8 sequence at `s`, or 0: no overlong forms, no
    // surrogates, nothing past U+10FFFF.
    static int utf8SequenceLength(const Byte *s, const Byte *end)
    {
        const Byte lead = s[0];
        auto continues = [&](int i, Byte low, Byte high) {
            return end - s > i && s[i] >= low && s[i] <= high;
        };
        if (lead >= 0xC2 && lead <= 0xDF)
            return continues(1, 0x80, 0xBF) ? 2 : 0;
        if (lead >= 0xE0 && lead <= 0xEF) {
            const Byte low = lead == 0xE0 ? 0xA0 : 0x80;
            const Byte high = lead == 0xED ? 0x9F : 0xBF;
            return continues(1, low, high) && continues(2, 0x80, 0xBF) ? 3 : 0;
        }
        if (lead >= 0xF0 && lead <= 0xF4) {
            const Byte low = lead == 0xF0 ? 0x90 : 0x80;
            const Byte high = lead == 0xF4 ? 0x8F : 0xBF;
            return continues(1, low, high) && continues(2, 0x80, 0xBF) && continues(3, 0x80, 0xBF)
                       ? 4
                       : 0;
        }
        return 0;
    }

    // Which of `names` the member name is, -1 for none, -2 for an escaped name that only the
    // tree reader can compare.
    template <size_t N> static int nameIndex(const Text &key, const char *const (&names)[N])
    {
        if (key.escaped)
            return -2;
        const QByteArrayView bytes = key.bytes();
        for (size_t i = 0; i < N; ++i) {
            if (bytes == QByteArrayView(names[i]))
                return int(i);
        }
        return -1;
    }

    // A repeated member: the tree keeps the last one, so the tree decides.
    static bool firstSighting(unsigned &seen, int name)
    {
        if (name < 0)
            return true;
        const unsigned bit = 1u << name;
        if (seen & bit)
            return false;
        seen |= bit;
        return true;
    }

    void skipSpace()
    {
        while (p < end && (*p == ' ' || *p == '\n' || *p == '\r' || *p == '\t'))
            ++p;
    }

    bool take(Byte c)
    {
        skipSpace();
        if (p < end && *p == c) {
            ++p;
            return true;
        }
        return false;
    }

    // Calls `element` at each element of the array at `p`, with `p` on the element's first
    // byte.
    template <typename Element> bool forEachElement(Element &&element)
    {
        ++p;
        if (take(']'))
            return true;
        do {
            skipSpace();
            if (p >= end || !element())
                return false;
        } while (take(','));
        return take(']');
    }

    // Calls `member` with each name of the object at `p`, with `p` on the value's first byte.
    template <typename Member> bool forEachMember(Member &&member)
    {
        ++p;
        if (take('}'))
            return true;
        do {
            skipSpace();
            Text key;
            if (p >= end || *p != '"' || !scanString(key) || !take(':'))
                return false;
            skipSpace();
            if (p >= end || !member(key))
                return false;
        } while (take(','));
        return take('}');
    }

    // The string at `p`, checked: escapes that JSON defines and well-formed UTF-8. Raw control
    // characters pass, as the tree parser lets them.
    bool scanString(Text &text)
    {
        ++p;
        text.begin = p;
        for (;;) {
            while (p < end && *p != '"' && *p != '\\' && *p < 0x80)
                ++p;
            if (p >= end)
                return false;
            if (*p == '"') {
                text.end = p++;
                return true;
            }
            if (*p == '\\') {
                text.escaped = true;
                if (end - p < 2)
                    return false;
                switch (p[1]) {
                case '"':
                case '\\':
                case '/':
                case 'b':
                case 'f':
                case 'n':
                case 'r':
                case 't':
                    p += 2;
                    break;
                case 'u':
                    if (end - p < 6 || !isHex(p[2]) || !isHex(p[3]) || !isHex(p[4]) || !isHex(p[5]))
                        return false;
                    p += 6;
                    break;
                default:
                    return false;
                }
                continue;
            }
            const int length = utf8SequenceLength(p, end);
            // A byte-order mark opening an unescaped string vanishes in the tree parser, one
            // elsewhere stays: rare enough to leave every one of them to it.
            if (!length || (length == 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF))
                return false;
            text.ascii = false;
            p += length;
        }
    }

    static QString decode(const Text &text)
    {
        const QByteArrayView bytes = text.bytes();
        if (!text.escaped)
            return text.ascii ? QString::fromLatin1(bytes) : QString::fromUtf8(bytes);
        QString out;
        out.reserve(bytes.size());
        const Byte *s = text.begin;
        while (s < text.end) {
            const Byte *run = s;
            while (s < text.end && *s != '\\')
                ++s;
            if (s > run)
                out += QString::fromUtf8(reinterpret_cast<const char *>(run), s - run);
            if (s >= text.end)
                break;
            const Byte escape = s[1];
            s += 2;
            switch (escape) {
            case 'b':
                out += u'\b';
                break;
            case 'f':
                out += u'\f';
                break;
            case 'n':
                out += u'\n';
                break;
            case 'r':
                out += u'\r';
                break;
            case 't':
                out += u'\t';
                break;
            case 'u': {
                // One code unit per escape, paired or not, as the tree parser keeps them.
                const int unit = hexValue(s[0]) << 12 | hexValue(s[1]) << 8 | hexValue(s[2]) << 4 |
                                 hexValue(s[3]);
                out += QChar(char16_t(unit));
                s += 4;
                break;
            }
            default: // '"', '\\' and '/' stand for themselves
                out += QLatin1Char(char(escape));
            }
        }
        return out;
    }

    bool scanLiteral(const char *word)
    {
        const size_t length = std::strlen(word);
        if (size_t(end - p) < length || std::memcmp(p, word, length) != 0)
            return false;
        p += length;
        return true;
    }

    // A number in JSON's own grammar. The tree parser is laxer ("1.", ".5") and refuses what
    // does not fit a double; both are left to it.
    bool scanNumber(double &value)
    {
        const Byte *start = p;
        if (p < end && *p == '-')
            ++p;
        if (p >= end)
            return false;
        if (*p == '0') {
            ++p;
        } else if (*p >= '1' && *p <= '9') {
            while (p < end && isDigit(*p))
                ++p;
        } else {
            return false;
        }
        if (p < end && *p == '.') {
            ++p;
            if (p >= end || !isDigit(*p))
                return false;
            while (p < end && isDigit(*p))
                ++p;
        }
        if (p < end && (*p == 'e' || *p == 'E')) {
            ++p;
            if (p < end && (*p == '+' || *p == '-'))
                ++p;
            if (p >= end || !isDigit(*p))
                return false;
            while (p < end && isDigit(*p))
                ++p;
        }
        const auto first = reinterpret_cast<const char *>(start);
        const auto last = reinterpret_cast<const char *>(p);
        const auto [stop, status] = std::from_chars(first, last, value);
        return status == std::errc() && stop == last && std::isfinite(value) &&
               (value == 0 || std::fabs(value) >= DBL_MIN);
    }

    bool skipValue(int depth)
    {
        switch (*p) {
        case '"': {
            Text text;
            return scanString(text);
        }
        case '{':
            return depth < maximumDepth &&
                   forEachMember([&](const Text &) { return skipValue(depth + 1); });
        case '[':
            return depth < maximumDepth && forEachElement([&] { return skipValue(depth + 1); });
        case 't':
            return scanLiteral("true");
        case 'f':
            return scanLiteral("false");
        case 'n':
            return scanLiteral("null");
        default: {
            double number;
            return scanNumber(number);
        }
        }
    }

    bool readOptionalString(std::optional<QString> &out, int depth)
    {
        if (*p != '"')
            return skipValue(depth);
        Text text;
        if (!scanString(text))
            return false;
        out = decode(text);
        return true;
    }

    bool readInteger(std::optional<qint64> &out, int depth)
    {
        if (*p != '-' && !isDigit(*p))
            return skipValue(depth);
        const auto *start = p;
        double number;
        if (!scanNumber(number))
            return false;
        // Digits alone that fit 64 bits are taken exactly, past the 53 bits a double holds,
        // as the tree reader takes them.
        qint64 exact = 0;
        const auto first = reinterpret_cast<const char *>(start);
        const auto last = reinterpret_cast<const char *>(p);
        const bool plainDigits = std::all_of(start + (*start == '-' ? 1 : 0), p, isDigit);
        if (const auto [stop, status] = std::from_chars(first, last, exact);
            plainDigits && status == std::errc() && stop == last)
            out = exact;
        else
            out = wholeNumber(number);
        return true;
    }

    // The strings of the array at `p`; `allStrings` turns false at any other element.
    bool readStringList(QStringList &out, bool &allStrings, int depth)
    {
        return forEachElement([&] {
            if (*p != '"') {
                allStrings = false;
                return skipValue(depth + 1);
            }
            Text text;
            if (!scanString(text))
                return false;
            out.append(decode(text));
            return true;
        });
    }

    bool readRows()
    {
        qsizetype index = 0;
        return forEachElement([&] {
            const qsizetype row = index++;
            if (firstDamagedRow >= 0)
                return skipValue(2);
            if (*p != '{') {
                firstDamagedRow = row;
                return skipValue(2);
            }
            return readRow(row);
        });
    }

    bool readRow(qsizetype index)
    {
        QStringList lines;
        bool linesAllStrings = true;
        std::optional<QString> single;
        bool hasColumns = false;
        bool columnsWellFormed = true;
        QList<TabColumnData> columns;
        std::vector<std::optional<QString>> headers;
        bool headersWellFormed = true;
        unsigned seen = 0;
        const bool sure = forEachMember([&](const Text &key) {
            static constexpr const char *names[] = {"columns", "columnHeaders", "lyricLines",
                                                    "lyrics"};
            const int name = nameIndex(key, names);
            if (name < -1 || !firstSighting(seen, name))
                return false;
            switch (name) {
            case 0:
                if (*p != '[')
                    return skipValue(3);
                hasColumns = true;
                return readColumns(columns, columnsWellFormed);
            case 1:
                if (*p != '[')
                    return skipValue(3);
                return readHeaders(headers, headersWellFormed);
            case 2:
                if (*p != '[')
                    return skipValue(3);
                return readStringList(lines, linesAllStrings, 3);
            case 3:
                return readOptionalString(single, 3);
            default:
                return skipValue(3);
            }
        });
        if (!sure)
            return false;
        if (!hasColumns || !columnsWellFormed) {
            firstDamagedRow = index;
            return true;
        }
        if (!linesAllStrings)
            lines.clear();
        adoptSingleLyric(single, lines);
        if (headersWellFormed) {
            const qsizetype named = std::min(qsizetype(headers.size()), columns.size());
            for (qsizetype c = 0; c < named; ++c)
                columns[c].chordName = std::move(headers[size_t(c)]);
        }
        rows.append(TabRowData(std::move(columns), std::move(lines)));
        return true;
    }

    // Each column an array of strings; anything else makes `wellFormed` false and the row
    // damaged.
    bool readColumns(QList<TabColumnData> &columns, bool &wellFormed)
    {
        return forEachElement([&] {
            if (!wellFormed || *p != '[') {
                wellFormed = false;
                return skipValue(4);
            }
            cells.clear();
            const bool sure = forEachElement([&] {
                if (*p != '"') {
                    wellFormed = false;
                    return skipValue(5);
                }
                Text text;
                if (!scanString(text))
                    return false;
                cells.push_back(text.escaped ? ColumnItemType::fromText(decode(text))
                                             : ColumnItemType::fromUtf8(text.bytes()));
                return true;
            });
            if (sure && wellFormed)
                columns.append(TabColumnData(QList<ColumnItemType>(cells.begin(), cells.end())));
            return sure;
        });
    }

    // Strings and nulls; any other element makes `wellFormed` false and the row unnamed.
    bool readHeaders(std::vector<std::optional<QString>> &headers, bool &wellFormed)
    {
        return forEachElement([&] {
            if (*p == 'n') {
                headers.emplace_back();
                return scanLiteral("null");
            }
            if (*p != '"') {
                wellFormed = false;
                return skipValue(4);
            }
            Text text;
            if (!scanString(text))
                return false;
            headers.emplace_back(decode(text));
            return true;
        });
    }

    const Byte *p;
    const Byte *end;
    QList<TabRowData> rows;
    qsizetype firstDamagedRow = -1;
    // One column's items before they become its list, so that the list is allocated once.
    std::vector<ColumnItemType> cells;
};

std::optional<TabData> importFailure(ImportError *error, const QString &message)
{
    if (error)
        error->message = message;
    return std::nullopt;
}

} // namespace

namespace ExchangeReader {

DirectResult readDirect(QByteArrayView bytes, int defaultStringCount)
{
    return DirectParser(bytes).read(defaultStringCount);
}

std::optional<TabData> readTree(const QByteArray &bytes, ImportError *error, int defaultStringCount)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return importFailure(error, parseError.errorString());
    if (!document.isObject())
        return importFailure(error, u"Unable to parse document JSON."_qs);
    const QJsonObject object = document.object();

    const QJsonValue title = object.value(u"title");
    if (!title.isString())
        return importFailure(error, noTitleMessage());
    const QJsonValue rowValues = object.value(u"tabRows");
    if (!rowValues.isArray())
        return importFailure(error, noRowsMessage());

    TabData tab(title.toString(), defaultStringCount);
    const QJsonArray rowArray = rowValues.toArray();
    tab.tabRowDatas.reserve(rowArray.size());
    for (qsizetype r = 0; r < rowArray.size(); ++r) {
        const QJsonValue rowValue = rowArray.at(r);
        if (!rowValue.isObject())
            return importFailure(error, damagedRowMessage(r));
        const QJsonObject row = rowValue.toObject();

        QStringList lines;
        const QJsonValue lineValues = row.value(u"lyricLines");
        if (lineValues.isArray()) {
            for (const QJsonValue &line : lineValues.toArray()) {
                if (!line.isString()) {
                    lines.clear();
                    break;
                }
                lines.append(line.toString());
            }
        }
        const QJsonValue single = row.value(u"lyrics");
        adoptSingleLyric(single.isString() ? std::optional(single.toString()) : std::nullopt,
                         lines);

        const QJsonValue columnValues = row.value(u"columns");
        if (!columnValues.isArray())
            return importFailure(error, damagedRowMessage(r));
        QJsonArray headers;
        const QJsonValue headerValues = row.value(u"columnHeaders");
        if (headerValues.isArray()) {
            headers = headerValues.toArray();
            const bool allOptionalStrings =
                std::all_of(headers.begin(), headers.end(), [](const QJsonValue &header) {
                    return header.isString() || header.isNull();
                });
            if (!allOptionalStrings)
                headers = QJsonArray();
        }

        const QJsonArray columnArray = columnValues.toArray();
        QList<TabColumnData> columns;
        columns.reserve(columnArray.size());
        for (qsizetype c = 0; c < columnArray.size(); ++c) {
            const QJsonValue columnValue = columnArray.at(c);
            if (!columnValue.isArray())
                return importFailure(error, damagedRowMessage(r));
            const QJsonArray texts = columnValue.toArray();
            TabColumnData column;
            column.columnItems.reserve(texts.size());
            for (const QJsonValue &text : texts) {
                if (!text.isString())
                    return importFailure(error, damagedRowMessage(r));
                column.columnItems.append(ColumnItemType::fromText(text.toString()));
            }
            if (c < headers.size() && headers.at(c).isString())
                column.chordName = headers.at(c).toString();
            columns.append(std::move(column));
        }
        tab.tabRowDatas.append(TabRowData(std::move(columns), std::move(lines)));
    }

    TabMembers members;
    const QJsonValue stringNotes = object.value(u"stringNotes");
    if (stringNotes.isArray()) {
        QStringList notes;
        bool allStrings = true;
        for (const QJsonValue &note : stringNotes.toArray()) {
            allStrings = allStrings && note.isString();
            notes.append(note.toString());
        }
        if (allStrings)
            members.stringNotes = std::move(notes);
    }
    members.capoFret = jsonInteger(object.value(u"cFret"));
    const QJsonValue intro = object.value(u"intro");
    if (intro.isString())
        members.intro = intro.toString();
    members.tempo = jsonInteger(object.value(u"tempo"));
    std::move(members).applyTo(tab);
    return tab;
}

} // namespace ExchangeReader

std::optional<TabData> tabDataFromExchangeData(const QByteArray &bytes, ImportError *error,
                                               int defaultStringCount)
{
    DirectResult direct = ExchangeReader::readDirect(bytes, defaultStringCount);
    switch (direct.verdict) {
    case Verdict::read:
        return std::move(direct.tab);
    case Verdict::refused:
        return importFailure(error, direct.message);
    case Verdict::undecided:
        break;
    }
    return ExchangeReader::readTree(bytes, error, defaultStringCount);
}
