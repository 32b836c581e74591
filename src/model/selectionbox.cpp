#include "selectionbox.h"

SelectionBox::SelectionBox(int column, int columnCount, int item, int itemCount, int row)
    : colIndexStart(column), colIndexEnd(column + columnCount - 1), itemIndexStart(item),
      itemIndexEnd(item + itemCount - 1), tabRowIndex(row)
{
}

int SelectionBox::columnCount() const
{
    return colIndexStart == -1 ? 0 : colIndexEnd - colIndexStart + 1;
}

int SelectionBox::itemCount() const
{
    return itemIndexStart == -1 ? 0 : itemIndexEnd - itemIndexStart + 1;
}

int SelectionBox::headerCount() const
{
    return colHeaderStart == -1 ? 0 : colHeaderEnd - colHeaderStart + 1;
}

QRectF SelectionBox::cellFrame(double columnWidth, double itemHeight, double x, double y) const
{
    return QRectF(x + colIndexStart * columnWidth, y + itemIndexStart * itemHeight,
                  columnCount() * columnWidth, itemCount() * itemHeight);
}

int SelectionBox::selectedCellCount() const
{
    return columnCount() * itemCount();
}

bool SelectionBox::containsColumn(int column) const
{
    return colIndexStart != -1 && column >= colIndexStart && column <= colIndexEnd;
}

bool SelectionBox::containsItem(int item) const
{
    return itemIndexStart != -1 && item >= itemIndexStart && item <= itemIndexEnd;
}
