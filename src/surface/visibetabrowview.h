#pragma once

#include "chordnamesdisplay.h"
#include "tabcolumnview.h"

#include <QList>
#include <QRectF>
#include <QString>

// The text field of a shown row's selected lyric line, as the surface lays it out.
struct LyricsField {
    QRectF frame;
    QString text;
    double fontSize = 24.0;
};

// The views of one shown row, kept across moves and pointed at other model rows.
class VisibeTabRowView {
public:
    LyricsField lyricsField;
    ChordNamesDisplay chordNamesDisplay;
    QRectF tabRowFrame;
    QList<TabColumnView> tabColumnViews;
};
