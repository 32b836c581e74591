#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// How a tab is shown in view mode. Held in memory for the running process only.
struct ViewModeDisplayOptions {
    bool showLyrics = true;
    bool lyricsBelow = false;
    bool showColumnHeaders = true;
    bool showTabContent = true;
    bool twoColumns = false;

    friend bool operator==(const ViewModeDisplayOptions &,
                           const ViewModeDisplayOptions &) = default;
};

// How a tab plays. Travels in the tab file as JSON inside a string.
struct ViewModePlaybackOptions {
    qint64 playbackSpeed = 80;
    qint64 playbackColumnsInBeat = 1;
    bool playbackByMeasure = false;
    qint64 playbackBeatsPerMeasure = 4;
    bool loopPlayback = false;

    friend bool operator==(const ViewModePlaybackOptions &,
                           const ViewModePlaybackOptions &) = default;

    QByteArray toJson() const;
    // All five keys are required with the right types; anything else fails the whole record.
    static std::optional<ViewModePlaybackOptions> fromJson(const QByteArray &json,
                                                           QString *error = nullptr);
};

struct ViewModeOptions {
    ViewModeDisplayOptions displayOptions;
    ViewModePlaybackOptions playbackOptions;

    friend bool operator==(const ViewModeOptions &, const ViewModeOptions &) = default;
};
