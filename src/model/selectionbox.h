#pragma once

#include <QRectF>
#include <QtGlobal>

// A rectangle of cells and chord names within one row. Item indices count from 0 at the top
// line of the tab; a start of -1 means that side of the selection is empty.
struct SelectionBox {
    int colIndexStart = -1;
    int colIndexEnd = -1;
    int itemIndexStart = -1;
    int itemIndexEnd = -1;
    int tabRowIndex = 0;
    int colHeaderStart = -1;
    int colHeaderEnd = -1;

    SelectionBox() = default;
    SelectionBox(int column, int columnCount, int item, int itemCount, int row);

    // Counts of the cell side; an empty side counts as 0 whatever its end says.
    int columnCount() const;
    int itemCount() const;
    int headerCount() const;
    bool hasCells() const { return colIndexStart != -1 && itemIndexStart != -1; }
    bool hasHeaders() const { return colHeaderStart != -1; }

    QRectF cellFrame(double columnWidth, double itemHeight, double x, double y) const;
    int selectedCellCount() const;

    bool containsColumn(int column) const;
    bool containsItem(int item) const;

    friend bool operator==(const SelectionBox &, const SelectionBox &) = default;
};
