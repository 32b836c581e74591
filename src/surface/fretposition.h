#pragma once

// A fretted place: string 1 is the top line of the tab, fret 0 the open string.
struct FretPosition {
    int stringNum = 0;
    int fretNum = 0;

    friend bool operator==(const FretPosition &, const FretPosition &) = default;
};
