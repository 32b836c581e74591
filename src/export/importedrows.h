#pragma once

#include "model/tabdata.h"

#include <QList>
#include <QStringList>

// Rows as the editor takes them, from columns read out of another program's file.
namespace ImportedRows {

// Pieces no wider than `widest`, each broken after a bar where one stands in its second half.
QList<QList<TabColumnData>> fit(const QList<TabColumnData> &columns, int widest);

// Rows of one width (the widest, and at least the editor's narrowest), blank columns added at
// the end, with their lyric lines.
QList<TabRowData> evened(QList<QList<TabColumnData>> columns, const QList<QStringList> &lyrics,
                         int stringCount);

} // namespace ImportedRows
