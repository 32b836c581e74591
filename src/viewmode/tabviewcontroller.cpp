#include "tabviewcontroller.h"

#include <algorithm>
#include <cmath>

TabViewController::TabViewController(TabData data, std::optional<QPointF> startPoint,
                                     ViewModeTimers *externalTimers, QObject *parent)
    : QObject(parent), tabData(std::move(data)), sequence(tabData, startPoint),
      timers(externalTimers)
{
    if (!timers) {
        ownTimers = std::make_unique<QtViewModeTimers>();
        timers = ownTimers.get();
    }
    rows = std::make_unique<ViewModeLayout>(&tabData, SurfaceSettings{});
}

TabViewController::~TabViewController()
{
    *alive = false;
    stopTimer(playTimer);
    stopTimer(displayDelayTimer);
    stopTimer(countInTimer);
}

void TabViewController::stopTimer(std::optional<ViewModeTimers::Id> &id)
{
    if (id)
        timers->stop(*id);
    id.reset();
}

void TabViewController::load(const std::optional<ViewModeDisplayOptions> &storedDisplay,
                             SurfaceSettings settings, const ViewModeExtraOptions &extra)
{
    rows = std::make_unique<ViewModeLayout>(&tabData, settings);
    if (storedDisplay)
        viewConfigState.displayOptions = *storedDisplay;
    if (tabData.playbackOptions) {
        viewConfigState.playbackOptions = *tabData.playbackOptions;
    } else {
        viewConfigState.playbackOptions = ViewModePlaybackOptions();
        viewConfigState.playbackOptions.playbackSpeed = tabData.tempo;
    }
    extraOptions = extra;
    rows->display = viewConfigState.displayOptions;
    loaded = true;
    nextTabRowIndexToDisplay = 0;
    startDisplayRows();
    sequence.buildSongSequence(viewConfigState.playbackOptions.playbackByMeasure);
    Q_EMIT optionsChanged();
}

const QList<SongSequenceEvent> &TabViewController::activeSongArray() const
{
    return sequence.activeSongArray(viewConfigState.playbackOptions.playbackByMeasure);
}

double TabViewController::tickLength() const
{
    return sequence.tickLength(viewConfigState.playbackOptions);
}

// Playback

void TabViewController::setPlaying(bool playing)
{
    stopTimer(playTimer);
    stopTimer(countInTimer);
    countInLeft = 0;
    const bool was = isPlaying;
    isPlaying = playing;
    if (playing) {
        ticksSincePlay = 0;
        const qint64 beats = std::max<qint64>(1, viewConfigState.playbackOptions.playbackBeatsPerMeasure);
        if (extraOptions.countIn && clickPlayer && !was) {
            // One measure of clicks at the beat, then the first column on the next beat.
            const double speed = double(viewConfigState.playbackOptions.playbackSpeed);
            const double beat = speed > 0 ? 60.0 / speed : 1.0;
            countInLeft = int(beats) - 1;
            clickPlayer(true);
            countInTimer = timers->start(beat, true, [this] {
                if (countInLeft > 0) {
                    --countInLeft;
                    clickPlayer(false);
                    return;
                }
                stopTimer(countInTimer);
                startTickTimer();
            });
        } else {
            startTickTimer();
        }
    } else {
        wasImplicitlyPaused = false;
    }
    if (was != isPlaying || playing)
        Q_EMIT playingChanged();
}

void TabViewController::startTickTimer()
{
    playTimer = timers->start(tickLength(), true, [this] { playNextColumn(); });
    // The first column sounds the moment play is pressed, without waiting a tick.
    playNextColumn();
}

int TabViewController::ticksPerBeat() const
{
    const ViewModePlaybackOptions &o = viewConfigState.playbackOptions;
    if (o.playbackByMeasure && sequence.songArrayEvenMeasuresSuccessful &&
        o.playbackBeatsPerMeasure > 0)
        return int(std::max<qint64>(1, sequence.evenMeasureLength / o.playbackBeatsPerMeasure));
    return int(std::max<qint64>(1, o.playbackColumnsInBeat));
}

void TabViewController::clickIfOnBeat()
{
    if (!extraOptions.metronome || !clickPlayer)
        return;
    const qint64 perBeat = ticksPerBeat();
    const qint64 beats = std::max<qint64>(1, viewConfigState.playbackOptions.playbackBeatsPerMeasure);
    if (ticksSincePlay % perBeat == 0)
        clickPlayer(ticksSincePlay % (perBeat * beats) == 0);
}

void TabViewController::playNextColumn()
{
    const QList<SongSequenceEvent> &events = activeSongArray();
    if (events.isEmpty()) {
        // Nothing to play: a tab of bars only, or none at all.
        if (isPlaying)
            setPlaying(false);
        return;
    }
    const bool byMeasure = viewConfigState.playbackOptions.playbackByMeasure;
    if (!sequence.lastSongIndex)
        sequence.syncSongIndex(byMeasure);
    int next = sequence.lastSongIndex.value_or(-1) + 1;
    if (next < 0)
        next = 0;
    if (next >= events.size()) {
        if (viewConfigState.playbackOptions.loopPlayback) {
            next = 0;
        } else {
            next = int(events.size()) - 1;
            setPlaying(false);
        }
    }
    sequence.lastSongIndex = next;
    const SongSequenceEvent &event = events[next];
    if (!event.isRest())
        sequence.lastHighlightIndex = QPointF(*event.colIndex, *event.trIndex);
    showHighlight();
    scrollToHighlight();
    if (isPlaying) {
        clickIfOnBeat();
        ++ticksSincePlay;
    }
    if (!event.isRest() && isPlaying)
        playColumn(*event.trIndex, *event.colIndex, false);
}

void TabViewController::playColumn(int row, int col, bool silent)
{
    if (row < 0 || col < 0 || row >= tabData.tabRowDatas.size() ||
        col >= tabData.tabRowDatas[row].colDatas.size())
        return;
    if (columnPlayer)
        columnPlayer(tabData.tabRowDatas[row].colDatas[col].columnItems, tabData.stringNotes,
                     silent);
    Q_EMIT columnPlayed(row, col);
}

// Manual moves

void TabViewController::afterManualMove()
{
    showHighlight();
    scrollToHighlight();
    sequence.syncSongIndex(viewConfigState.playbackOptions.playbackByMeasure);
}

bool TabViewController::highlightFirstColumnIfNone()
{
    if (sequence.lastHighlightIndex)
        return false;
    // A move with nothing highlighted starts at the tab's first column.
    sequence.lastHighlightIndex = QPointF(0, 0);
    afterManualMove();
    return true;
}

void TabViewController::moveHighlightColumn(int delta, bool allowBeforeFirst)
{
    const int rowCount = int(tabData.tabRowDatas.size());
    if (highlightFirstColumnIfNone())
        return;
    auto &highlight = sequence.lastHighlightIndex;
    const int row = int(highlight->y());
    const int col = int(highlight->x());
    if (row < 0 || row >= rowCount) {
        setPlaying(false);
        return;
    }
    int newCol = col + delta;
    int newRow = row;
    if (newCol >= tabData.tabRowDatas[row].colDatas.size()) {
        newCol = 0;
        newRow = viewConfigState.playbackOptions.loopPlayback && row == rowCount - 1 ? 0 : row + 1;
    } else if (newCol < (allowBeforeFirst ? -1 : 0)) {
        newRow = row - 1;
        if (row >= 1)
            newCol = int(tabData.tabRowDatas[row - 1].colDatas.size()) - 1;
        if (newRow < 0) {
            setPlaying(false);
            return;
        }
    }
    if (newRow >= rowCount) {
        setPlaying(false);
        return;
    }
    highlight = QPointF(newCol, newRow);
    afterManualMove();
}

void TabViewController::moveHighlightRow(int delta)
{
    const int rowCount = int(tabData.tabRowDatas.size());
    if (highlightFirstColumnIfNone())
        return;
    auto &highlight = sequence.lastHighlightIndex;
    const int row = int(highlight->y());
    const int col = int(highlight->x());
    if (row >= rowCount || row + delta < 0 || row + delta >= rowCount) {
        setPlaying(false);
        return;
    }
    const int last = int(tabData.tabRowDatas[row + delta].colDatas.size()) - 1;
    highlight = QPointF(std::min(col, last), row + delta);
    afterManualMove();
}

void TabViewController::handleTap(double pageX, double pageY)
{
    if (!viewConfigState.displayOptions.showTabContent)
        return;
    const QPointF point(pageX - stackX(), pageY - stackTop());
    if (const auto hit = rows->hitTest(point)) {
        sequence.lastHighlightIndex = QPointF(hit->position);
        highlightFrame = hit->rect;
        Q_EMIT highlightChanged();
    }
    sequence.syncSongIndex(viewConfigState.playbackOptions.playbackByMeasure);
}

bool TabViewController::pressKey(int key, const QString &text)
{
    // Qt::Key values, which QtCore knows.
    if (text == u" " || key == Qt::Key_Space) {
        togglePlaying();
    } else if (key == Qt::Key_Left) {
        moveHighlightColumn(-1, true);
    } else if (key == Qt::Key_Right) {
        moveHighlightColumn(+1, true);
    } else if (key == Qt::Key_Up) {
        moveHighlightRow(-1);
    } else if (key == Qt::Key_Down) {
        moveHighlightRow(+1);
    } else {
        return false;
    }
    return true;
}

// The options

void TabViewController::viewOptionsOpening()
{
    if (isPlaying) {
        // setPlaying(false) clears the flag, so it is set after.
        setPlaying(false);
        wasImplicitlyPaused = true;
    }
}

void TabViewController::applyViewOptions(const ViewModeOptions &options,
                                         const ViewModeExtraOptions &extra)
{
    const ViewModeOptions old = viewConfigState;
    if (tabPath && storeDisplayOptions)
        storeDisplayOptions(*tabPath, options.displayOptions);
    if (options.playbackOptions != old.playbackOptions) {
        if (options.playbackOptions.playbackByMeasure && !sequence.songArrayEvenMeasuresSuccessful) {
            if (showMessage) {
                showMessage(u"Unable to turn on Use Measures for Playback. This likely means that "
                            u"the size of the measures are too varied.\n\nThe guide's view mode "
                            u"section says more, or write to support@lutegrid.org.\n\nThis is a "
                            u"new feature so may have some bugs to work out! Thanks!"_qs);
            }
        } else {
            tabData.playbackOptions = options.playbackOptions;
            if (savePlaybackOptions)
                savePlaybackOptions(options.playbackOptions);
        }
    }
    if (!(old.displayOptions.showTabContent && options.displayOptions.showTabContent)) {
        highlightFrame.reset();
        sequence.lastHighlightIndex.reset();
        setPlaying(false);
        Q_EMIT highlightChanged();
    }
    viewConfigState = options;
    extraOptions = extra;
    Q_EMIT optionsChanged();
    if (options.displayOptions != old.displayOptions)
        rebuildRows();
    if (wasImplicitlyPaused) {
        wasImplicitlyPaused = false;
        setPlaying(true);
    }
}

void TabViewController::viewWillDisappear()
{
    setPlaying(false);
    if (const auto highlight = sequence.lastHighlightIndex)
        Q_EMIT handBack(int(highlight->y()), int(highlight->x()));
}

// Property helpers

QRectF TabViewController::highlightRect() const
{
    return highlightFrame ? highlightFrame->translated(stackX(), stackTop()) : QRectF();
}

int TabViewController::highlightRow() const
{
    return sequence.lastHighlightIndex ? int(sequence.lastHighlightIndex->y()) : -1;
}

int TabViewController::highlightColumn() const
{
    return sequence.lastHighlightIndex ? int(sequence.lastHighlightIndex->x()) : -1;
}

QVariantMap TabViewController::optionsMap() const
{
    const ViewModeDisplayOptions &d = viewConfigState.displayOptions;
    const ViewModePlaybackOptions &p = viewConfigState.playbackOptions;
    return {{u"showLyrics"_qs, d.showLyrics},
            {u"lyricsBelow"_qs, d.lyricsBelow},
            {u"showColumnHeaders"_qs, d.showColumnHeaders},
            {u"showTabContent"_qs, d.showTabContent},
            {u"twoColumns"_qs, d.twoColumns},
            {u"playbackSpeed"_qs, p.playbackSpeed},
            {u"playbackColumnsInBeat"_qs, p.playbackColumnsInBeat},
            {u"playbackByMeasure"_qs, p.playbackByMeasure},
            {u"playbackBeatsPerMeasure"_qs, p.playbackBeatsPerMeasure},
            {u"loopPlayback"_qs, p.loopPlayback},
            {u"countIn"_qs, extraOptions.countIn},
            {u"metronome"_qs, extraOptions.metronome},
            {u"tabTempo"_qs, tabData.tempo}};
}
