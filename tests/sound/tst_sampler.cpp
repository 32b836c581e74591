#include "sound/pulsesoundoutput.h"
#include "sound/samplecache.h"
#include "sound/sampler.h"
#include "sound/soundmanager.h"
#include "sound/soundoutput.h"
#include "sound/spscqueue.h"

#include "audioprobe.h"
#include "testfiles.h"
#include "testmain.h"

#include <QDataStream>
#include <QDir>
#include <QElapsedTimer>
#include <QTest>

#include <cmath>
#include <numbers>
#include <thread>

namespace {

constexpr int rate = 44100;
const QStringList standard = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};

QString samplePath(const QString &name)
{
    return SoundManager::defaultSampleDirectory() + u'/' + name + u".wav";
}

// An output that never pulls, so the test renders the mixer itself.
class OfflineOutput : public SoundOutput {
public:
    QString name() const override { return u"offline"_qs; }
    double outputLatency() const override { return 0.0; }
};

QString homeFile(const QString &name)
{
    return QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(name);
}

// A 16-bit PCM WAV of a sine, written by hand so the decoder meets a file it didn't make.
QByteArray sineWav(int sampleRate, int channels, double hz, double seconds)
{
    const quint32 frames = quint32(sampleRate * seconds);
    const quint32 dataBytes = frames * quint32(channels) * 2;
    QByteArray wav;
    QDataStream out(&wav, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData("RIFF", 4);
    out << quint32(36 + dataBytes);
    out.writeRawData("WAVEfmt ", 8);
    out << quint32(16) << quint16(1) << quint16(channels) << quint32(sampleRate)
        << quint32(sampleRate * channels * 2) << quint16(channels * 2) << quint16(16);
    out.writeRawData("data", 4);
    out << dataBytes;
    for (quint32 i = 0; i < frames * quint32(channels); ++i)
        out << qint16(std::lround(
            16000.0 * std::sin(2.0 * std::numbers::pi * hz * (i / channels) / sampleRate)));
    return wav;
}

// The measured pitch of a stretch of audio near the expected one, in cents off; 1000 when
// nothing sounds near it.
double centsOff(const std::vector<float> &audio, qsizetype from, qsizetype length, double hz)
{
    return AudioProbe::centsOffNear(audio.data() + from, length, rate, hz).value_or(1000.0);
}

SampleBuffer constantBuffer(float value, qsizetype frames)
{
    SampleBuffer buffer;
    buffer.sampleRate = rate;
    buffer.frames.assign(std::size_t(frames), value);
    return buffer;
}

} // namespace

class TestSampler : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void decodesEveryBundledSample()
    {
        SampleCache cache;
        for (const AudioNote &entry : SoundManager::libraryMapping()) {
            for (const auto &name : {entry.fileName, entry.bassFileName}) {
                if (!name)
                    continue;
                const auto buffer = cache.load(samplePath(*name), 0);
                QVERIFY2(buffer, qPrintable(*name));
                QCOMPARE(buffer->sampleRate, rate);
                QVERIFY2(std::abs(buffer->seconds() - 2.0) < 0.01, qPrintable(*name));
                const float peak =
                    AudioProbe::peakLevel(buffer->frames.data(), buffer->frameCount());
                QVERIFY2(peak > 0.3f && peak <= 1.0f, qPrintable(*name));
            }
        }
    }

    void decodesOtherRatesAndChannels()
    {
        const QString path = homeFile(u"sine48k.wav"_qs);
        writeFile(path, sineWav(48000, 2, 440.0, 1.0));
        SampleCache cache;
        const auto buffer = cache.load(path, 0);
        QVERIFY(buffer);
        QCOMPARE(buffer->sampleRate, rate);
        QVERIFY(std::abs(buffer->frameCount() - rate) < rate / 100);
        QVERIFY(std::abs(centsOff(buffer->frames, rate / 4, rate / 2, 440.0)) < 2.0);
        // Both channels carried the same sine: the mono mix keeps its level.
        const float peak = AudioProbe::peakLevel(buffer->frames.data() + rate / 4, rate / 2);
        QVERIFY(std::abs(peak - 16000.0f / 32768.0f) < 0.03f);
    }

    void unreadableFilesGiveNothingOnce_data()
    {
        QTest::addColumn<QByteArray>("contents"); // null: no file at all
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("garbage") << QByteArray(5000, 'x');
        QTest::newRow("header only") << QByteArray("RIFF\x24\0\0\0WAVEfmt ", 16);
    }

    void unreadableFilesGiveNothingOnce()
    {
        QFETCH(QByteArray, contents);
        const QString path = homeFile(QString::fromLatin1(QTest::currentDataTag()) + u".wav");
        if (!contents.isNull())
            writeFile(path, contents);
        SampleCache cache;
        QVERIFY(!cache.load(path, 0));
        QVERIFY(!cache.load(path, 4));
        // Known bad: both keys are answered from the cache from now on.
        QVERIFY(cache.contains(path, 0) && cache.contains(path, 4));

        SoundManager manager;
        manager.useOutput(std::make_unique<OfflineOutput>());
        manager.playSample(QUrl::fromLocalFile(path), 2, false);
        QCOMPARE(manager.sampler().renderOffline(256), std::vector<float>(256, 0.0f));
    }

    void shiftKeepsLengthOnsetAndReachesThePitch_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("position"); // of the recording on the table
        QTest::addColumn<int>("shift");
        QTest::newRow("A +5") << u"A"_qs << 24 << 5;
        QTest::newRow("Elittle +3") << u"Elittle"_qs << 43 << 3;
        QTest::newRow("E -2") << u"E"_qs << 19 << -2;
        QTest::newRow("bassE -2") << u"bassE"_qs << 7 << -2;
        QTest::newRow("Ep12 +10") << u"Ep12"_qs << 31 << 10;
    }

    void shiftKeepsLengthOnsetAndReachesThePitch()
    {
        QFETCH(QString, name);
        QFETCH(int, position);
        QFETCH(int, shift);

        SampleCache cache;
        const auto original = cache.load(samplePath(name), 0);
        const auto shifted = cache.load(samplePath(name), shift);
        QVERIFY(original && shifted);
        QVERIFY(original != shifted);

        // The ring lasts as long: where the sound last stands above -40 dB of its peak.
        const float level =
            0.01f * AudioProbe::peakLevel(original->frames.data(), original->frameCount());
        const qsizetype originalEnd = AudioProbe::lastFrameAbove(original->frames, level);
        const qsizetype shiftedEnd = AudioProbe::lastFrameAbove(shifted->frames, level);
        QVERIFY2(std::abs(double(shiftedEnd) / double(originalEnd) - 1.0) < 0.05,
                 qPrintable(u"%1 against %2 frames"_qs.arg(shiftedEnd).arg(originalEnd)));

        // And it starts when the original does, so a chord's notes stay together.
        const qsizetype originalOnset = AudioProbe::firstFrameAbove(original->frames, level);
        const qsizetype shiftedOnset = AudioProbe::firstFrameAbove(shifted->frames, level);
        QVERIFY2(std::abs(shiftedOnset - originalOnset) < rate / 200,
                 qPrintable(u"onset at %1, not %2"_qs.arg(shiftedOnset).arg(originalOnset)));

        const double want = AudioProbe::hzOfPosition(position + shift);
        const double off =
            centsOff(shifted->frames, originalOnset + rate / 10, rate * 3 / 10, want);
        QVERIFY2(std::abs(off) <= 15.0, qPrintable(u"%1 cents off"_qs.arg(off)));
    }

    void cacheFilledFromManyThreadsKeepsOneBuffer()
    {
        SampleCache cache;
        const QList<QPair<QString, int>> keys = {
            {samplePath(u"A"_qs), 0}, {samplePath(u"A"_qs), 2}, {samplePath(u"D"_qs), 1},
            {samplePath(u"D"_qs), 0}, {samplePath(u"A"_qs), 3}, {samplePath(u"G"_qs), -1}};
        std::vector<std::vector<const SampleBuffer *>> seen(3);
        std::vector<std::thread> threads;
        for (std::size_t t = 0; t < seen.size(); ++t) {
            threads.emplace_back([&, t] {
                for (const auto &[path, shift] : keys)
                    seen[t].push_back(cache.load(path, shift).get());
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        for (std::size_t k = 0; k < std::size_t(keys.size()); ++k) {
            QVERIFY(seen[0][k]);
            QCOMPARE(seen[1][k], seen[0][k]);
            QCOMPARE(seen[2][k], seen[0][k]);
            QCOMPARE(cache.find(keys[qsizetype(k)].first, keys[qsizetype(k)].second).get(),
                     seen[0][k]);
        }
        QCOMPARE(cache.size(), 7); // G -1 starts from a decode of G
    }

    void queueKeepsOrderAcrossThreads()
    {
        SpscQueue<int, 64> queue;
        constexpr int count = 50000;
        std::thread producer([&] {
            for (int i = 0; i < count; ++i) {
                while (!queue.push(i))
                    std::this_thread::yield();
            }
        });
        bool inOrder = true;
        int value;
        for (int expected = 0; expected < count;) {
            if (queue.pop(value))
                inOrder = inOrder && value == expected++;
            else
                std::this_thread::yield();
        }
        producer.join();
        QVERIFY(inOrder);
        QVERIFY(!queue.pop(value));
    }

    void columnMixHoldsEachFundamental()
    {
        SoundManager manager;
        QVERIFY(manager.useOutput(std::make_unique<OfflineOutput>()));
        // A3 on the low E (fret 17, Ep12 +5), D#4 on the G string (fret 8, Gp6 +2), G#4 on the
        // high E (fret 4, Elittle +4): three shifted samples at once, no two sharing a partial.
        const QList<ColumnItemType> column = {
            ColumnItemType::note(4), ColumnItemType::blank(), ColumnItemType::note(8),
            ColumnItemType::blank(), ColumnItemType::blank(), ColumnItemType::note(17),
        };
        manager.playColumnItems(column, standard, false);
        const std::vector<float> mix = manager.sampler().renderOffline(rate);
        QCOMPARE(manager.sampler().activeVoiceCount(), 3);

        const qsizetype onset = AudioProbe::firstFrameAbove(mix, 0.01f);
        QVERIFY(onset >= 0 && onset < rate / 20);
        for (const int position : {36, 42, 47}) {
            const double hz = AudioProbe::hzOfPosition(position);
            const double off = centsOff(mix, onset + rate / 10, rate * 3 / 10, hz);
            QVERIFY2(std::abs(off) <= 15.0,
                     qPrintable(u"position %1: %2 cents off"_qs.arg(position).arg(off)));
        }
    }

    void notesRingForTheirLengthAndOverlap()
    {
        Sampler sampler;
        const SampleBuffer first = constantBuffer(0.5f, rate / 2);
        const SampleBuffer second = constantBuffer(0.25f, rate / 2);
        QVERIFY(sampler.noteOn(first, 1.0f));
        std::vector<float> mix = sampler.renderOffline(rate / 4);
        QCOMPARE(mix.front(), 0.5f);
        QCOMPARE(mix.back(), 0.5f);
        // A second note doesn't stop the first: they sound together.
        QVERIFY(sampler.noteOn(second, 1.0f));
        mix = sampler.renderOffline(rate / 4);
        QCOMPARE(mix.front(), 0.75f);
        QCOMPARE(sampler.activeVoiceCount(), 1); // the first has just ended with this block
        mix = sampler.renderOffline(rate / 4);
        QCOMPARE(mix.front(), 0.25f);
        QCOMPARE(sampler.activeVoiceCount(), 0);
        mix = sampler.renderOffline(64);
        QCOMPARE(mix, std::vector<float>(64, 0.0f));
        QCOMPARE(sampler.framesRendered(), quint64(3 * (rate / 4) + 64));
        QVERIFY(sampler.lastNoteDelayNs() >= 0);
    }

    void voicesAreCappedAndTheOldestFadesOut()
    {
        Sampler sampler;
        constexpr float level = 0.01f;
        const SampleBuffer loud = constantBuffer(level, rate);
        for (int i = 0; i < Sampler::maxVoices; ++i)
            QVERIFY(sampler.noteOn(loud, 1.0f));
        std::vector<float> mix = sampler.renderOffline(64);
        QCOMPARE(sampler.activeVoiceCount(), Sampler::maxVoices);
        QVERIFY(std::abs(mix.back() - Sampler::maxVoices * level) < 1e-4f);

        // Six more: the six oldest leave through a fade, not a click.
        const SampleBuffer quiet = constantBuffer(level / 2, rate);
        for (int i = 0; i < 6; ++i)
            QVERIFY(sampler.noteOn(quiet, 1.0f));
        mix = sampler.renderOffline(Sampler::fadeFrames * 2);
        QCOMPARE(sampler.activeVoiceCount(), Sampler::maxVoices);
        QCOMPARE(sampler.fadingVoiceCount(), 0);
        const float settled = (Sampler::maxVoices - 6) * level + 6 * level / 2;
        QVERIFY(std::abs(mix.back() - settled) < 1e-4f);
        QVERIFY(mix.front() > settled + 5.5f * level / 2);
        float largestStep = 0.0f;
        for (std::size_t i = 1; i < mix.size(); ++i)
            largestStep = std::max(largestStep, std::abs(mix[i] - mix[i - 1]));
        QVERIFY2(largestStep < 6 * level / 16, "the stolen voices stopped in a step");
    }

    void fullQueueDropsNotesWithoutHarm()
    {
        Sampler sampler;
        const SampleBuffer buffer = constantBuffer(0.001f, 1000);
        int accepted = 0;
        for (int i = 0; i < 1000; ++i)
            accepted += sampler.noteOn(buffer) ? 1 : 0;
        QVERIFY(accepted >= 64 && accepted < 1000);
        QVERIFY(!sampler.noteOn(SampleBuffer{}));
        sampler.renderOffline(256);
        QCOMPARE(sampler.activeVoiceCount(), Sampler::maxVoices);
        QVERIFY(sampler.noteOn(buffer));
    }

    void nullOutputPullsAtTheRealPace()
    {
        Sampler sampler;
        const SampleBuffer buffer = constantBuffer(0.1f, rate);
        QElapsedTimer clock;
        clock.start();
        {
            NullSoundOutput output(sampler);
            QVERIFY(output.isNull());
            QVERIFY(sampler.noteOn(buffer));
            QTRY_COMPARE_WITH_TIMEOUT(sampler.activeVoiceCount(), 1, 1000);
            QTest::qWait(300);
        }
        const double seconds = double(clock.elapsed()) / 1000.0;
        const double played = double(sampler.framesRendered()) / rate;
        QVERIFY2(played > 0.6 * seconds && played < 1.2 * seconds + 0.02,
                 qPrintable(u"%1 s of audio in %2 s"_qs.arg(played).arg(seconds)));
    }

    void absentServerFallsBackToTheNullOutput()
    {
        const QByteArray saved = qgetenv("PULSE_SERVER");
        const auto restore = qScopeGuard(
            [&] { saved.isNull() ? qunsetenv("PULSE_SERVER") : qputenv("PULSE_SERVER", saved); });
        qputenv("PULSE_SERVER", ("unix:" + homeFile(u"nothing"_qs)).toLocal8Bit());
        Sampler sampler;
        QString error;
        // A hang here is caught by the test's time limit, not by a clock that a busy machine fails.
        QVERIFY(!PulseSoundOutput::open(sampler, PulseSoundOutput::defaultTargetLatencyUs, &error));
        QVERIFY(!error.isEmpty());
        const auto fallback = openDefaultSoundOutput(sampler);
        QVERIFY(fallback && fallback->isNull());
    }
};

LUTEGRID_TEST_MAIN(TestSampler)
#include "tst_sampler.moc"
