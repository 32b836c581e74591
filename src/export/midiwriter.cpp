// Written by hand rather than with libsmf: its save reloads the file to check it and frees that
// copy event by event, quadratic in the event count (tens of seconds for a long tab).
#include "midiwriter.h"

#include "music/stringpitches.h"
#include "tabtimeline.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace {

struct Event {
    qint64 tick = 0;
    // Note-offs sort before note-ons at the same tick, so a repeated note sounds again.
    int order = 0;
    std::array<unsigned char, 3> bytes{};
};

// Seven bits a byte, most significant first, every byte but the last with its top bit set.
void appendVariableLength(QByteArray &out, qint64 value)
{
    value = std::clamp<qint64>(value, 0, 0x0fffffff);
    unsigned char bytes[4];
    int count = 0;
    do {
        bytes[count++] = static_cast<unsigned char>(value & 0x7f);
        value >>= 7;
    } while (value > 0);
    while (count > 1)
        out.append(char(bytes[--count] | 0x80));
    out.append(char(bytes[0]));
}

void appendBigEndian(QByteArray &out, quint32 value, int size)
{
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        out.append(char((value >> shift) & 0xff));
}

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

    // Format 0: one track, its events in time order with delta times in pulses.
    QByteArray track;
    qint64 last = 0;
    const auto add = [&](qint64 at, std::initializer_list<unsigned char> bytes,
                         const QByteArray &data = {}) {
        appendVariableLength(track, std::max<qint64>(at - last, 0));
        last = std::max(last, at);
        for (unsigned char byte : bytes)
            track.append(char(byte));
        track.append(data);
    };

    // The tab's title names the track.
    const QByteArray name = tab.title.toUtf8();
    QByteArray nameLength;
    appendVariableLength(nameLength, name.size());
    add(0, {0xff, 0x03}, nameLength + name);
    const qint64 microseconds = std::min<qint64>(60000000 / std::max<qint64>(timeline.tempo, 1),
                                                 0xffffff);
    add(0, {0xff, 0x51, 0x03, static_cast<unsigned char>(microseconds >> 16),
            static_cast<unsigned char>(microseconds >> 8), static_cast<unsigned char>(microseconds)});
    add(0, {0xc0, static_cast<unsigned char>(program)});
    for (const Event &note : events)
        add(pulses(note.tick), {note.bytes[0], note.bytes[1], note.bytes[2]});
    add(std::max<qint64>(pulses(timeline.totalTicks), last), {0xff, 0x2f, 0x00});

    QByteArray file("MThd");
    appendBigEndian(file, 6, 4);
    appendBigEndian(file, 0, 2);
    appendBigEndian(file, 1, 2);
    appendBigEndian(file, quint32(ppqn), 2);
    file.append("MTrk");
    appendBigEndian(file, quint32(track.size()), 4);
    file.append(track);
    return file;
}
