#pragma once

#include "model/viewmodeoptions.h"
#include "tabviewcontroller.h"

#include <QObject>
#include <QString>

// The view options dialog's state: the switches, the steppers and the speed slider, and the
// one refusal (nothing left to show). The screen's QML binds to it; closing hands the record to
// the view screen.
class ViewModeDialogViewController : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool showLyrics MEMBER showLyrics WRITE setShowLyrics NOTIFY changed)
    Q_PROPERTY(bool lyricsBelow MEMBER lyricsBelow WRITE setLyricsBelow NOTIFY changed)
    Q_PROPERTY(bool showColumnHeaders MEMBER showColumnHeaders WRITE setShowColumnHeaders NOTIFY changed)
    Q_PROPERTY(bool showTabContent MEMBER showTabContent WRITE setShowTabContent NOTIFY changed)
    Q_PROPERTY(bool twoColumns MEMBER twoColumns WRITE setTwoColumns NOTIFY changed)
    Q_PROPERTY(bool useMeasuresForPlayback MEMBER useMeasuresForPlayback NOTIFY changed)
    Q_PROPERTY(bool loopPlayback MEMBER loopPlayback NOTIFY changed)
    Q_PROPERTY(bool countIn MEMBER countIn NOTIFY changed)
    Q_PROPERTY(bool metronome MEMBER metronome NOTIFY changed)
    Q_PROPERTY(int colsPerBeat MEMBER colsPerBeat NOTIFY changed)
    Q_PROPERTY(int beatsPerMeasure MEMBER beatsPerMeasure NOTIFY changed)
    Q_PROPERTY(int playbackSpeedValue MEMBER playbackSpeedValue NOTIFY changed)
    Q_PROPERTY(double sliderValue READ sliderValue WRITE setSliderValue NOTIFY changed)
    Q_PROPERTY(QString defaultBpmText READ defaultBpmText CONSTANT)
    Q_PROPERTY(bool errorShown MEMBER errorShown NOTIFY changed)
    Q_PROPERTY(bool doneShown MEMBER doneShown NOTIFY changed)

public:
    static constexpr double minPlaybackVal = 25.0;
    static constexpr double maxPlaybackVal = 400.0;
    static constexpr int minColsPerBeat = 1;
    static constexpr int maxColsPerBeat = 8;
    static constexpr int minBeatsPerMeasure = 1;
    static constexpr int maxBeatsPerMeasure = 12;

    ViewModeDialogViewController(qint64 tabTempo, const ViewModeOptions &initialConfig,
                                 const ViewModeExtraOptions &extra, QObject *parent = nullptr);

    const qint64 tabTempo;
    const ViewModeOptions initialConfig;
    bool showLyrics, lyricsBelow, showColumnHeaders, showTabContent, twoColumns;
    bool useMeasuresForPlayback, loopPlayback, countIn, metronome;
    int colsPerBeat, beatsPerMeasure;
    int playbackSpeedValue = 80;
    bool errorShown = false;
    bool doneShown = true;
    // Not rounded: a stored speed outside 25 to 400 puts the slider outside its range.
    double slider = 0.0;

    double sliderValue() const { return slider; }
    void setSliderValue(double value);
    Q_INVOKABLE void resetPlaybackSpeed();
    QString defaultBpmText() const;
    // The visibility switches: each also takes the refusal back.
    void setShowLyrics(bool on) { setVisibility(showLyrics, on); }
    void setLyricsBelow(bool on) { setVisibility(lyricsBelow, on); }
    void setShowColumnHeaders(bool on) { setVisibility(showColumnHeaders, on); }
    void setShowTabContent(bool on) { setVisibility(showTabContent, on); }
    void setTwoColumns(bool on) { setVisibility(twoColumns, on); }

    // Done, or a touch outside the dialog. False, with the error shown, while lyrics, headers
    // and tab content are all off; otherwise `finished` carries the record.
    Q_INVOKABLE bool done();
    ViewModeOptions options() const;
    ViewModeExtraOptions extraOptions() const { return {countIn, metronome}; }

Q_SIGNALS:
    void changed();
    void finished();

private:
    void setVisibility(bool &field, bool on);
};
