#include "semitoneshifthelper.h"

#include "musiclog.h"
#include "musicnote.h"
#include "model/selectionbox.h"

#include <algorithm>
#include <limits>

Q_LOGGING_CATEGORY(lcMusic, "lutegrid.music")

namespace {

// Frets read from a file can be anything; moving one to another string must not overflow.
qint64 saturatingAdd(qint64 a, qint64 b)
{
    qint64 sum = 0;
    if (__builtin_add_overflow(a, b, &sum))
        return b > 0 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
    return sum;
}

bool allBlank(const QList<ColumnItemType> &items)
{
    return std::all_of(items.cbegin(), items.cend(),
                       [](const ColumnItemType &item) { return item.isBlank(); });
}

} // namespace

bool NoteGroup::hasNote() const
{
    return std::any_of(notes.cbegin(), notes.cend(),
                       [](const ColumnItemType &item) { return item.isNote(); });
}

SemitoneShiftHelper::SemitoneShiftHelper(QStringList tuning)
    : tuning(std::move(tuning)), stringCount(int(this->tuning.size()))
{
}

SemitoneShiftHelper::SemitoneShiftHelper(QStringList tuning, int stringCount)
    : tuning(std::move(tuning)), stringCount(stringCount)
{
}

NoteGroup SemitoneShiftHelper::collectGroup(const Block &columns, int string, int column)
{
    NoteGroup group;
    bool previousWasMark = true;
    for (qsizetype c = column; c < columns.size(); ++c) {
        if (string < 0 || string >= columns[c].size())
            break;
        const ColumnItemType item = columns[c][string];
        if (item.isBlank() || item.isBar())
            break;
        if (item.kind() == ColumnItemType::Kind::vibrato) {
            group.notes.append(item);
            break;
        }
        if (item.isMark()) {
            group.notes.append(item);
            previousWasMark = true;
            continue;
        }
        // Two notes side by side are two groups: only a mark joins them.
        if (!previousWasMark)
            break;
        group.notes.append(item);
        previousWasMark = false;
    }
    return group;
}

bool SemitoneShiftHelper::groupFits(const NoteGroup &group, int semitones)
{
    const qint64 s = semitones;
    for (const ColumnItemType &item : group.notes) {
        if (!item.isNote())
            continue;
        if (s < 0 && item.fret() < -s)
            return false;
        if (s > 0 && item.fret() > highestFret - s)
            return false;
    }
    return true;
}

std::optional<SemitoneShiftHelper::Block>
SemitoneShiftHelper::shiftSemitones(int semitones, Block columns, SelectionBox &box) const
{
    if (columns.isEmpty())
        return std::nullopt;
    for (const auto &column : columns) {
        if (column.size() != stringCount)
            return std::nullopt;
    }

    // Strings are walked in the direction the notes move, so a note that lands on another
    // string is shifted there when the walk arrives, like any other note of that string.
    const int boxStart = box.itemIndexStart;
    const int boxEnd = box.itemIndexEnd;
    const int step = semitones < 0 ? 1 : -1;
    bool changed = false;

    for (int i = semitones < 0 ? 0 : lastWalkedString; i >= 0 && i <= lastWalkedString; i += step) {
        if (i < box.itemIndexStart || i > box.itemIndexEnd)
            continue;
        if (i >= stringCount) {
            qCDebug(lcMusic) << "shift refused: selection reaches past string" << stringCount;
            return std::nullopt;
        }
        qsizetype j = 0;
        while (j < columns.size()) {
            const NoteGroup group = collectGroup(columns, i, int(j));
            if (!group.hasNote()) {
                ++j;
                continue;
            }
            if (groupFits(group, semitones)) {
                for (qsizetype k = 0; k < group.notes.size(); ++k) {
                    ColumnItemType &item = columns[j + k][i];
                    if (item.isNote())
                        item = ColumnItemType::note(item.fret() + semitones);
                }
            } else if (!moveGroup(columns, group, i, int(j), semitones, boxStart, boxEnd, box)) {
                return std::nullopt;
            }
            j += group.notes.size();
            changed = true;
        }
    }

    if (!changed)
        return std::nullopt;
    return columns;
}

bool SemitoneShiftHelper::moveGroup(Block &columns, const NoteGroup &group, int string, int column,
                                    int semitones, int boxStart, int boxEnd,
                                    SelectionBox &box) const
{
    const qsizetype n = group.notes.size();
    for (qsizetype k = 0; k < n; ++k)
        columns[column + k][string] = ColumnItemType::blank();

    const int step = semitones < 0 ? 1 : -1;
    int target = string + step;
    QList<ColumnItemType> current = group.notes;

    for (;;) {
        if (target < 0 || target > lastWalkedString)
            return false;
        // A tab of four or five strings has no string here: refuse instead of reading past the
        // end of a column.
        if (target >= stringCount) {
            qCDebug(lcMusic) << "shift refused: no string" << target << "on this tab";
            return false;
        }

        QList<ColumnItemType> displaced;
        displaced.reserve(n);
        for (qsizetype k = 0; k < n; ++k)
            displaced.append(columns[column + k][target]);

        // Leaving the selection, or landing on the edge string, may never overwrite anything.
        bool mustBeFree = false;
        if (target == lastWalkedString)
            mustBeFree = semitones < 0 || boxStart > lastWalkedString;
        else if (semitones < 0)
            mustBeFree = target > boxEnd;
        else
            mustBeFree = target == 0 || target < boxStart;
        if (mustBeFree && !allBlank(displaced))
            return false;

        const int source = target - step;
        for (qsizetype k = 0; k < n; ++k) {
            ColumnItemType item = current[k];
            if (item.isNote())
                item = ColumnItemType::note(sameFretOnString(item.fret(), source, target));
            columns[column + k][target] = item;
        }

        // The box only grows. Measured from the call alone, a later, shorter move would shrink
        // it again and strand what an earlier move pushed further: unshifted, and outside the
        // strings the caller writes back.
        box.itemIndexStart = std::min({boxStart, box.itemIndexStart, target});
        box.itemIndexEnd = std::max({boxEnd, box.itemIndexEnd, target});

        if (allBlank(displaced))
            return true;
        current = displaced;
        target += step;
        if (target > boxEnd + 1 || target < boxStart - 1)
            return true;
    }
}

qint64 SemitoneShiftHelper::sameFretOnString(qint64 fret, int source, int target) const
{
    const auto sourceNote = openNotePosition(source);
    const auto targetNote = openNotePosition(target);
    if (!sourceNote || !targetNote)
        return -1;
    // Strings are numbered from the top, so the larger index is the lower string.
    const bool targetIsLower = target > source;
    const int lower = targetIsLower ? *targetNote : *sourceNote;
    const int higher = targetIsLower ? *sourceNote : *targetNote;
    const int interval = ((higher - lower) % 12 + 12) % 12;
    return saturatingAdd(fret, targetIsLower ? interval : -interval);
}

std::optional<int> SemitoneShiftHelper::openNotePosition(int string) const
{
    const int index = stringCount - 1 - string;
    if (index < 0 || index >= tuning.size())
        return std::nullopt;
    const auto note = MusicNotes::fromText(tuning[index]);
    if (!note)
        return std::nullopt;
    return MusicNotes::position(*note);
}
