// Figures of the sound engine: how soon a note leaves the mixer and the sound server, what
// mixing costs, and how long a tab's samples take to prepare.
#include "benchutil.h"

#include "model/tabdata.h"
#include "sound/pulsesoundoutput.h"
#include "sound/samplecache.h"
#include "sound/sampler.h"
#include "sound/soundmanager.h"
#include "sound/soundoutput.h"

#include <QThread>

#include <ctime>
#include <vector>

namespace {

const QStringList guitar = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};
const QStringList bass = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs};

double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Every fret from 0 to 22 on every string: all the samples of the tuning and their shifts.
TabData everyFret(const QStringList &tuning)
{
    TabData tab(u"bench"_qs, 6);
    tab.stringNotes = tuning;
    const int strings = int(tuning.size());
    TabRowData row(0, strings);
    for (int string = 0; string < strings; ++string) {
        for (int fret = 0; fret <= 22; ++fret) {
            QList<ColumnItemType> items(strings, ColumnItemType::blank());
            items[string] = ColumnItemType::note(fret);
            row.colDatas.append(TabColumnData(items));
        }
    }
    tab.tabRowDatas = {row};
    return tab;
}

struct Spread {
    double median = 0.0;
    double worst = 0.0;
};

Spread spread(std::vector<double> values)
{
    if (values.empty())
        return {};
    std::sort(values.begin(), values.end());
    return {values[values.size() / 2], values.back()};
}

// Plays one note at a time, well apart, and reads how long each took to leave the mixer;
// with the output's own latency added when asked.
void measureLatency(SoundManager &sound, const char *label, bool throughServer)
{
    const QList<ColumnItemType> note = {ColumnItemType::note(5), ColumnItemType::blank(),
                                        ColumnItemType::blank(), ColumnItemType::blank(),
                                        ColumnItemType::blank(), ColumnItemType::blank()};
    sound.playColumnItems(note, guitar, true);
    // A fresh stream is filled once at the start; the server may take a while before it
    // pulls at its steady pace. 100 ms of audio out means it does.
    QElapsedTimer started;
    started.start();
    sound.output();
    while (sound.sampler().framesRendered() < quint64(sound.sampler().sampleRate() / 10) &&
           started.elapsed() < 5000)
        QThread::usleep(200);
    std::printf("%s:\n", label);
    printFigure("  open until 100 ms have played", double(started.nsecsElapsed()) / 1e6, "ms");
    std::vector<double> mixer;
    std::vector<double> total;
    for (int i = 0; i < 40; ++i) {
        const qint64 before = sound.sampler().lastNoteDelayNs();
        const quint64 rendered = sound.sampler().framesRendered();
        sound.playColumnItems(note, guitar, false);
        QElapsedTimer waited;
        waited.start();
        while (sound.sampler().framesRendered() <= rendered && waited.elapsed() < 500)
            QThread::usleep(200);
        // Not a multiple of any period, so the notes land at every phase of the output's cycle.
        QThread::usleep(60000 + 1370 * (i % 7));
        const qint64 delay = sound.sampler().lastNoteDelayNs();
        if (delay == before)
            continue;
        mixer.push_back(double(delay) / 1e6);
        if (throughServer)
            total.push_back(double(delay) / 1e6 + sound.output().outputLatency() * 1e3);
    }
    const Spread toMixer = spread(mixer);
    std::printf("  %zu notes, one at a time:\n", mixer.size());
    printFigure("  call to first frame out of mixer", toMixer.median, "ms median");
    printFigure("", toMixer.worst, "ms worst");
    if (throughServer) {
        const Spread toSink = spread(total);
        printFigure("  call to the sink, server's count", toSink.median, "ms median");
        printFigure("", toSink.worst, "ms worst");
    }
}

} // namespace

int main(int argc, char *argv[])
{
    BenchEnvironment environment(argc, argv);

    // Preparing a tab: every sample of guitar and bass, with every shift their frets need.
    {
        SoundManager sound;
        const TabData guitarTab = everyFret(guitar);
        const TabData bassTab = everyFret(bass);
        QElapsedTimer timer;
        timer.start();
        sound.preloadTab(guitarTab);
        sound.preloadTab(bassTab);
        const double ms = double(timer.nsecsElapsed()) / 1e6;
        std::printf("Preload of 35 samples and their shifts (%lld buffers):\n",
                    static_cast<long long>(sound.fileCache().size()));
        printFigure("  all workers", ms, "ms");

        SampleCache cache;
        cache.load(sound.sampleDirectory() + u"/A.wav", 0);
        int shift = 1;
        const double oneShift =
            bestOf([&] { cache.load(sound.sampleDirectory() + u"/A.wav", shift++); });
        printFigure("  one 2 s shift, cold, one thread", oneShift, "ms");
    }

    // Mixing: 48 voices of a 2 s sample for one second, in 256-frame periods.
    {
        SampleCache cache;
        const auto buffer = cache.load(SoundManager::defaultSampleDirectory() + u"/A.wav", 0);
        std::vector<float> out(256);
        double best = 1e300;
        for (int run = 0; run < 5; ++run) {
            Sampler sampler;
            for (int voice = 0; voice < Sampler::maxVoices; ++voice)
                sampler.noteOn(*buffer);
            const double start = threadCpuMs();
            for (int frames = 0; frames < sampler.sampleRate(); frames += int(out.size()))
                sampler.render(out.data(), qsizetype(out.size()));
            best = std::min(best, threadCpuMs() - start);
        }
        std::printf("Mixing %d voices:\n", Sampler::maxVoices);
        printFigure("  CPU for one second of audio", best, "ms");
    }

    // Latency on the null output, which renders in 10 ms periods.
    {
        SoundManager sound;
        sound.useOutput(std::make_unique<NullSoundOutput>(sound.sampler()));
        measureLatency(sound, "Null output", false);
    }

    // Latency through the sound server, when there is one.
    {
        QString error;
        SoundManager sound;
        auto pulse = PulseSoundOutput::open(sound.sampler(),
                                            PulseSoundOutput::defaultTargetLatencyUs, &error);
        if (!pulse) {
            std::printf("PulseAudio: not measured (%s)\n", qPrintable(error));
            return 0;
        }
        sound.useOutput(std::move(pulse));
        measureLatency(sound, "PulseAudio", true);
    }
    return 0;
}
