#pragma once

#include <QString>

#include <optional>

struct PlayOptions {
    // The first row to play, counting from 0.
    int row = 0;
    // Beats a minute in place of the tab's own.
    std::optional<qint64> tempo;
};

// Plays a ".lgrdi" or ".lgrd" tab through the default output, column by column at the tab's
// playback tick, and returns once the last note has rung out. Gives an empty string on
// success, else one line that names the file and what is wrong.
QString playTabFile(const QString &path, const PlayOptions &options);
