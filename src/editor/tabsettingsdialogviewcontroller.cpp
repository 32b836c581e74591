#include "tabsettingsdialogviewcontroller.h"

#include "music/musicnote.h"
#include "services/saveddata.h"
#include "surface/fretboard.h"

#include <QLineF>

#include <algorithm>
#include <cmath>

TabSettingsDialogViewController::TabSettingsDialogViewController(const TabData &tab,
                                                                 SavedData &savedData,
                                                                 TabSettingsListener *listener,
                                                                 int maxCapo, QObject *parent)
    : QObject(parent), tabData(tab), tabSettingsListener(listener),
      maxCapoFret(std::max(maxCapo, 0)), saved(savedData)
{
    ignoreTouchUpsTimer.setSingleShot(true);
    ignoreTouchUpsTimer.setInterval(50);
    connect(&ignoreTouchUpsTimer, &QTimer::timeout, this, [this] {
        ignoreTouchUps = false;
        Q_EMIT changed();
    });

    fillTuning();
    introTextValue = tabData.introText;
    tempoValue = int(std::clamp<qint64>(tabData.tempo, qint64(minTempo), qint64(maxTempo)));
    capo = int(std::clamp<qint64>(tabData.capoFret, 0, maxCapoFret));
    lyricPercent = int(std::clamp<qint64>(tabData.lyricSize, minLyricSize, maxLyricSize));

    // Never-set values read as 0: their defaults are stored the first time they are shown.
    if (saved.lastFretCount == 0 || saved.defaultStringCount == 0) {
        if (saved.lastFretCount == 0)
            saved.lastFretCount = Fretboard::fretCountFor(0);
        if (saved.defaultStringCount == 0)
            saved.defaultStringCount = 6;
        saved.save();
    }
    notesOnTab = saved.notesOnTab;
    frets = int(std::clamp<qint64>(saved.lastFretCount, minFretCount, maxFretCount));
    cursorAmount = int(std::clamp<qint64>(saved.autoCursorAmount, 0, maxAutoCursor));
    playSounds = saved.playSounds;
    defaultStrings = int(std::clamp<qint64>(saved.defaultStringCount, minStrings, maxStrings));
    flashNavArrows = !saved.disableFlashNavArrows;
    colHeaders = !saved.hideColHeaders;
    freeScroll = saved.freeScrollSetting;
}

TabSettingsDialogViewController::~TabSettingsDialogViewController() = default;

// The tuning

void TabSettingsDialogViewController::fillTuning()
{
    stepperStrings = std::clamp(tabData.stringCount(), minStrings, maxStrings);
    QStringList notes = tabData.stringNotes;
    // A tab outside the stepper's range shows its nearest count, padded as the rows would be.
    while (notes.size() < stepperStrings)
        notes.append(notes.isEmpty() ? u"E"_qs : notes.last());
    notes = notes.mid(notes.size() - stepperStrings);
    showTuning(notes, stepperStrings);
    const QList<GuitarTuning> &presets = GuitarTunings::presetsFor(stepperStrings);
    pickerRow = int(presets.size()) - 1;
    for (int row = 0; row < presets.size(); ++row) {
        if (presets[row].stringNotes == notes) {
            pickerRow = row;
            break;
        }
    }
    labelsBordered = !presets[pickerRow].stringNotes;
    Q_EMIT changed();
}

void TabSettingsDialogViewController::setLabel(int label, const QString &note)
{
    labels[label] = note;
    shown[label] = true;
}

void TabSettingsDialogViewController::showTuning(const QStringList &notes, int count)
{
    shown.fill(false);
    if (count >= 6) {
        int next = 0;
        if (count == 8)
            setLabel(8, notes.value(next++));
        if (count >= 7)
            setLabel(7, notes.value(next++));
        for (int label = 6; label >= 1; --label)
            setLabel(label, notes.value(next++));
    } else {
        for (int i = 0; i < 4; ++i)
            setLabel(6 - i, notes.value(i));
        if (count != 4)
            setLabel(2, notes.value(4));
    }
}

QStringList TabSettingsDialogViewController::tuningFromLabels() const
{
    QStringList notes;
    for (int label = 6; label >= 1; --label)
        notes.append(labels[label]);
    if (stepperStrings >= 7)
        notes.prepend(labels[7]);
    if (stepperStrings == 8)
        notes.prepend(labels[8]);
    if (stepperStrings < 6) {
        notes.removeLast();
        if (stepperStrings <= 4)
            notes.removeLast();
    }
    return notes;
}

QStringList TabSettingsDialogViewController::labelNotes() const
{
    QStringList notes;
    for (int label = 8; label >= 1; --label)
        notes.append(shown[label] ? labels[label] : QString());
    return notes;
}

QVariantList TabSettingsDialogViewController::labelShown() const
{
    QVariantList list;
    for (int label = 8; label >= 1; --label)
        list.append(bool(shown[label]));
    return list;
}

QString TabSettingsDialogViewController::stringLabel(int label) const
{
    return label >= 1 && label <= 8 && shown[label] ? labels[label] : QString();
}

bool TabSettingsDialogViewController::stringLabelShown(int label) const
{
    return label >= 1 && label <= 8 && shown[label];
}

QStringList TabSettingsDialogViewController::tuningNames() const
{
    QStringList names;
    for (const GuitarTuning &tuning : GuitarTunings::presetsFor(stepperStrings))
        names.append(tuning.name);
    return names;
}

void TabSettingsDialogViewController::stringCountChange(int value)
{
    value = std::clamp(value, minStrings, maxStrings);
    if (value == stepperStrings)
        return;
    stepperStrings = value;
    // The tuning jumps to the new count's first preset, as if chosen.
    pickerRow = -1;
    pickTuning(0);
}

void TabSettingsDialogViewController::pickTuning(int row)
{
    const QList<GuitarTuning> &presets = GuitarTunings::presetsFor(stepperStrings);
    if (row < 0 || row >= presets.size())
        return;
    pickerRow = row;
    if (presets[row].stringNotes) {
        showTuning(*presets[row].stringNotes, stepperStrings);
        labelsBordered = false;
    } else {
        labelsBordered = true;
    }
    Q_EMIT changed();
}

int TabSettingsDialogViewController::labelAt(double x, double width) const
{
    if (width <= 0 || x < 0 || x > width)
        return 0;
    const double e = width * 0.125;
    const int label = x >= 7 * e ? 1 : 8 - int(x / e);
    return shown[label] ? label : 0;
}

// The note menu of one string

bool TabSettingsDialogViewController::openNoteMenu(int label, double originX, double originY,
                                                   double areaX, double areaY, double areaWidth,
                                                   double areaHeight)
{
    if (!stringLabelShown(label))
        return false;
    menuLabel = label;
    menuMovedAway = false;
    noteContextMenu = std::make_unique<ForceContextMenu>(
        QPointF(originX, originY), QRectF(areaX, areaY, areaWidth, areaHeight), this);
    const QStringList &notes = MusicNotes::allTexts();
    noteContextMenu->setItems(notes, std::max(int(notes.indexOf(labels[label])), 0));
    Q_EMIT noteMenuChanged();
    return true;
}

void TabSettingsDialogViewController::noteMenuMoved(double x, double y)
{
    if (!noteContextMenu)
        return;
    const QPointF point(x, y);
    if (QLineF(point, noteContextMenu->origin).length() > ForceContextMenu::entrySize * 0.5)
        menuMovedAway = true;
    noteContextMenu->moved(point);
    Q_EMIT noteMenuChanged();
}

void TabSettingsDialogViewController::noteMenuReleased(double x, double y)
{
    if (!noteContextMenu)
        return;
    const QPointF point(x, y);
    // A tap opens the ring and leaves it up: a mouse or a finger then taps the note.
    if (!menuMovedAway && noteContextMenu->indexAt(point) < 0) {
        menuMovedAway = true;
        noteContextMenu->selectedIndex = -1;
        Q_EMIT noteMenuChanged();
        return;
    }
    noteContextMenu->ended(point);
}

void TabSettingsDialogViewController::noteMenuCancelled()
{
    if (noteContextMenu)
        noteContextMenu->cancelled();
}

QVariantList TabSettingsDialogViewController::noteMenuEntries() const
{
    QVariantList entries;
    if (!noteContextMenu)
        return entries;
    for (int i = 0; i < noteContextMenu->labels.size(); ++i) {
        const QPointF center = noteContextMenu->entryCenter(i);
        entries.append(QVariantMap{{u"text"_qs, noteContextMenu->labels[i]},
                                   {u"x"_qs, center.x()},
                                   {u"y"_qs, center.y()}});
    }
    return entries;
}

void TabSettingsDialogViewController::forceContextMenuFinished(int selectedIndex)
{
    const int label = menuLabel;
    const QStringList &notes = MusicNotes::allTexts();
    menuLabel = 0;
    noteContextMenu.reset();
    if (selectedIndex >= 0 && selectedIndex < notes.size())
        chooseStringNote(label, notes[selectedIndex]);
    // The finger that chose lifts outside the panel a moment later: that is no tap out.
    ignoreTouchUps = true;
    ignoreTouchUpsTimer.start();
    Q_EMIT noteMenuChanged();
    Q_EMIT changed();
}

void TabSettingsDialogViewController::chooseStringNote(int label, const QString &note)
{
    if (!stringLabelShown(label) || !MusicNotes::fromText(note) || labels[label] == note)
        return;
    labels[label] = note;
    pickerRow = int(GuitarTunings::presetsFor(stepperStrings).size()) - 1;
    Q_EMIT changed();
}

void TabSettingsDialogViewController::stepStringNote(int label, int semitones)
{
    if (!stringLabelShown(label))
        return;
    const QStringList &notes = MusicNotes::allTexts();
    const int index = std::max(int(notes.indexOf(labels[label])), 0);
    chooseStringNote(label, notes[((index + semitones) % 12 + 12) % 12]);
}

// The other controls

void TabSettingsDialogViewController::setCapoSlider(double value)
{
    const int snapped = std::clamp(int(std::lround(value)), 0, maxCapoFret);
    if (snapped == capo)
        return;
    capo = snapped;
    Q_EMIT changed();
}

void TabSettingsDialogViewController::setFretCount(int value)
{
    frets = std::clamp(value, minFretCount, maxFretCount);
    Q_EMIT changed();
}

void TabSettingsDialogViewController::setAutoCursor(int value)
{
    cursorAmount = std::clamp(value, 0, maxAutoCursor);
    Q_EMIT changed();
}

void TabSettingsDialogViewController::setLyricSize(int value)
{
    lyricPercent = std::clamp(value, minLyricSize, maxLyricSize);
    Q_EMIT changed();
}

void TabSettingsDialogViewController::setDefaultStringCount(int value)
{
    defaultStrings = std::clamp(value, minStrings, maxStrings);
    Q_EMIT changed();
}

void TabSettingsDialogViewController::tempoSliderChanged(double value)
{
    value = std::clamp(value, 0.0, 1.0);
    tempoValue = int(std::lround(minTempo + (maxTempo - minTempo) * value));
    Q_EMIT changed();
}

void TabSettingsDialogViewController::viewAllGeneralPress()
{
    expanded = !expanded;
    Q_EMIT changed();
}

QString TabSettingsDialogViewController::viewAllGeneralTitle() const
{
    return expanded ? u"Collapse general settings"_qs : u"View all general settings"_qs;
}

QString TabSettingsDialogViewController::introButtTitle() const
{
    return introPreview().isEmpty() ? u"Add tab intro"_qs : u"Edit tab intro"_qs;
}

std::optional<QString> TabSettingsDialogViewController::introValueFor(const QString &typed)
{
    const QString trimmed = typed.trimmed();
    if (trimmed.isEmpty())
        return std::nullopt;
    QStringList lines = trimmed.split(u'\n', Qt::SkipEmptyParts);
    if (lines.size() < 16)
        return trimmed;
    // Never more than 15 lines, and nothing typed is lost: the rest runs on in the last.
    QStringList kept = lines.mid(0, 15);
    kept.last() += lines.mid(15).join(QString());
    return kept.join(u'\n');
}

void TabSettingsDialogViewController::introEdited(const QString &text)
{
    introTextValue = introValueFor(text);
    Q_EMIT changed();
}

// Saving

bool TabSettingsDialogViewController::changeTouchesContent() const
{
    if (stepperStrings == tabData.stringCount())
        return false;
    if (tabData.tabRowDatas.size() > 10)
        return true;
    for (const TabRowData &row : tabData.tabRowDatas) {
        for (const TabColumnData &column : row.colDatas) {
            if (!column.isSameColumn(TabColumnData(int(column.columnItems.size()))))
                return true;
        }
    }
    return false;
}

void TabSettingsDialogViewController::cancelAfterWarning()
{
    fillTuning();
    warning = false;
    Q_EMIT changed();
}

void TabSettingsDialogViewController::touchEndedOutside()
{
    if (ignoreTouchUps || noteContextMenu)
        return;
    Q_EMIT dismissed();
}

void TabSettingsDialogViewController::save(bool force)
{
    if (!force && changeTouchesContent()) {
        warning = true;
        Q_EMIT changed();
        return;
    }
    warning = false;
    bool anyChanged = false;
    auto write = [&anyChanged](auto &field, auto value) {
        if (field != value) {
            field = value;
            anyChanged = true;
        }
    };
    const bool notesOnTabChanged = saved.notesOnTab != notesOnTab;
    const bool fretCountChanged = saved.lastFretCount != frets;
    const bool colHeadersChanged = saved.hideColHeaders != !colHeaders;
    write(saved.notesOnTab, notesOnTab);
    write(saved.lastFretCount, qint64(frets));
    write(saved.autoCursorAmount, qint64(cursorAmount));
    write(saved.playSounds, playSounds);
    write(saved.defaultStringCount, qint64(defaultStrings));
    write(saved.disableFlashNavArrows, !flashNavArrows);
    write(saved.hideColHeaders, !colHeaders);
    write(saved.freeScrollSetting, freeScroll);
    if (anyChanged)
        saved.save();

    if (tabSettingsListener)
        tabSettingsListener->applyTabSettings(tuningFromLabels(), capo, lyricPercent,
                                              introTextValue, tempoValue, notesOnTabChanged,
                                              fretCountChanged, colHeadersChanged);
    // Last: whoever shows the dialog may let it go now.
    Q_EMIT dismissed();
}
