#include "tabeditview.h"

#include "services/lgundomanager.h"
#include "surfacelog.h"

#include <QElapsedTimer>

#include <algorithm>

Q_LOGGING_CATEGORY(lcSurface, "lutegrid.surface")

// A tab of the surface's own, for a surface that edits no document.
struct TabEditView::OwnTab {
    // A placeholder row until a tab is loaded.
    TabData tab{QString(), {TabRowData(32, 6)}, standardStringNotes(6), 0, std::nullopt};
    LgUndoManager undo;
    TabEdits edits{&tab, &undo};
};

TabEditView::TabEditView(QObject *parent) : QObject(parent)
{
    connect(&cursor, &TabEditCursor::columnChangeShown, this, &TabEditView::placeEditHighlight);
    moveTabRowDelayTimer.setSingleShot(true);
    moveTabRowDelayTimer.setInterval(100);
    connect(&moveTabRowDelayTimer, &QTimer::timeout, this, [this] {
        if (const std::optional<int> row = std::exchange(throttledRow, std::nullopt))
            moveToTabRow(*row, true, false);
    });
    lyricChangeTimer.setSingleShot(true);
    lyricChangeTimer.setInterval(1000);
    connect(&lyricChangeTimer, &QTimer::timeout, this, &TabEditView::commitLyricsField);
    uptime = [] {
        static QElapsedTimer clock;
        if (!clock.isValid())
            clock.start();
        return double(clock.nsecsElapsed()) / 1e9;
    };
    connect(&dragScrollTimer, &QTimer::timeout, this, &TabEditView::dragScrollTick);
    connect(&noteMenu, &TabNoteMenu::changed, this, &TabEditView::menuChanged);
    connect(&renderGate, &RenderGate::columnsNeedRender, this, &TabEditView::columnsRendered);
    connect(&renderGate, &RenderGate::chordNamesNeedRender, this, &TabEditView::chordNamesRendered);

    own = std::make_unique<OwnTab>();
    setTabEdits(nullptr);
    setNumTabColumns(32);
    editColumnHighlight = editColumnFrame();
}

TabEditView::~TabEditView()
{
    disconnect(editsConnection);
}

// The tab edited

void TabEditView::setTabEdits(TabEdits *tabEdits)
{
    disconnect(editsConnection);
    edits = tabEdits ? tabEdits : &own->edits;
    editsConnection = connect(edits.data(), &TabEdits::tabChanged, this, &TabEditView::tabChanged);
}

TabEdits *TabEditView::tabEdits() const
{
    return edits ? edits.data() : &own->edits;
}

const TabData &TabEditView::tab() const
{
    static const TabData none(QString(), 0);
    const TabData *data = tabEdits()->tab();
    return data ? *data : none;
}

LgUndoManager *TabEditView::docUndoManager() const
{
    return tabEdits()->undoManager();
}

const QList<TabRowData> &TabRowsView::list() const
{
    return view.tab().tabRowDatas;
}

double TabEditView::headerBandHeight() const
{
    return lyricsHeightSpacing + (settings.hideColHeaders ? 0.0 : chordNamesDisplaySpacing);
}

double TabEditView::tabRowPitch() const
{
    return headerBandHeight() + tabRowHeight + tabRowVertSpacing;
}

double TabEditView::itemHeight() const
{
    return stringNotes.isEmpty() ? 0.0 : tabRowHeight / stringNotes.size();
}

double TabEditView::tabLeftInset() const
{
    if (!freeVerticalScroll)
        return 0.0;
    return std::max(0.0, (frameSize.width() - tabWidth - rightMarginWidth) * 0.5);
}

int TabEditView::shownIndexOfRow(int row) const
{
    const int shown = row - tabRowIndex;
    return shown >= 0 && shown < showingCount() ? shown : -1;
}

QRectF TabEditView::columnFrame(int row, int column) const
{
    Q_UNUSED(row);
    return SelectionBox(column, 1, 0, stringCount(), 0)
        .cellFrame(tabColumnWidth, itemHeight(), 0, 0)
        .adjusted(-2.0, -2.0, 2.0, 2.0);
}

// Position and content

void TabEditView::loadTabRows(const QList<TabRowData> &rows)
{
    tabEdits()->replaceRows(rows);
    loadTabRows();
}

void TabEditView::loadTabRows()
{
    tabRowIndex = 0;
    if (!tabRows.isEmpty())
        setNumTabColumns(int(tabRows.first().colDatas.size()));
    refreshShowingRows(false);
}

void TabEditView::replaceTabRows(const QList<TabRowData> &rows)
{
    tabEdits()->replaceRows(rows);
    replaceTabRows();
}

void TabEditView::replaceTabRows()
{
    if (!tabRows.isEmpty())
        setNumTabColumns(int(tabRows.first().colDatas.size()));
    tabEdits()->appendBlankRows(int(showingTabRows.size() - tabRows.size()), numTabColumns,
                                stringCount());
    moveToTabRow(std::min(tabRowIndex, int(tabRows.size()) - showingCount()), false, true);
}

void TabEditView::setNumTabColumns(int count)
{
    if (count == numTabColumns)
        return;
    numTabColumns = count;
    tabWidth = tabColumnWidth * count;
    contentSize.setWidth(tabWidth + rightMarginWidth);
    rebuildShowingRowViews();
    editColIndex = std::min(editColIndex, count - 1);
    notifyColumnCountChange();
    Q_EMIT layoutChanged();
}

void TabEditView::notifyColumnCountChange()
{
    if (tabRowChangeListener)
        tabRowChangeListener->tabWidthChanged(tabWidth);
}

void TabEditView::refreshShowingRows(bool forceRender)
{
    // The fields are filled from the model again: typed text still waiting is written first.
    if (pendingLyric)
        commitLyricsField();
    const bool hideHeaders = settings.hideColHeaders;
    for (int i = 0; i < showingCount(); ++i) {
        const int row = tabRowIndex + i;
        if (row < 0 || row >= tabRows.size())
            continue;
        const TabRowData &model = tabRows[row];
        VisibeTabRowView &view = showingTabRows[i];
        view.lyricsField.text = model.lyricText().value_or(QString());

        ChordNamesDisplay::Names names;
        names.reserve(model.colDatas.size());
        for (const TabColumnData &column : model.colDatas)
            names.append(column.chordName);
        if (view.chordNamesDisplay.chordNames != names || forceRender)
            view.chordNamesDisplay.setChordNames(names);
        view.chordNamesDisplay.hidden = hideHeaders;
        if (view.chordNamesDisplay.renderNeeded)
            queueChordNamesRender(i);

        if (view.tabColumnViews.size() != model.colDatas.size()) {
            // A row of another width than the views: build them again for it.
            fillShownRow(view, row);
            for (int j = 0; j < view.tabColumnViews.size(); ++j)
                queueColumnRender(i, j);
        } else {
            for (int j = 0; j < view.tabColumnViews.size(); ++j) {
                TabColumnView &columnView = view.tabColumnViews[j];
                const bool renderNow =
                    forceRender || !columnView.tabColData.isSameColumn(model.colDatas[j]);
                columnView.tabColData = model.colDatas[j];
                columnView.fitSelection();
                if (renderNow)
                    queueColumnRender(i, j);
            }
        }
        Q_EMIT shownRowChanged(i);
    }
    if (magicEditMode && magicSelectionBox)
        showMagicSelection();
}

void TabEditView::fillShownRow(VisibeTabRowView &view, int row)
{
    view.tabColumnViews.clear();
    if (row < 0 || row >= tabRows.size())
        return;
    const TabRowData &model = tabRows[row];
    view.tabColumnViews.reserve(model.colDatas.size());
    for (const TabColumnData &column : model.colDatas)
        view.tabColumnViews.append(TabColumnView(column));
    ChordNamesDisplay::Names names;
    for (const TabColumnData &column : model.colDatas)
        names.append(column.chordName);
    view.chordNamesDisplay.setChordNames(names);
}

void TabEditView::setFrameSize(const QSizeF &size)
{
    if (size == frameSize)
        return;
    frameSize = size;
    layoutSubviews();
}

void TabEditView::setContentOffset(const QPointF &offset)
{
    if (offset == contentOffset)
        return;
    contentOffset = offset;
    Q_EMIT contentOffsetChanged();
}

// The change notice: the one place where views follow the rows, after an edit of the
// surface's own as after an undo or a redo.

void TabEditView::tabChanged(const TabChange &change)
{
    using Kind = TabChange::Kind;
    noteMenu.tabChanged(change);
    Q_EMIT tabDataChanged(change);
    switch (change.kind) {
    case Kind::Rows:
    case Kind::RowsAppended:
        // Loading and padding: whoever did it lays the rows out.
        return;
    case Kind::RowInserted:
    case Kind::RowRemoved:
        syncRowsAfterShapeChange(change);
        return;
    case Kind::ColumnInserted:
    case Kind::ColumnRemoved:
        editShowingTabRowIndex =
            std::max(0, std::min(showingCount() - 1, std::max(change.row - tabRowIndex, 0)));
        showColumnChange(change.columns.value(0));
        setNumTabColumns(tabEdits()->columnCount());
        break;
    case Kind::Columns:
        for (int column : change.columns)
            syncColumn(change.row, column);
        // A press in progress writes the cursor's own column: nothing to bring into view.
        if (preEditColumnData)
            return;
        break;
    case Kind::Lyrics:
        syncLyrics(change.row);
        break;
    }
    const bool oneColumn = change.columns.size() == 1;
    showEditedPlace(change.row, oneColumn ? std::optional<QRectF>(
                                                columnFrame(change.row, change.columns.first()))
                                          : std::nullopt);
    if (change.undoing && change.kind == Kind::Columns && oneColumn) {
        // An undone column change puts the cursor where it happened.
        setEditPosition(change.columns.first(), change.row - tabRowIndex);
        if (magicSelectionBox)
            clearMagicSelection();
    }
    if (change.block && magicEditMode)
        followBlock(*change.block);
}

void TabEditView::syncColumn(int row, int column)
{
    const int shown = shownIndexOfRow(row);
    if (shown < 0 || row >= tabRows.size() || column < 0 || column >= tabRows[row].colDatas.size())
        return;
    const TabColumnData &data = tabRows[row].colDatas[column];
    VisibeTabRowView &view = showingTabRows[shown];
    if (column < view.tabColumnViews.size() && view.tabColumnViews[column].setColumnData(data))
        queueColumnRender(shown, column);
    if (view.chordNamesDisplay.chordNames.value(column) != data.chordName) {
        view.chordNamesDisplay.setChordName(data.chordName, column, false);
        Q_EMIT chordNamesNeedRender(shown);
    }
}

void TabEditView::syncLyrics(int row)
{
    const int shown = shownIndexOfRow(row);
    if (shown < 0 || row >= tabRows.size())
        return;
    // What is typed and not yet written stays in its field.
    if (pendingLyric && pendingLyric->row == row)
        return;
    showingTabRows[shown].lyricsField.text = tabRows[row].lyricText().value_or(QString());
    Q_EMIT shownRowChanged(shown);
}

void TabEditView::syncRowsAfterShapeChange(const TabChange &change)
{
    const int index = change.row;
    if (change.kind == TabChange::Kind::RowInserted) {
        const int countBefore = int(tabRows.size()) - 1;
        if (countBefore < visibleTabRowCountPotential && tabRowChangeListener)
            tabRowChangeListener->tabRowCountChanged();
        // The new row stands at the bottom of the window.
        const int target = freeVerticalScroll ? index : std::max(index - showingCount() + 1, 0);
        moveToTabRow(target, true, true);
        return;
    }
    if (tabRows.size() < showingTabRows.size() && tabRowChangeListener)
        tabRowChangeListener->tabRowCountChanged();
    const int last = int(tabRows.size()) - showingCount();
    moveToTabRow(freeVerticalScroll || last >= index ? index : last, false, true);
}

void TabEditView::showEditedPlace(std::optional<int> row, std::optional<QRectF> scrollFrame)
{
    if (row && !freeVerticalScroll)
        moveToTabRow(*row, false, false);
    if (scrollFrame) {
        QRectF frame = *scrollFrame;
        if (freeVerticalScroll)
            frame.moveTop(headerBandHeight() + tabRowPitch() * row.value_or(tabRowIndex));
        scrollToShowFrame(frame);
    }
}
