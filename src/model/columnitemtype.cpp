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

// Whole decimal integer in the signed 64-bit range, with an optional leading sign.
std::optional<qint64> parseSigned64(QStringView text)
{
    qsizetype i = 0;
    bool negative = false;
    if (text.startsWith(u'+') || text.startsWith(u'-')) {
        negative = text.front() == u'-';
        i = 1;
    }
    if (i >= text.size())
        return std::nullopt;
    // Accumulate negatively so that the minimum value fits.
    qint64 value = 0;
    constexpr qint64 minimum = std::numeric_limits<qint64>::min();
    for (; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9')
            return std::nullopt;
        const int digit = c - u'0';
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
    if (text.size() == 1) {
        for (int k = 1; k < kindCount; ++k) {
            if (text == markText(static_cast<Kind>(k)))
                return ColumnItemType(static_cast<Kind>(k));
        }
    }
    if (text.isEmpty())
        return blank();
    if (const auto fret = parseSigned64(text))
        return note(*fret);
    return blank();
}
