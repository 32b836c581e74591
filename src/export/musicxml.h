#pragma once

#include "model/tabdata.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Tabs to and from MusicXML 4.0, the exchange form of notation programs: one part on a TAB
// staff, a note's string and fret under <technical>, bars as measures, chord names as
// <harmony>, lyric lines as <lyric>, durations as playback times the columns.
namespace MusicXml {

// "musicxml" for the plain score, "mxl" for the compressed one.
QString fileExtension(bool compressed);

// The score as partwise MusicXML text.
QByteArray scoreXml(const TabData &tab);
// The export's bytes: the score, or the score in a compressed ".mxl" archive. Nothing only if
// the archive could not be made.
std::optional<QByteArray> write(const TabData &tab, bool compressed);

struct ReadResult {
    std::optional<TabData> tab;
    QString message;
};
// A score, plain or compressed (told apart by its first bytes): the first part whose notes
// carry strings and frets, as a tab. Bad input gives a message and no tab.
ReadResult read(const QByteArray &bytes);

} // namespace MusicXml
