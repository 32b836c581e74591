#pragma once

#include <QString>

struct ConvertOptions {
    bool notesOnTab = false;
    bool showLyrics = true;
    bool showColumnHeaders = true;
    bool showTabContent = true;
    bool lyricsBelow = false;
    bool twoColumns = false;
};

// Converts between ".lgrdi", ".lgrd", ".txt", ".musicxml" and ".mxl", and to ".mid" and
// ".pdf", by extension. PDF needs a QGuiApplication. Gives an empty string on success, else one
// line that names the file and what is wrong.
QString convertTabFile(const QString &inputPath, const QString &outputPath,
                       const ConvertOptions &options);
