#include "songsequence.h"

#include <cmath>
#include <limits>
#include <numeric>

namespace {

// The highlight holds whole numbers as floating point; anything else maps to no column.
int toIndex(double value)
{
    if (!std::isfinite(value) || value < std::numeric_limits<int>::min() ||
        value > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::min();
    return int(std::lround(value));
}

bool isBarColumn(const TabColumnData &column)
{
    return !column.columnItems.isEmpty() && column.columnItems.first().isBar();
}

qsizetype findEvent(const QList<SongSequenceEvent> &events, int row, int column)
{
    for (qsizetype i = 0; i < events.size(); ++i) {
        if (events[i].trIndex == row && events[i].colIndex == column)
            return i;
    }
    return -1;
}

// Least common multiple of the lengths, or nothing if it does not fit in 64 bits.
std::optional<qint64> leastCommonMultiple(const QList<int> &lengths)
{
    qint64 multiple = lengths.first();
    for (const int length : lengths) {
        const qint64 divisor = std::gcd(multiple, qint64(length));
        if (divisor == 0)
            return std::nullopt;
        // Divided first, so only a multiple that is itself too large fails.
        qint64 product = 0;
        if (__builtin_mul_overflow(multiple / divisor, qint64(length), &product))
            return std::nullopt;
        multiple = std::abs(product);
    }
    return multiple;
}

} // namespace

SongSequence::SongSequence(TabData tabData, std::optional<QPointF> lastHighlightIndex)
    : tabData(std::move(tabData)), lastHighlightIndex(lastHighlightIndex)
{
}

QString SongSequence::barKey(int row, int column)
{
    return QString::number(row) + u',' + QString::number(column);
}

const QList<SongSequenceEvent> &SongSequence::activeSongArray(bool playbackByMeasure) const
{
    return playbackByMeasure && songArrayEvenMeasuresSuccessful ? songArrayWithEvenMeasures
                                                                : songArray;
}

void SongSequence::buildSongSequence(bool playbackByMeasure)
{
    QList<int> measureLengths;
    int measureLength = 0;
    for (qsizetype row = 0; row < tabData.tabRowDatas.size(); ++row) {
        const QList<TabColumnData> &columns = tabData.tabRowDatas[row].colDatas;
        for (qsizetype col = 0; col < columns.size(); ++col) {
            if (isBarColumn(columns[col])) {
                if (measureLength > 0)
                    measureLengths.append(measureLength);
                barMapping.insert(barKey(int(row), int(col)), int(songArray.size()));
                measureLength = 0;
                continue;
            }
            // A blank column is a rest of one tick, but it still names its column.
            ++measureLength;
            songArray.append({int(row), int(col), columns[col].columnItems});
        }
        // A measure runs on over the end of a row until the next bar.
    }
    if (measureLength > 0)
        measureLengths.append(measureLength);

    evenMeasures(measureLengths);
    syncSongIndex(playbackByMeasure);
}

void SongSequence::evenMeasures(const QList<int> &measureLengths)
{
    if (measureLengths.size() < 2)
        return;

    const std::optional<qint64> multiple = leastCommonMultiple(measureLengths);
    if (!multiple)
        return;
    const qint64 length = *multiple;
    evenMeasureLength = length;

    // Small measures are always accepted; from 100 ticks a measure the whole list is capped.
    const qint64 count = measureLengths.size();
    if (length >= 100 && (length > 1999 || length * count > 1999))
        return;

    songArrayEvenMeasuresSuccessful = true;
    songArrayWithEvenMeasures.reserve(songArrayWithEvenMeasures.size() + length * count);
    qsizetype position = 0;
    for (const int measure : measureLengths) {
        if (measure > length || length % measure != 0) {
            songArrayEvenMeasuresSuccessful = false;
            return;
        }
        const qint64 spread = length / measure;
        for (qsizetype p = position; p < position + measure; ++p) {
            // Rests go before the column, so a measure's last column sits on its last tick.
            for (qint64 k = 1; k < spread; ++k)
                songArrayWithEvenMeasures.append(SongSequenceEvent::rest());
            songArrayWithEvenMeasures.append(p < songArray.size() ? songArray[p]
                                                                  : SongSequenceEvent::rest());
        }
        position += measure;
    }
}

void SongSequence::syncSongIndex(bool playbackByMeasure)
{
    if (!lastHighlightIndex) {
        lastSongIndex.reset();
        return;
    }
    const int row = toIndex(lastHighlightIndex->y());
    const int col = toIndex(lastHighlightIndex->x());
    const QList<SongSequenceEvent> &events = activeSongArray(playbackByMeasure);

    const qsizetype found = findEvent(events, row, std::max(col, 0));
    if (found >= 0) {
        // Before the first column, the next tick must play that column.
        lastSongIndex = int(col >= 0 ? found : found - 1);
        return;
    }

    // Not an event: the highlight stands on a bar column.
    const auto bar = barMapping.constFind(barKey(row, col));
    if (bar == barMapping.cend())
        return;
    const int next = *bar;
    if (next >= songArray.size())
        return;
    if (next == 0) {
        lastSongIndex = -1;
        return;
    }
    if (&events == &songArray) {
        lastSongIndex = next - 1;
        return;
    }
    const SongSequenceEvent &previous = songArray[next - 1];
    const qsizetype evened = findEvent(songArrayWithEvenMeasures, previous.trIndex.value_or(-1),
                                       previous.colIndex.value_or(-1));
    if (evened >= 0)
        lastSongIndex = int(evened);
}

std::optional<double> SongSequence::measureTickLength(qint64 playbackSpeed,
                                                      qint64 evenMeasureLength,
                                                      qint64 beatsPerMeasure)
{
    if (beatsPerMeasure <= 0 || evenMeasureLength < beatsPerMeasure)
        return std::nullopt;
    const double beat = 1.0 / (double(playbackSpeed) / 60.0);
    // Whole ticks a beat: 6 ticks over 4 beats is one tick a beat, not one and a half.
    const qint64 ticksPerBeat = evenMeasureLength / beatsPerMeasure;
    return beat / double(ticksPerBeat);
}

double SongSequence::tickLength(const ViewModePlaybackOptions &options, bool evenMeasuresSuccessful,
                                qint64 evenMeasureLength)
{
    if (options.playbackByMeasure && evenMeasuresSuccessful) {
        if (const auto tick = measureTickLength(options.playbackSpeed, evenMeasureLength,
                                                options.playbackBeatsPerMeasure))
            return *tick;
    }
    const double beat = 1.0 / (double(options.playbackSpeed) / 60.0);
    return options.playbackColumnsInBeat >= 2 ? beat / double(options.playbackColumnsInBeat) : beat;
}

double SongSequence::tickLength(const ViewModePlaybackOptions &options) const
{
    return tickLength(options, songArrayEvenMeasuresSuccessful, evenMeasureLength);
}
