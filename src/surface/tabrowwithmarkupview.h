#pragma once

#include "model/tabdata.h"

#include <QList>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <optional>

// A whole row for reading: tuning letters, lyric lines, chord names and the string lines, all
// sized from the width it is given. View mode, print and reduced rows lay out through it.
class TabRowWithMarkupView {
public:
    struct Options {
        QString fontName;
        bool showLyrics = true;
        bool showNotesView = true;
        bool showTabRowViews = true;
        bool showChordNamesInit = true;
        bool emptyChordNamesOverride = false;
        bool lyricsBelow = false;
        bool isEditMode = false;
        int minLyricLines = 0;
        // The user hides chord-name headers: the band they would take goes to the lyrics.
        bool hideColHeaders = false;
        // Notes read as note names where the tuning allows.
        bool notesOnTab = false;
    };

    TabRowWithMarkupView(const TabRowData &row, const QStringList &stringNotes, int capoFretNum,
                         int lyricsSizePercentange, const Options &options);

    Options options;
    TabRowData rowData;
    std::optional<QStringList> stringNotes;
    std::optional<int> numColumns;
    int stringCount = 0;
    int capoFretNum = 0;
    int lyricsSizePercentange = 100;
    double lyricLineHeight = 0.0;
    double lyricsHeight = 0.0;
    double requestedHeight = 0.0;
    double lyricUnadjustedHeight = 0.0;
    // The lines the lyric band shows.
    QStringList lyricLines;
    QSizeF frameSize;

    bool showsChordNames() const;
    // The height ratio for a width; also measures the lyric band.
    void setWidth(double width);

    struct Layout {
        QRectF notesView;
        double notesTopPadding = 0.0;
        QRectF lyricsView;
        QList<QRectF> lyricLabels;
        double lyricFontSize = 0.0;
        QRectF chordNamesDisplay;
        QRectF tabRowView;
    };
    // Where every part stands in a frame of `size`.
    Layout layout(const QSizeF &size) const;
    // The band that playback lights up over one column.
    QRectF columnHighlightRect(int column, const QSizeF &size) const;

private:
    double chordBand() const;
    double lyricBand() const;
};

// Two reading rows side by side, each a little under half the width.
class TabRowSideBySideWithMarkupView {
public:
    static constexpr int numTabRows = 2;

    // Each row's frame in a view of `width`, given the heights the rows asked for.
    static QList<QRectF> childFrames(double width, const QList<double> &heights);
    // The row under a point, in frames grown a little so a near miss still counts; -1 if none.
    static int rowAt(QPointF point, double width, const QList<QRectF> &frames);
};
