#pragma once

#include "model/tabdata.h"

#include <QString>

#include <optional>

// What a plain-text tab read gives: the tab, or a message that says why there is none.
struct AsciiTabResult {
    std::optional<TabData> tab;
    QString message;
    // Whether the text named its title, tuning or capo; a paste takes only the rows.
    bool foundTitle = false;
    bool foundTuning = false;
};

// Reads tabs as they are written in plain text on websites and in forum posts, and as our own
// text export writes them: blocks of 4 to 8 string lines, found by their labels or by their
// dashes, chord names on the line above a block, lyrics in the text between blocks.
class AsciiTabReader {
public:
    // The message when the text holds no block of string lines.
    static QString noTabMessage();

    // Never fails on any text: without a tab the result carries noTabMessage().
    static AsciiTabResult read(const QString &text);
};
