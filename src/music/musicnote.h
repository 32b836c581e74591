#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <optional>

// The twelve pitch classes, sharps only, in the fixed order from A that note arithmetic uses.
enum class MusicNote : quint8 { A, Asharp, B, C, Csharp, D, Dsharp, E, F, Fsharp, G, Gsharp };

namespace MusicNotes {

inline constexpr std::array<MusicNote, 12> allCases = {
    MusicNote::A,      MusicNote::Asharp, MusicNote::B, MusicNote::C,
    MusicNote::Csharp, MusicNote::D,      MusicNote::Dsharp, MusicNote::E,
    MusicNote::F,      MusicNote::Fsharp, MusicNote::G,      MusicNote::Gsharp,
};

// Exact match only: "a", "Bb" and "E " are no notes.
std::optional<MusicNote> fromText(QStringView text);
QString text(MusicNote note);
inline int position(MusicNote note)
{
    return int(note);
}
// The twelve text forms from "A" to "G#".
const QStringList &allTexts();

} // namespace MusicNotes
