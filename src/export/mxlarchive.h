#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The compressed MusicXML container: a zip with a "mimetype" entry, META-INF/container.xml
// naming the score, and the score itself.
namespace MxlArchive {

// Scores larger than this unpacked are refused, so a small archive can't fill the memory.
inline constexpr qint64 maximumScoreBytes = 64 << 20;

bool looksLikeArchive(const QByteArray &bytes);
std::optional<QByteArray> pack(const QByteArray &score);
// The score the container names (or the first score-like entry), or nothing with a message.
std::optional<QByteArray> unpack(const QByteArray &archive, QString *message);

} // namespace MxlArchive
