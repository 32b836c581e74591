#pragma once

#include "library/tabedits.h"
#include "model/tabdata.h"

#include <QList>

#include <optional>

// Rows read from elsewhere (a plain-text tab on the clipboard) written into the tab at the
// cursor as one undo step: a piece that fits the cursor row overwrites the columns from the
// cursor on; anything larger comes in as new rows below the cursor row, as wide as the tab's.
namespace TabPaste {

// A message when nothing could be pasted; nothing changed then.
std::optional<QString> pasteRows(TabEdits &edits, int row, int column,
                                 const QList<TabRowData> &rows);

} // namespace TabPaste
