#pragma once

#include "model/tabdata.h"
#include "music/guitartuning.h"
#include "surface/forcecontextmenu.h"

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVariantList>

#include <memory>
#include <optional>

class SavedData;

// The editor, which applies what the dialog saves.
class TabSettingsListener {
public:
    virtual ~TabSettingsListener() = default;
    virtual void applyTabSettings(const QStringList &tuning, qint64 capo, qint64 lyricSize,
                                  const std::optional<QString> &intro, qint64 tempo,
                                  bool notesOnTabChanged, bool fretCountChanged,
                                  bool colHeadersChanged) = 0;
};

// The tab settings dialog's decisions: it holds a copy of every value in its controls, keeps
// each in its limits, and changes nothing until saved. The tab's part goes to the listener, the
// global part to the settings. No window needed: the QML binds to the properties.
class TabSettingsDialogViewController : public QObject, public ForceContextMenuResponder {
    Q_OBJECT
    Q_PROPERTY(int stringCount READ stringCount WRITE stringCountChange NOTIFY changed)
    Q_PROPERTY(QStringList labelNotes READ labelNotes NOTIFY changed)
    Q_PROPERTY(QVariantList labelShown READ labelShown NOTIFY changed)
    Q_PROPERTY(bool labelsBordered MEMBER labelsBordered NOTIFY changed)
    Q_PROPERTY(QStringList tuningNames READ tuningNames NOTIFY changed)
    Q_PROPERTY(int tuningIndex READ tuningIndex WRITE pickTuning NOTIFY changed)
    Q_PROPERTY(bool notesOnTab MEMBER notesOnTab NOTIFY changed)
    Q_PROPERTY(int capoFret READ capoFret NOTIFY changed)
    Q_PROPERTY(int maxCapoFret MEMBER maxCapoFret CONSTANT)
    Q_PROPERTY(int fretCount READ fretCount WRITE setFretCount NOTIFY changed)
    Q_PROPERTY(int autoCursor READ autoCursor WRITE setAutoCursor NOTIFY changed)
    Q_PROPERTY(int lyricSize READ lyricSize WRITE setLyricSize NOTIFY changed)
    Q_PROPERTY(QString lyricSizeText READ lyricSizeText NOTIFY changed)
    Q_PROPERTY(QString introPreview READ introPreview NOTIFY changed)
    Q_PROPERTY(QString introButtTitle READ introButtTitle NOTIFY changed)
    Q_PROPERTY(int tempoValue MEMBER tempoValue NOTIFY changed)
    Q_PROPERTY(double tempoSliderValue READ tempoSliderValue NOTIFY changed)
    Q_PROPERTY(bool playSounds MEMBER playSounds NOTIFY changed)
    Q_PROPERTY(int defaultStringCount READ defaultStringCount WRITE setDefaultStringCount
                   NOTIFY changed)
    Q_PROPERTY(bool flashNavArrows MEMBER flashNavArrows NOTIFY changed)
    Q_PROPERTY(bool colHeaders MEMBER colHeaders NOTIFY changed)
    Q_PROPERTY(bool freeScroll MEMBER freeScroll NOTIFY changed)
    Q_PROPERTY(bool generalExpanded READ generalExpanded NOTIFY changed)
    Q_PROPERTY(QString viewAllGeneralTitle READ viewAllGeneralTitle NOTIFY changed)
    Q_PROPERTY(bool warningShown READ warningShown NOTIFY changed)
    Q_PROPERTY(bool ignoreTouchUps READ ignoreTouchUpsSet NOTIFY changed)
    Q_PROPERTY(QString tweaksHelpUrl READ tweaksHelpUrl CONSTANT)
    Q_PROPERTY(int noteMenuLabel READ noteMenuLabel NOTIFY noteMenuChanged)
    Q_PROPERTY(QVariantList noteMenuEntries READ noteMenuEntries NOTIFY noteMenuChanged)
    Q_PROPERTY(int noteMenuSelected READ noteMenuSelected NOTIFY noteMenuChanged)

public:
    static constexpr int minStrings = 4;
    static constexpr int maxStrings = 8;
    static constexpr int minFretCount = 21;
    static constexpr int maxFretCount = 80;
    static constexpr int maxAutoCursor = 3;
    static constexpr int minLyricSize = 25;
    static constexpr int maxLyricSize = 120;
    static constexpr int lyricSizeStep = 5;
    static constexpr double minTempo = 30.0;
    static constexpr double maxTempo = 300.0;
    static constexpr double noteMenuFontSize = 19.0;
    // The guide's page on the editing preferences.
    static QString tweaksHelpUrl() { return u"https://lutegrid.app/lutegrid/guide/#tabTweaksSection"_qs; }

    // `tabData` is read, never written; `maxCapo` is the highest fret the user can reach.
    TabSettingsDialogViewController(const TabData &tabData, SavedData &saved,
                                    TabSettingsListener *listener, int maxCapo,
                                    QObject *parent = nullptr);
    ~TabSettingsDialogViewController() override;

    const TabData &tabData;
    TabSettingsListener *tabSettingsListener;
    std::optional<QString> introTextValue;
    int tempoValue = 80;
    bool notesOnTab = false;
    bool playSounds = false;
    bool flashNavArrows = true;
    bool colHeaders = true;
    bool freeScroll = false;
    bool labelsBordered = false;
    const int maxCapoFret;

    int stringCount() const { return stepperStrings; }
    QStringList labelNotes() const;
    QVariantList labelShown() const;
    // Label 1 to 8; an empty text for a hidden label.
    QString stringLabel(int label) const;
    bool stringLabelShown(int label) const;
    QStringList tuningNames() const;
    int tuningIndex() const { return pickerRow; }
    int capoFret() const { return capo; }
    int fretCount() const { return frets; }
    int autoCursor() const { return cursorAmount; }
    int lyricSize() const { return lyricPercent; }
    QString lyricSizeText() const { return QString::number(lyricPercent) + u'%'; }
    QString introPreview() const { return introTextValue.value_or(QString()); }
    QString introButtTitle() const;
    double tempoSliderValue() const { return (tempoValue - minTempo) / (maxTempo - minTempo); }
    int defaultStringCount() const { return defaultStrings; }
    bool generalExpanded() const { return expanded; }
    QString viewAllGeneralTitle() const;
    bool warningShown() const { return warning; }
    bool ignoreTouchUpsSet() const { return ignoreTouchUps; }
    // The tuning the labels show, lowest string first, as saving reads it.
    QStringList tuningFromLabels() const;

    // Controls.
    Q_INVOKABLE void stringCountChange(int value);
    Q_INVOKABLE void pickTuning(int row);
    Q_INVOKABLE void setCapoSlider(double value);
    void setFretCount(int value);
    void setAutoCursor(int value);
    void setLyricSize(int value);
    void setDefaultStringCount(int value);
    Q_INVOKABLE void tempoSliderChanged(double value);
    Q_INVOKABLE void viewAllGeneralPress();
    // The intro dialog's Done: the text as typed; the value follows the intro's rules.
    Q_INVOKABLE void introEdited(const QString &text);
    static std::optional<QString> introValueFor(const QString &typed);

    // One string's note. The label under x in the string area (width w), 0 for none.
    Q_INVOKABLE int labelAt(double x, double width) const;
    // Opens the note menu of a shown label at `origin` in `area`; false for a hidden one.
    Q_INVOKABLE bool openNoteMenu(int label, double originX, double originY, double areaX,
                                  double areaY, double areaWidth, double areaHeight);
    Q_INVOKABLE void noteMenuMoved(double x, double y);
    // A lift that picks no entry near where the menu opened leaves it open to be tapped.
    Q_INVOKABLE void noteMenuReleased(double x, double y);
    Q_INVOKABLE void noteMenuCancelled();
    Q_INVOKABLE void chooseStringNote(int label, const QString &note);
    // A step through the notes from the keyboard.
    Q_INVOKABLE void stepStringNote(int label, int semitones);
    int noteMenuLabel() const { return menuLabel; }
    QVariantList noteMenuEntries() const;
    int noteMenuSelected() const { return noteContextMenu ? noteContextMenu->selectedIndex : -1; }
    void forceContextMenuFinished(int selectedIndex) override;

    // Saving and the warning.
    Q_INVOKABLE void saveChangesButt() { save(false); }
    Q_INVOKABLE void continueAfterWarning() { save(true); }
    Q_INVOKABLE void cancelAfterWarning();
    void save(bool force);
    // Whether saving would change what the tab holds.
    bool changeTouchesContent() const;
    // A touch ended outside the dialog's panel.
    Q_INVOKABLE void touchEndedOutside();
    Q_INVOKABLE void cancel() { Q_EMIT dismissed(); }

Q_SIGNALS:
    void changed();
    void noteMenuChanged();
    void dismissed();

private:
    void showTuning(const QStringList &notes, int count);
    void fillTuning();
    void setLabel(int label, const QString &note);

    SavedData &saved;
    int stepperStrings = 6;
    // Index 1 to 8 used, as the labels are numbered.
    QStringList labels = QStringList(9);
    QList<bool> shown = QList<bool>(9, false);
    int pickerRow = 0;
    int capo = 0;
    int frets = 25;
    int cursorAmount = 0;
    int lyricPercent = 100;
    int defaultStrings = 6;
    bool expanded = false;
    bool warning = false;
    bool ignoreTouchUps = false;
    QTimer ignoreTouchUpsTimer;
    std::unique_ptr<ForceContextMenu> noteContextMenu;
    int menuLabel = 0;
    bool menuMovedAway = false;
};
