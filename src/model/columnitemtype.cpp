#include "columnitemtype.h"

#include <array>
#include <limits>
#include <optional>

namespace {

using Kind = ColumnItemType::Kind;

constexpr std::array<const char16_t *, ColumnItemType::kindCount> markTexts = {
    u"", // note: its text is the fret number
    u"\u2014", u"h", u"p", u"/", u"\\", u"~", u"x", u"b", u"r", u"_", u"s", u"t", u"|", u"+", u"*",
};

// Whole decimal integer in the signed 64-bit range, with an optional leading sign; works on
// UTF-16 code units and UTF-8 bytes alike, since only ASCII can make a number.
template<typename Char>
std::optional<qint64> parseSigned64(const Char *text, qsizetype size)
{
    qsizetype i = 0;
    bool negative = false;
    if (size > 0 && (text[0] == Char('+') || text[0] == Char('-'))) {
        negative = text[0] == Char('-');
        i = 1;
    }
    if (i >= size)
        return std::nullopt;
    // Accumulate negatively so that the minimum value fits.
    qint64 value = 0;
    constexpr qint64 minimum = std::numeric_limits<qint64>::min();
    for (; i < size; ++i) {
        const auto c = text[i];
        if (c < Char('0') || c > Char('9'))
            return std::nullopt;
        const int digit = int(c - Char('0'));
        if (value < (minimum + digit) / 10)
            return std::nullopt;
        value = value * 10 - digit;
    }
    if (!negative) {
        if (value == minimum)
            return std::nullopt;
        value = -value;
    }
    return value;
}

// The mark whose one-character text form is `c`, or none.
constexpr std::optional<Kind> markOf(char16_t c)
{
    switch (c) {
    case u'\u2014':
        return Kind::blank;
    case u'h':
        return Kind::hammer;
    case u'p':
        return Kind::pull;
    case u'/':
        return Kind::slideUp;
    case u'\\':
        return Kind::slideDown;
    case u'~':
        return Kind::vibrato;
    case u'x':
        return Kind::muted;
    case u'b':
        return Kind::bend;
    case u'r':
        return Kind::release;
    case u'_':
        return Kind::hold;
    case u's':
        return Kind::slap;
    case u't':
        return Kind::tap;
    case u'|':
        return Kind::bar;
    case u'+':
        return Kind::plus;
    case u'*':
        return Kind::star;
    default:
        return std::nullopt;
    }
}

// The fifteen texts and the fifteen switch cases must name the same marks.
constexpr bool marksAgree()
{
    for (int k = 1; k < ColumnItemType::kindCount; ++k) {
        const char16_t *text = markTexts[size_t(k)];
        if (text[0] == 0 || text[1] != 0 || markOf(text[0]) != Kind(k))
            return false;
    }
    return true;
}
static_assert(marksAgree());

} // namespace

QStringView ColumnItemType::markText(Kind kind)
{
    return QStringView(markTexts[static_cast<int>(kind)]);
}

QString ColumnItemType::text() const
{
    // Files and exports ask for the text of every cell: the common ones are made once and
    // shared rather than allocated each time.
    static const std::array<QString, kindCount> marks = [] {
        std::array<QString, kindCount> texts;
        for (int k = 1; k < kindCount; ++k)
            texts[k] = markText(static_cast<Kind>(k)).toString();
        return texts;
    }();
    static const std::array<QString, 100> frets = [] {
        std::array<QString, 100> texts;
        for (int fret = 0; fret < 100; ++fret)
            texts[fret] = QString::number(fret);
        return texts;
    }();
    if (itemKind != Kind::note)
        return marks[static_cast<int>(itemKind)];
    if (fretNum >= 0 && fretNum < qint64(frets.size()))
        return frets[size_t(fretNum)];
    return QString::number(fretNum);
}

ColumnItemType ColumnItemType::fromText(QStringView text)
{
    if (text.isEmpty())
        return blank();
    if (text.size() == 1) {
        if (const auto mark = markOf(text.front().unicode()))
            return ColumnItemType(*mark);
    }
    if (const auto fret = parseSigned64(text.utf16(), text.size()))
        return note(*fret);
    return blank();
}

ColumnItemType ColumnItemType::fromUtf8(QByteArrayView text)
{
    // A mark is one ASCII byte or the three bytes of the em dash; a number is all ASCII; any
    // other text is a blank.
    switch (text.size()) {
    case 0:
        return blank();
    case 1:
        if (const auto mark = markOf(char16_t(static_cast<unsigned char>(text.front()))))
            return ColumnItemType(*mark);
        break;
    case 3:
        if (text == QByteArrayView("\xe2\x80\x94"))
            return blank();
        break;
    default:
        break;
    }
    if (const auto fret = parseSigned64(text.data(), text.size()))
        return note(*fret);
    return blank();
}
