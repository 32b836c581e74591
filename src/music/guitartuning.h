#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// One preset of the tuning pickers. "Custom" carries no notes.
struct GuitarTuning {
    QString name;
    std::optional<QStringList> stringNotes;

    friend bool operator==(const GuitarTuning &, const GuitarTuning &) = default;
};

namespace GuitarTunings {

const QList<GuitarTuning> &tuningPresetsDefault();
const QList<GuitarTuning> &tuningPresets4string();
const QList<GuitarTuning> &tuningPresets5string();
const QList<GuitarTuning> &tuningPresets7string();
const QList<GuitarTuning> &tuningPresets8string();
// The list for a string count (4 to 8); six strings for anything else.
const QList<GuitarTuning> &presetsFor(int stringCount);

} // namespace GuitarTunings
