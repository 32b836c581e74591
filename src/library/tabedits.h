#pragma once

#include "model/selectionbox.h"
#include "model/tabdata.h"
#include "services/lgundomanager.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// What one edit changed, so that views redraw only that.
struct TabChange {
    enum class Kind {
        // The items or chord names of `columns` in `row`.
        Columns,
        // The lyric lines of `row`, or which of them is selected.
        Lyrics,
        // A column was inserted at columns[0] of `row`; every other row grew by a blank column
        // at its end.
        ColumnInserted,
        // The column at columns[0] of `row` went; every other row lost its last column.
        ColumnRemoved,
        // Row `row` is new.
        RowInserted,
        // Row `row` went.
        RowRemoved,
        // Blank rows were added at the end, from `row` on, with no undo step.
        RowsAppended,
        // Every row was replaced, with no undo step.
        Rows,
    };
    Kind kind = Kind::Rows;
    int row = -1;
    QList<int> columns;
    // Made by an undo or a redo rather than by the user's own edit.
    bool undoing = false;
    // A block of a selection was written here: a selection in magic edit follows it.
    std::optional<SelectionBox> block;

    bool rowsInserted() const { return kind == Kind::RowInserted || kind == Kind::RowsAppended; }
    bool rowsRemoved() const { return kind == Kind::RowRemoved; }
};

// The tab's own settings that the settings dialog changes together, as one step.
struct TabValues {
    QStringList stringNotes;
    qint64 capoFret = 0;
    qint64 lyricSize = 100;
    std::optional<QString> introText;

    friend bool operator==(const TabValues &, const TabValues &) = default;
};

// Every edit of a tab's rows. Each writes the model, registers its inverse on the undo manager
// (which marks the document changed) and tells who listens what changed. The inverses capture
// this object and plain values, never a view, so undo works whatever is on screen. Operations
// that can be refused return a message, and nothing has changed when one comes back.
class TabEdits : public QObject {
    Q_OBJECT

public:
    using Message = std::optional<QString>;

    static constexpr int minNumTabColumns = 12;
    static constexpr int maxNumTabColumns = 64;

    // Neither is owned. Without a tab every edit does nothing.
    TabEdits(TabData *tab, LgUndoManager *undoManager, QObject *parent = nullptr);

    TabData *tab() const { return tabData; }
    void setTab(TabData *tab) { tabData = tab; }
    LgUndoManager *undoManager() const { return undo; }
    // The rows, empty without a tab.
    const QList<TabRowData> &rows() const;
    int columnCount() const;

    // Shape.
    Message insertColumn(int row, int column, const TabColumnData &columnData);
    Message removeColumn(int row, int column);
    bool insertTabRow(int index, const TabRowData &rowData);
    bool removeTabRow(int index);

    // Column items. Each answers whether anything changed.
    bool setColumnItem(int row, int column, int itemIndex, const ColumnItemType &item);
    bool replaceColumn(int row, int column, const TabColumnData &newColumn);
    bool setColumnChordName(int row, int column, const std::optional<QString> &name);
    bool moveStringItems(int fromItem, int toItem, int row);

    // Blocks of a selection. Cells go column by column, each column's items from the box's
    // first item to its last; names go over the box's header columns, absent past the row.
    using Names = QList<std::optional<QString>>;
    QList<ColumnItemType> readBlockItems(const SelectionBox &box) const;
    // Nothing when the box holds no chord names.
    std::optional<Names> readBlockChordNames(const SelectionBox &box) const;
    // Writes the cells (under the bar rule, cell by cell) and, if given, the names of the box:
    // one step. False, and no step, when nothing changed.
    bool writeBlock(const SelectionBox &box, const QList<ColumnItemType> &items,
                    const std::optional<Names> &names);
    // The source's cells and names go blank, then the destination takes what the source held:
    // one step, whatever the overlap. False when the destination is the source or leaves the
    // row.
    bool moveBlock(const SelectionBox &source, const SelectionBox &destination);

    // A press in progress writes its column live with no step; commitColumn makes the whole
    // press one step back to `before`.
    bool previewColumn(int row, int column, const TabColumnData &data);
    bool commitColumn(int row, int column, const TabColumnData &before);

    // Lyric lines. Selecting a line is no edit and has no step.
    bool setLyricLine(int row, int line, const QString &text);
    bool insertLyricLine(int row, int line, const QString &text);
    bool removeLyricLine(int row, int line);
    bool selectLyricLine(int row, int line);

    // Tuning, capo, lyric size and intro as one step. A tuning of another length converts
    // every column: fewer strings drop the highest items, more add blanks at the low end. The
    // step's inverse puts dropped items back, so undo restores the rows as they were.
    // Answers whether anything changed.
    bool setTabValues(const TabValues &values);
    TabValues tabValues() const;

    // Rows from outside the undo stack, as on loading, and blank padding at the end.
    void replaceRows(const QList<TabRowData> &rows);
    void appendBlankRows(int count, int columns, int strings);

Q_SIGNALS:
    void tabChanged(const TabChange &change);
    // The tab's values changed (done, undone or redone); `stringCountChanged` when the rows
    // were converted too.
    void tabValuesChanged(bool stringCountChanged);

private:
    // Whole columns as they stood, so an undo puts back what the bar rule changed too.
    struct ColumnPatch {
        int row = -1;
        int column = -1;
        TabColumnData data;
        friend bool operator==(const ColumnPatch &, const ColumnPatch &) = default;
    };
    QList<ColumnPatch> snapshotColumns(const QList<SelectionBox> &boxes) const;
    void writeBlockCells(const SelectionBox &box, const QList<ColumnItemType> &items,
                         const std::optional<Names> &names);
    // Puts the columns back as one step whose inverse is the same kind of step; `selectAfter`
    // is the block a selection follows, `selectBefore` the one it follows when undone.
    void restoreColumns(const QList<ColumnPatch> &patches, const SelectionBox &selectAfter,
                        const SelectionBox &selectBefore);
    void registerBlockInverse(const QList<ColumnPatch> &before, const SelectionBox &selectBefore,
                              const SelectionBox &selectAfter);
    void notifyBlock(const QList<ColumnPatch> &patches, const SelectionBox &block);
    // Items taken off the top of each column, by row and column.
    using DroppedItems = QList<QList<QList<ColumnItemType>>>;
    // How the columns reach a new string count: as the model converts them, by putting back
    // the top items a conversion dropped, or by taking off the low items one added.
    struct Conversion {
        enum class Kind { Convert, RestoreTop, TrimBottom };
        Kind kind = Kind::Convert;
        DroppedItems items;
    };
    bool applyTabValues(const TabValues &values, const Conversion &conversion);
    // Answers the conversion that undoes this one.
    Conversion convertStringCount(int count, const Conversion &conversion);
    bool validColumn(int row, int column) const;
    void writeColumn(int row, int column, const TabColumnData &data);
    bool setLyricLines(int row, const QStringList &lines, int selected);
    void registerInverse(std::function<void(TabEdits &)> inverse);
    void notify(TabChange::Kind kind, int row, QList<int> columns = {});

    TabData *tabData;
    QPointer<LgUndoManager> undo;
};
