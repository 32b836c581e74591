#include "wellformedtext.h"

namespace {

// Whether a whole surrogate pair starts at `i`.
bool isPairAt(QStringView text, qsizetype i)
{
    return text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
}

} // namespace

bool hasUnpairedSurrogate(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text[i].isSurrogate())
            continue;
        if (!isPairAt(text, i))
            return true;
        ++i;
    }
    return false;
}

QString withUnpairedSurrogatesReplaced(QStringView text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isPairAt(text, i)) {
            out.append(text[i]);
            out.append(text[++i]);
        } else {
            out.append(text[i].isSurrogate() ? QChar(QChar::ReplacementCharacter) : text[i]);
        }
    }
    return out;
}
