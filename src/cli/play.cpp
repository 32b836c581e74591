#include "play.h"
#include "tabinput.h"

#include "model/tabfileformat.h"
#include "sound/sampler.h"
#include "sound/soundmanager.h"
#include "sound/soundoutput.h"
#include "viewmode/songsequence.h"

#include <QFileInfo>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>

namespace {

std::optional<TabData> readTab(const QString &path, QString *error)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix != documentExtension && suffix != exchangeExtension) {
        *error = path + u": not a tab file (.lgrdi or .lgrd)";
        return std::nullopt;
    }
    const std::optional<QByteArray> bytes = readTabInput(path, error);
    if (!bytes)
        return std::nullopt;
    if (suffix == documentExtension) {
        QString why;
        auto tab = tabDataFromDocumentData(*bytes, &why);
        if (!tab)
            *error = path + u": unreadable tab document (" + why + u")";
        return tab;
    }
    ImportError why;
    auto tab = tabDataFromExchangeData(*bytes, &why);
    if (!tab)
        *error = path + u": " + why.message;
    return tab;
}

} // namespace

QString playTabFile(const QString &path, const PlayOptions &options)
{
    QString error;
    const std::optional<TabData> tab = readTab(path, &error);
    if (!tab)
        return error;
    if (options.row < 0 || options.row >= tab->tabRowDatas.size()) {
        return path + u": no row " + QString::number(options.row) + u" (the tab has " +
               QString::number(tab->tabRowDatas.size()) + u" rows, counted from 0)";
    }

    // As view mode reads them: the stored options whole, or the tab's tempo and the defaults.
    ViewModePlaybackOptions playback;
    playback.playbackSpeed = tab->tempo;
    if (tab->playbackOptions)
        playback = *tab->playbackOptions;
    if (options.tempo)
        playback.playbackSpeed = *options.tempo;
    if (playback.playbackSpeed <= 0)
        return path + u": the tempo must be above 0 beats a minute";

    SongSequence sequence(*tab);
    sequence.buildSongSequence(playback.playbackByMeasure);
    const QList<SongSequenceEvent> &events = sequence.activeSongArray(playback.playbackByMeasure);
    const double tick = sequence.tickLength(playback);
    if (!std::isfinite(tick) || tick <= 0.0)
        return path + u": the playback options give no usable tick";

    qsizetype first = 0;
    while (first < events.size() &&
           (!events[first].trIndex || *events[first].trIndex < options.row))
        ++first;

    SoundManager &sound = SoundManager::shared();
    sound.preloadTab(*tab);
    // A new stream is filled once at its start, and the server may take a moment before it
    // pulls at its steady pace: the first column waits for that rather than sounding late.
    sound.output();
    const auto pullDeadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (sound.sampler().framesRendered() < quint64(sound.sampler().sampleRate() / 20) &&
           std::chrono::steady_clock::now() < pullDeadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::printf("Playing %lld ticks of %.3f s from row %d through the %s output\n",
                static_cast<long long>(events.size() - first), tick, options.row,
                qPrintable(sound.output().name()));
    std::fflush(stdout);

    using clock = std::chrono::steady_clock;
    const auto start = clock::now();
    const auto tickLength = std::chrono::duration<double>(tick);
    for (qsizetype at = first; at < events.size(); ++at) {
        std::this_thread::sleep_until(
            start + std::chrono::duration_cast<clock::duration>(tickLength * double(at - first)));
        const SongSequenceEvent &event = events[at];
        if (event.isRest())
            continue;
        // The column comes from the tab, as view mode plays it, not from the event's copy.
        const int row = *event.trIndex;
        const int col = *event.colIndex;
        if (row < 0 || row >= tab->tabRowDatas.size() || col < 0 ||
            col >= tab->tabRowDatas[row].colDatas.size())
            continue;
        sound.playColumnItems(tab->tabRowDatas[row].colDatas[col].columnItems, tab->stringNotes,
                              false);
    }

    // The last tick lasts its length too, then the notes ring out and leave the device.
    std::this_thread::sleep_until(start + std::chrono::duration_cast<clock::duration>(
                                              tickLength * double(events.size() - first)));
    const auto ringDeadline = clock::now() + std::chrono::seconds(10);
    Sampler &sampler = sound.sampler();
    // Let the mixer take the last notes in before asking whether anything still sounds.
    const quint64 rendered = sampler.framesRendered();
    while (sampler.framesRendered() < rendered + quint64(sampler.sampleRate() / 20) &&
           clock::now() < ringDeadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    while ((sampler.activeVoiceCount() > 0 || sampler.fadingVoiceCount() > 0) &&
           clock::now() < ringDeadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const double latency = std::max(0.0, sound.output().outputLatency());
    std::this_thread::sleep_for(std::chrono::duration<double>(latency + 0.1));
    return {};
}
