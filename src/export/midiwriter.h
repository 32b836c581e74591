#pragma once

#include "model/tabdata.h"

#include <QByteArray>
#include <QString>

#include <optional>

// A tab as a standard MIDI file: one track at the tab's tempo, each column's notes sounding at
// the pitch that tuning, capo and fret give, for as long as playback holds the column.
namespace MidiWriter {

// "mid".
QString fileExtension();
// The file's bytes; always made (optional for callers that treat other writers alike).
std::optional<QByteArray> write(const TabData &tab);

} // namespace MidiWriter
