#pragma once

// Design sizes of a full six-string row, in points. Every drawn size is a share of these, so
// one set of rules serves the editor, a reduced row and a printed page.
struct TabRowValues {
    static constexpr double totalHeight = 279.0;
    static constexpr double lyricsEditHeight = 54.0;
    static constexpr double lyricsViewHeight = 48.0;
    static constexpr double chordEditHeight = 25.0;
    static constexpr double chordViewHeight = 19.0;
    static constexpr double chordOverlap = 5.0;
    static constexpr double stringHeight = 20.0;
};
