#pragma once

#include "model/tabdata.h"

#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <optional>

// What a painter must do for one column, in the order given.
struct ColumnDrawOp {
    enum class Kind { selectedBackground, dash, bar, text };
    Kind kind = Kind::dash;
    QRectF rect;
    QString text;
    // Text only: the blacker of the two weights, and the point size.
    bool black = false;
    double fontSize = 0.0;
    bool isNote = false;

    // A shape with no text: a selection, a dash or a bar.
    static ColumnDrawOp shape(Kind kind, const QRectF &rect)
    {
        ColumnDrawOp op;
        op.kind = kind;
        op.rect = rect;
        return op;
    }

    friend bool operator==(const ColumnDrawOp &, const ColumnDrawOp &) = default;
};

// One column of a shown row: the data it draws, its magic-mode selection and its render gate.
// The column is painted by its row, from the operations drawOps() lists.
class TabColumnView {
public:
    TabColumnView() = default;
    explicit TabColumnView(const TabColumnData &column);

    TabColumnData tabColData;
    bool renderNeeded = false;
    QList<bool> selectedColItems;
    bool forceBlack = false;
    bool ensureMinimumContentScaleFactor = false;
    std::optional<QStringList> tuning;

    // Takes over a column's content; true if it differs and so needs a redraw.
    bool setColumnData(const TabColumnData &column);
    // Writes one item under the bar rule; true if the column changed.
    bool setItem(int index, const ColumnItemType &item);
    // A selection list of the right length, all false, if the length changed.
    void fitSelection();

    // The drawing of this column in `frame`; `tabTuning` stands in when no own tuning is set.
    QList<ColumnDrawOp> drawOps(const QRectF &frame, const QStringList &tabTuning,
                                bool notesOnTab) const;

    static QRectF dashRect(const QRectF &cell, double columnWidth);
    static QRectF barRect(const QRectF &frame);
    // The weight and size of a text cell in a column of width `columnWidth`.
    static ColumnDrawOp textStyle(const QString &text, bool isNote, bool notesOnTab,
                                  double columnWidth);
    // Rasterisation scale of a text: never below the screen's, and at least 3 for print.
    static double contentScale(double ownScale, double screenScale, bool ensureMinimum);
};
