#include "musicnote.h"

namespace MusicNotes {

const QStringList &allTexts()
{
    static const QStringList texts = {u"A"_qs,  u"A#"_qs, u"B"_qs,  u"C"_qs, u"C#"_qs, u"D"_qs,
                                      u"D#"_qs, u"E"_qs,  u"F"_qs,  u"F#"_qs, u"G"_qs, u"G#"_qs};
    return texts;
}

std::optional<MusicNote> fromText(QStringView text)
{
    const qsizetype index = allTexts().indexOf(text);
    if (index < 0)
        return std::nullopt;
    return allCases[size_t(index)];
}

QString text(MusicNote note)
{
    return allTexts()[position(note)];
}

} // namespace MusicNotes
