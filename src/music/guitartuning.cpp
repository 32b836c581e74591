#include "guitartuning.h"

namespace GuitarTunings {

namespace {

GuitarTuning preset(const char16_t *name, const QString &notes)
{
    return {QString::fromUtf16(name), notes.split(u' ')};
}

QList<GuitarTuning> withCustom(QList<GuitarTuning> presets)
{
    presets.append({u"Custom"_qs, std::nullopt});
    return presets;
}

} // namespace

const QList<GuitarTuning> &tuningPresetsDefault()
{
    static const QList<GuitarTuning> presets = withCustom({
        preset(u"Standard", u"E A D G B E"_qs),
        preset(u"Drop D", u"D A D G B E"_qs),
        preset(u"Drop C", u"C G C F A D"_qs),
        preset(u"Drop B", u"B F# B E G# C#"_qs),
        preset(u"Open A", u"E A C# E A C#"_qs),
        preset(u"Open B", u"B F# B F# B D#"_qs),
        preset(u"Open C", u"C G C G C E"_qs),
        preset(u"Open D", u"D A D F# A D"_qs),
        preset(u"Open E", u"E B E G# B E"_qs),
        preset(u"Open F", u"F A C F C F"_qs),
        preset(u"Open G", u"D G D G B D"_qs),
        preset(u"All fourths", u"E A D G C F"_qs),
        preset(u"Bass 6", u"B E A D G C"_qs),
    });
    return presets;
}

const QList<GuitarTuning> &tuningPresets4string()
{
    static const QList<GuitarTuning> presets = withCustom({
        preset(u"Standard", u"E A D G"_qs),
        preset(u"Drop D", u"D A D G"_qs),
        preset(u"Drop C", u"C G C F"_qs),
        preset(u"Ukulele", u"G C E A"_qs),
        preset(u"Ukulele D", u"A D F# B"_qs),
    });
    return presets;
}

const QList<GuitarTuning> &tuningPresets5string()
{
    static const QList<GuitarTuning> presets = withCustom({
        preset(u"Standard", u"B E A D G"_qs),
        preset(u"Tenor", u"E A D G C"_qs),
    });
    return presets;
}

const QList<GuitarTuning> &tuningPresets7string()
{
    static const QList<GuitarTuning> presets = withCustom({
        preset(u"Standard", u"B E A D G B E"_qs),
        preset(u"Drop A", u"A E A D G B E"_qs),
    });
    return presets;
}

const QList<GuitarTuning> &tuningPresets8string()
{
    static const QList<GuitarTuning> presets = withCustom({
        preset(u"Standard", u"F# B E A D G B E"_qs),
    });
    return presets;
}

const QList<GuitarTuning> &presetsFor(int stringCount)
{
    switch (stringCount) {
    case 4:
        return tuningPresets4string();
    case 5:
        return tuningPresets5string();
    case 7:
        return tuningPresets7string();
    case 8:
        return tuningPresets8string();
    default:
        return tuningPresetsDefault();
    }
}

} // namespace GuitarTunings
