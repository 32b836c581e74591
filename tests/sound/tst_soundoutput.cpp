#include "model/tabdata.h"
#include "model/tabfileformat.h"

#include "audioprobe.h"
#include "testmain.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>
#include <QThread>

#include <cstring>

namespace {

constexpr int rate = 44100;

QString homePath(const QString &name)
{
    return QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(name);
}

struct RunResult {
    int exitCode = -1; // -1 when it crashed or hung
    QByteArray out;
    QByteArray err;
};

RunResult run(const QString &program, const QStringList &arguments, int timeoutMs = 5000,
              const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished(1000);
        return {};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

const QString cli = QString::fromUtf8(LUTEGRID_CLI);

TabColumnData column(std::initializer_list<std::pair<int, int>> notes)
{
    QList<ColumnItemType> items(6, ColumnItemType::blank());
    for (const auto &[index, fret] : notes)
        items[index] = ColumnItemType::note(fret);
    return TabColumnData(items);
}

// What the tab below sounds, tick by tick, from its second row: table positions.
const QList<QList<int>> expectedTicks = {
    {24},         // A2: A string open
    {33},         // F#3: D string, fret 4
    {53},         // D5: high E, fret 10
    {34, 42, 49}, // G3, D#4, A#4: G open, B fret 4, high E fret 6
};

QString writeTab()
{
    TabData tab(u"e2e"_qs, 6);
    tab.stringNotes = {u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};
    tab.tempo = 120;
    tab.playbackOptions.reset();
    // Row 0 must not sound: playing starts at row 1.
    TabRowData skipped({column({{4, 3}})}, {});
    TabRowData played(
        {column({{4, 0}}), column({{3, 4}}), column({{0, 10}}), column({{2, 0}, {1, 4}, {0, 6}})},
        {});
    skipped.stringCount = played.stringCount = 6;
    tab.tabRowDatas = {skipped, played};
    const QString path = homePath(u"e2e.lgrd"_qs);
    QFile file(path);
    const auto bytes = exchangeData(tab);
    if (!bytes || !file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size())
        return {};
    return path;
}

// Sum of the first two partials: enough to tell a note from the ones ringing around it.
double strength(const std::vector<float> &audio, qsizetype from, qsizetype length, double hz)
{
    from = std::clamp<qsizetype>(from, 0, qsizetype(audio.size()) - length);
    return AudioProbe::amplitudeAt(audio.data() + from, length, rate, hz) +
           AudioProbe::amplitudeAt(audio.data() + from, length, rate, 2 * hz);
}

} // namespace

class TestSoundOutput : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void playedTabReachesTheSoundServer();
    void playRefusesWhatItCannotPlay_data();
    void playRefusesWhatItCannotPlay();

private:
    bool serverAvailable = false;
    QString tab; // the tab below, written once
};

void TestSoundOutput::initTestCase()
{
    serverAvailable = run(u"pactl"_qs, {u"info"_qs}, 3000).exitCode == 0;
    tab = writeTab();
    QVERIFY(!tab.isEmpty());
}

void TestSoundOutput::playedTabReachesTheSoundServer()
{
    if (!serverAvailable)
        QSKIP("no PulseAudio server answers; scripts/test starts a private one with a null sink");

    // A sink of this test's own, so nothing else that plays lands in the recording.
    const QString sink = u"lutegrid_e2e_%1"_qs.arg(QCoreApplication::applicationPid());
    const auto module =
        run(u"pactl"_qs, {u"load-module"_qs, u"module-null-sink"_qs, u"sink_name="_qs + sink});
    QVERIFY2(module.exitCode == 0, "pactl could not make a null sink");
    auto unload = qScopeGuard([&] {
        run(u"pactl"_qs, {u"unload-module"_qs, QString::fromUtf8(module.out.trimmed())});
    });

    const QString recordingPath = homePath(u"recording.raw"_qs);
    QProcess recorder;
    recorder.setStandardOutputFile(recordingPath);
    recorder.start(u"parec"_qs,
                   {u"--device="_qs + sink + u".monitor"_qs, u"--format=float32le"_qs,
                    u"--rate=44100"_qs, u"--channels=1"_qs, u"--raw"_qs, u"--latency-msec=20"_qs});
    QVERIFY(recorder.waitForStarted(3000));
    // The monitor of an idle sink still streams silence: data means the recorder is in place.
    // Half a second of it leaves room to look before the first note.
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(recordingPath).size() > qint64(rate * sizeof(float) / 2),
                             5000);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"PULSE_SINK"_qs, sink);
    const RunResult played = run(cli, {u"play"_qs, tab, u"--row"_qs, u"1"_qs}, 20000, environment);
    QVERIFY2(played.exitCode == 0, played.err.constData());
    QVERIFY2(played.out.contains("PulseAudio"), played.out.constData());

    QThread::msleep(300);
    recorder.terminate();
    QVERIFY(recorder.waitForFinished(3000));

    QFile file(recordingPath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray raw = file.readAll();
    std::vector<float> audio(std::size_t(raw.size()) / sizeof(float));
    std::memcpy(audio.data(), raw.constData(), audio.size() * sizeof(float));

    const qsizetype start = AudioProbe::firstFrameAbove(audio, 0.02f);
    QVERIFY2(start >= 0, "nothing was heard");
    QVERIFY2(start > rate / 2, "sound before the player started");
    const qsizetype tick = rate / 2;
    const qsizetype window = rate * 3 / 10;
    QVERIFY2(qsizetype(audio.size()) > start + 4 * tick + window, "the recording ends early");

    for (qsizetype k = 0; k < expectedTicks.size(); ++k) {
        const qsizetype onset = start + k * tick;
        for (const int position : expectedTicks[k]) {
            const double hz = AudioProbe::hzOfPosition(position);
            const QString where = u"tick %1, position %2: "_qs.arg(k).arg(position);
            const auto off =
                AudioProbe::centsOffNear(audio.data() + onset + rate / 10, window, rate, hz);
            QVERIFY2(off && std::abs(*off) <= 15.0,
                     qPrintable(where + u"%1 cents off"_qs.arg(off.value_or(1000.0))));
            // It starts on its tick: clearly stronger after it than just before.
            const double after = strength(audio, onset + rate / 10, window, hz);
            const double before = strength(audio, onset - rate / 20 - window, window, hz);
            QVERIFY2(after > 2.0 * before,
                     qPrintable(where + u"%1 after against %2 before"_qs.arg(after).arg(before)));
        }
    }
    // The skipped row's C3 never sounded.
    const double skipped = strength(audio, start + rate / 10, window, AudioProbe::hzOfPosition(27));
    const double first = strength(audio, start + rate / 10, window, AudioProbe::hzOfPosition(24));
    QVERIFY(skipped < 0.2 * first);
}

void TestSoundOutput::playRefusesWhatItCannotPlay_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("message");
    const auto row = [](const char *name, const QStringList &arguments, int exitCode,
                        const QByteArray &message) {
        QTest::newRow(name) << QStringList{u"play"_qs} + arguments << exitCode << message;
    };
    const QString missing = homePath(u"missing.lgrd"_qs);
    row("missing file", {missing}, 1, missing.toUtf8());
    row("not a tab", {homePath(u"notes.txt"_qs)}, 1, "not a tab file");
    row("row past the end", {tab, u"--row"_qs, u"2"_qs}, 1, "no row 2");
    row("negative row", {tab, u"--row"_qs, u"-1"_qs}, 1, "no row -1");
    row("zero tempo", {tab, u"--tempo"_qs, u"0"_qs}, 1, "tempo");
    row("tempo in words", {tab, u"--tempo"_qs, u"fast"_qs}, 2, "whole numbers");
    row("no file", {}, 2, "Usage");
}

void TestSoundOutput::playRefusesWhatItCannotPlay()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, message);
    const RunResult result = run(cli, arguments, 10000);
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(result.err.contains(message), result.err.constData());
    QVERIFY(result.out.isEmpty());
}

LUTEGRID_TEST_MAIN(TestSoundOutput)
#include "tst_soundoutput.moc"
