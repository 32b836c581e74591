#include "viewmodedialogviewcontroller.h"

#include <cmath>

ViewModeDialogViewController::ViewModeDialogViewController(qint64 tempo,
                                                           const ViewModeOptions &initial,
                                                           const ViewModeExtraOptions &extra,
                                                           QObject *parent)
    : QObject(parent), tabTempo(tempo), initialConfig(initial)
{
    const ViewModeDisplayOptions &d = initial.displayOptions;
    const ViewModePlaybackOptions &p = initial.playbackOptions;
    showLyrics = d.showLyrics;
    lyricsBelow = d.lyricsBelow;
    showColumnHeaders = d.showColumnHeaders;
    showTabContent = d.showTabContent;
    twoColumns = d.twoColumns;
    useMeasuresForPlayback = p.playbackByMeasure;
    loopPlayback = p.loopPlayback;
    countIn = extra.countIn;
    metronome = extra.metronome;
    colsPerBeat = int(p.playbackColumnsInBeat);
    beatsPerMeasure = int(p.playbackBeatsPerMeasure);
    playbackSpeedValue = int(p.playbackSpeed);
    slider = (double(p.playbackSpeed) - minPlaybackVal) / (maxPlaybackVal - minPlaybackVal);
}

void ViewModeDialogViewController::setSliderValue(double value)
{
    slider = value;
    playbackSpeedValue =
        int(std::lround(minPlaybackVal + (maxPlaybackVal - minPlaybackVal) * value));
    Q_EMIT changed();
}

void ViewModeDialogViewController::resetPlaybackSpeed()
{
    playbackSpeedValue = int(tabTempo);
    slider = (double(tabTempo) - minPlaybackVal) / (maxPlaybackVal - minPlaybackVal);
    Q_EMIT changed();
}

QString ViewModeDialogViewController::defaultBpmText() const
{
    return u"default bpm of this tab is "_qs + QString::number(tabTempo);
}

void ViewModeDialogViewController::setVisibility(bool &field, bool on)
{
    field = on;
    errorShown = false;
    doneShown = true;
    Q_EMIT changed();
}

bool ViewModeDialogViewController::done()
{
    // Something must remain on the page.
    if (!showLyrics && !showColumnHeaders && !showTabContent) {
        errorShown = true;
        doneShown = false;
        Q_EMIT changed();
        return false;
    }
    Q_EMIT finished();
    return true;
}

ViewModeOptions ViewModeDialogViewController::options() const
{
    ViewModeOptions o;
    o.displayOptions = {showLyrics, lyricsBelow, showColumnHeaders, showTabContent, twoColumns};
    o.playbackOptions = {playbackSpeedValue, colsPerBeat, useMeasuresForPlayback, beatsPerMeasure,
                         loopPlayback};
    return o;
}
