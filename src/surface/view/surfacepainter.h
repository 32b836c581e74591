#pragma once

#include "surface/chordnamesdisplay.h"
#include "surface/tabcolumnview.h"

#include <QColor>
#include <QFont>
#include <QList>
#include <QRectF>
#include <QStringList>

class QPainter;

// The drawing that the row items share: columns from their draw operations, chord names from
// their fitted labels, letters beside the strings.
namespace SurfacePainter {

struct Colors {
    QColor label;
    QColor selectBg;
    QColor indicator;
};
// The palette's colours, or black for print.
Colors colors(bool forceBlack);

// Paints the columns of a row standing in `rowRect`, skipping those outside `clip`.
void paintColumns(QPainter &painter, const QList<TabColumnView> &columns, const QRectF &rowRect,
                  const QStringList &tuning, bool notesOnTab, const Colors &colors,
                  const QRectF &clip);
void paintChordNames(QPainter &painter, const ChordNamesDisplay &display, const QPointF &origin,
                     const Colors &colors);
// Text centred in a box, shrunk to fit its width when it is too long.
void paintFittedText(QPainter &painter, const QRectF &box, const QString &text, QFont font);

} // namespace SurfacePainter
