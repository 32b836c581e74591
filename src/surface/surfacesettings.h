#pragma once

// What the surface needs of the user's preferences, handed down by the editor so that the
// surface reads no global and a test sets exactly what it means.
struct SurfaceSettings {
    // Chord-name headers over the rows are hidden.
    bool hideColHeaders = false;
    // Notes read as note names where the tuning allows.
    bool notesOnTab = false;
};
