#pragma once

#include "model/tabdata.h"

#include <QList>
#include <QString>

#include <optional>

// One string line of a plain-text tab: its label ("e", "D#", "3" or none) and what follows
// the label's separator, up to the closing bar line.
struct AsciiTabLine {
    QString label;
    QString body;
    // Where the body starts in the source line, so the line above it can be lined up.
    int bodyOffset = 0;

    // Nothing when the line is no string line.
    static std::optional<AsciiTabLine> parse(const QString &line);
};

// Chord names over a block, each at its position counted from the block's body.
struct AsciiChordLine {
    QList<std::pair<int, QString>> names;

    // Nothing unless every word on the line reads as a chord name.
    static std::optional<AsciiChordLine> parse(const QString &line, int bodyOffset);
    static bool isChordName(const QString &word);
};

namespace AsciiTabBlock {

// The columns of one block, items highest string first. The source's spacing sets the column
// count: the widest step that every note position shares is one column.
QList<TabColumnData> columns(const QList<AsciiTabLine> &lines,
                             const std::optional<AsciiChordLine> &chords);

} // namespace AsciiTabBlock
