#include "midiwriter.h"

#include "exportlog.h"
#include "music/stringpitches.h"
#include "tabtimeline.h"

#include <QFile>
#include <QTemporaryDir>

#include <smf.h>

#include <algorithm>
#include <memory>

namespace {

struct Event {
    qint64 tick = 0;
    // Note-offs sort before note-ons at the same tick, so a repeated note sounds again.
    int order = 0;
    std::array<unsigned char, 3> bytes{};
};

struct SmfDeleter {
    void operator()(smf_t *smf) const { smf_delete(smf); }
};

} // namespace

QString MidiWriter::fileExtension()
{
    return u"mid"_qs;
}

std::optional<QByteArray> MidiWriter::write(const TabData &tab)
{
    const TabTimeline timeline = TabTimeline::of(tab);
    const QList<std::optional<int>> open = StringPitches::openStringMidiPitches(tab.stringNotes);
    const qint64 capo = std::max<qint64>(tab.capoFret, 0);
    // Bass on its program, anything else on a steel-string guitar.
    const int program = tab.stringCount() == 4 || tab.stringCount() == 5 ? 33 : 25;

    QList<Event> events;
    for (const TabTimeline::Slot &slot : timeline.slots) {
        if (slot.row >= tab.tabRowDatas.size()
            || slot.column >= tab.tabRowDatas[slot.row].colDatas.size())
            continue;
        const QList<ColumnItemType> &items = tab.tabRowDatas[slot.row].colDatas[slot.column].columnItems;
        for (qsizetype i = 0; i < items.size(); ++i) {
            const auto base = open.value(i);
            if (!items[i].isNote() || !base || items[i].fret() < 0)
                continue;
            const qint64 pitch = *base + capo + std::min<qint64>(items[i].fret(), 128);
            if (pitch > 127)
                continue;
            const auto key = static_cast<unsigned char>(pitch);
            events.append({slot.start, 1, {0x90, key, 96}});
            events.append({slot.start + slot.duration, 0, {0x80, key, 0}});
        }
    }
    std::stable_sort(events.begin(), events.end(), [](const Event &a, const Event &b) {
        return a.tick != b.tick ? a.tick < b.tick : a.order < b.order;
    });

    // At least 480 pulses a quarter where the ticks allow, so players that round keep time.
    const qint64 tpq = std::max<qint64>(timeline.ticksPerQuarter, 1);
    const qint64 ppqn = tpq <= 0x7fff ? tpq * std::max<qint64>(1, 480 / tpq) : 960;
    const auto pulses = [&](qint64 tick) -> int {
        return int(std::min<qint64>((tick * ppqn + tpq / 2) / tpq, 0x0fffffff));
    };

    std::unique_ptr<smf_t, SmfDeleter> smf(smf_new());
    if (!smf || smf_set_ppqn(smf.get(), int(ppqn)) != 0)
        return std::nullopt;
    smf_track_t *track = smf_track_new();
    if (!track)
        return std::nullopt;
    smf_add_track(smf.get(), track);

    const QByteArray name = tab.title.toUtf8();
    if (smf_event_t *title = smf_event_new_textual(0x03, name.constData()))
        smf_track_add_event_pulses(track, title, 0);
    const qint64 microseconds = 60000000 / std::max<qint64>(timeline.tempo, 1);
    unsigned char tempo[6] = {0xff, 0x51, 0x03, static_cast<unsigned char>(microseconds >> 16),
                              static_cast<unsigned char>(microseconds >> 8),
                              static_cast<unsigned char>(microseconds)};
    if (smf_event_t *event = smf_event_new_from_pointer(tempo, sizeof tempo))
        smf_track_add_event_pulses(track, event, 0);
    if (smf_event_t *event = smf_event_new_from_bytes(0xc0, program, -1))
        smf_track_add_event_pulses(track, event, 0);
    for (const Event &note : events) {
        smf_event_t *event = smf_event_new_from_bytes(note.bytes[0], note.bytes[1], note.bytes[2]);
        if (!event)
            return std::nullopt;
        smf_track_add_event_pulses(track, event, pulses(note.tick));
    }
    if (smf_track_add_eot_pulses(track, pulses(timeline.totalTicks)) != 0)
        return std::nullopt;

    // The library writes only to a named file.
    QTemporaryDir folder;
    if (!folder.isValid())
        return std::nullopt;
    const QByteArray path = QFile::encodeName(folder.filePath(u"tab.mid"_qs));
    if (smf_save(smf.get(), path.constData()) != 0) {
        qCWarning(lcExport) << "cannot write the MIDI file";
        return std::nullopt;
    }
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}
