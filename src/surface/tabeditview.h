#pragma once

#include "chordnamesdisplay.h"
#include "fretposition.h"
#include "library/tabedits.h"
#include "model/selectionbox.h"
#include "model/tabdata.h"
#include "rendergate.h"
#include "surfacelisteners.h"
#include "surfacesettings.h"
#include "tabeditcursor.h"
#include "tabnotemenu.h"
#include "tabrowsview.h"
#include "visibetabrowview.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

class LgUndoManager;

// Where a block dragged near an edge scrolls the rows; none is an absent value.
enum class DragScrollDirection { up, down, left, right };

// The editing surface as logic: the window of a tab's rows shown with their geometry in points
// (tabeditviewport.cpp), where the cursor goes (tabeditviewcursor.cpp) and the edit operations
// (tabeditoperations.cpp), which go through TabEdits on the tab's own rows and redraw on its
// change notice. The cursor's state (TabEditCursor), the note menu (TabNoteMenu) and the render
// gate (RenderGate) are objects of their own that it holds. It draws nothing; the views read the
// shown rows and redraw when told. Geometry is in content coordinates: the top left of the first
// shown row's lyric band is (0, 0) and contentOffset scrolls over it.
class TabEditView : public QObject, public ChordNamesDisplayListener, private NoteMenuHost {
    Q_OBJECT

public:
    using Message = std::optional<QString>;

    explicit TabEditView(QObject *parent = nullptr);
    ~TabEditView() override;

    // The tab edited: a document's, or, until one is given, a one-row tab of the surface's own
    // with its own undo manager. Not owned; nullptr goes back to the surface's own.
    void setTabEdits(TabEdits *edits);
    TabEdits *tabEdits() const;
    const TabData &tab() const;
    LgUndoManager *docUndoManager() const;

    static constexpr int minNumTabColumns = TabEdits::minNumTabColumns;
    static constexpr int maxNumTabColumns = TabEdits::maxNumTabColumns;
    int numTabColumns = 0;
    static constexpr double tabColumnWidth = 25.0;
    static constexpr double lyricsHeightSpacing = 54.0;
    static constexpr double chordNamesDisplaySpacing = 25.0;
    static constexpr double tabRowVertSpacing = 20.0;
    double tabWidth = 0.0;
    double tabRowHeight = 0.0;
    double rightMarginWidth = 0.0;
    bool rightMarginContentBlocker = false;
    QStringList stringNotes;
    int lyricsSizePercentage = 100;
    const TabRowsView tabRows{*this};
    int tabRowIndex = 0;
    QList<VisibeTabRowView> showingTabRows;
    // The cursor keeps its own state; these names reach into it for the editor and the items.
    TabEditCursor cursor;
    int &editShowingTabRowIndex = cursor.editShowingTabRowIndex;
    int &editColIndex = cursor.editColIndex;
    static constexpr double editColBorderWidth = TabEditCursor::editColBorderWidth;
    std::optional<QRectF> &editColumnHighlight = cursor.editColumnHighlight;
    bool &editColumnHighlightHidden = cursor.editColumnHighlightHidden;
    int &editColItemIndex = cursor.editColItemIndex;
    std::optional<TabColumnData> preEditColumnData;
    // The note menu keeps its own state; these names reach into it for the items and tests.
    TabNoteMenu noteMenu{*this};
    ForceLongPressGestureRecognizer &forceGestureRecognizer = noteMenu.forceGestureRecognizer;
    const std::unique_ptr<ForceContextMenu> &noteContextMenu = noteMenu.menu();
    const std::optional<NoteContextMenuSource> &noteContextMenuSource = noteMenu.source();
    bool magicEditMode = false;
    std::optional<SelectionBox> magicSelectionBox;
    QTimer moveTabRowDelayTimer;
    // A burst of typing in a lyric field becomes one edit a second after the last key.
    QTimer lyricChangeTimer;
    EditHighlightListener *editHighlightListener = nullptr;
    TabRowChangeListener *tabRowChangeListener = nullptr;
    int visibleTabRowCountPotential = -1;
    bool freeVerticalScroll = false;
    double baseTabRowHeightForFreeScroll = 200.0;
    bool tabRowTouchesEnabled = true;

    // The scroll view: its frame size, the scrolled offset and the size of what scrolls.
    QSizeF frameSize;
    QPointF contentOffset;
    QSizeF contentSize;
    SurfaceSettings settings;

    // Derived geometry.
    double headerBandHeight() const;
    double tabRowPitch() const;
    double itemHeight() const;
    double tabLeftInset() const;
    int stringCount() const { return int(stringNotes.size()); }
    int showingCount() const { return int(showingTabRows.size()); }

    // Position and content. Without rows: the tab's rows were replaced, show them anew. With
    // rows: they replace the tab's, with no undo step, as from a file.
    void loadTabRows();
    void loadTabRows(const QList<TabRowData> &rows);
    void replaceTabRows();
    void replaceTabRows(const QList<TabRowData> &rows);
    void setNumTabColumns(int count);
    void refreshShowingRows(bool forceRender);
    void setFrameSize(const QSizeF &size);
    void setContentOffset(const QPointF &offset);

    // Cursor.
    void setEditPosition(int column, int shownRow);
    void moveEditItem(int delta);
    void setEditItem(int index);
    CursorGeometry cursorGeometry() const;
    QRectF itemIndicatorFrame() const;
    QRectF editColumnFrame() const;
    void placeEditHighlight();
    void scrollToShowX(double minX, double maxX);
    void scrollToShowY(double minY, double maxY);
    bool canShowTabRow(int row) const;
    bool canMoveTabRow(int delta) const;
    void moveToTabRow(int row, bool exactTop, bool forceRefresh);
    void moveToTabRowThrottled(int row);
    void notifyTabRowPosition();
    // Touches in content coordinates.
    void touchesBegan(const QList<QPointF> &points);

    // Shape.
    Message addColumnAtCursor();
    Message insertColumn(int row, int column, const TabColumnData &columnData);
    Message removeColumn(int row, int column);
    void showColumnChange(int column);
    void insertTabRow(int index, const TabRowData &rowData);
    void removeTabRow(int index);
    void appendBlankTabRow();

    // Rows shown and their size.
    void setFreeVerticalScroll(bool free, double rowBandHeight, bool useDefaultHeight);
    void setVisibleTabRowCount(int count);
    void rebuildShowingRowViews();
    double trailingContentGap() const;
    void layoutSubviews();

    // Undo: the steps are on the tab's undo manager.
    void undoEdit();
    void redoEdit();

    // Column items.
    // Gives the item the press wrote, for the caller to sound; nothing if nothing was written.
    std::optional<ColumnItemType> pressFret(int stringNumber, qint64 fret);
    bool commitFretPress();
    void cancelFretPress();
    void putItemAtCursor(const QString &text);
    void setColumnItemAt(int row, int column, int itemIndex, const ColumnItemType &item,
                         bool moveCursor);
    void replaceColumn(int row, int column, const TabColumnData &newColumn);
    void clearCursorColumn();
    void putColumnAtCursor(const std::optional<QString> &chordName,
                           const QList<ColumnItemType> &items);
    void toggleBarColumn();
    void setColumnChordName(int row, int column, const std::optional<QString> &name);
    // Lyric lines, each with undo but selectLyricLine.
    void setLyricLine(int row, int line, const QString &text);
    void insertLyricLine(int shownRow, int line, const QString &text);
    void removeLyricLine(int shownRow, int line);
    void selectLyricLine(int shownRow, int line);
    // The shown row's lyric field changed as the user typed; the model follows a second later.
    void lyricsFieldTextChanged(int shownRow, const QString &text);
    // Writes typed text that is still waiting for its second, as when the field is left.
    void commitLyricsField();
    void moveStringItems(int fromItem, int toItem, int row);
    void selectColumnOfChordDisplay(ChordNamesDisplay *display, int column);
    void openChordNameDialog(ChordNamesDisplay *display, int column);
    void chordNameTapped(ChordNamesDisplay *display, int column) override;
    QList<ColumnItemType> currentColumnItems() const;
    QList<FretPosition> currentFretPositions() const;
    bool currentColumnIsBlank() const;
    // The model row of the cursor.
    int cursorTabRow() const { return tabRowIndex + editShowingTabRowIndex; }

    // The note menu, handed on to noteMenu.
    void handleForceTouch(ForceLongPressGestureRecognizer::State state, QPointF location);
    void openNoteContextMenu(QPointF location);
    void forceContextMenuFinished(int selectedIndex);

    // Magic mode and its selection (tabeditselection.cpp, tabeditselectiondrag.cpp). Points
    // and rectangles are in the coordinates of the surface's frame, not offset by the scroll,
    // unless a name says content.
    void setMagicEditMode(bool on);
    void clearMagicSelection();
    bool selectRect(double x, double y, double width, double height);
    void selectWholeString(int stringNumber, int shownRow);
    bool commitSelection(const SelectionBox &roughBox);
    void showSelection(const SelectionBox &box);
    // Holds a content point to the band of one row: the row under startY while a band is
    // drawn, and off the lyric fields where one would start.
    QPointF clampToRowBand(double startX, double startY, bool selecting, double x,
                           double y) const;
    // x in content coordinates.
    void edgeScrollForPoint(double x);
    // The frame a drag of the selection starts with, if the point lies in the selection.
    std::optional<QRectF> makeSelectionDragView(QPointF point) const;
    void makeSelectionCover(const QRectF &frame);
    void showSelectionCover(bool show);
    void removeSelectionCover();
    QPointF dragSelectionMoved(double x, double y, double width, double height);
    void dropSelection(bool copy, double x, double y, double width, double height);
    void clearSelectedItems();
    void shiftSelection(int semitones);
    void startDragScroll(DragScrollDirection direction);
    void stopDragScroll();
    void dragScrollTick();
    // The cover over the source cells of a move: content coordinates, and whether it shows.
    std::optional<QRectF> magicSelectionMoveCover;
    bool magicSelectionMoveCoverShown = false;
    double dragScrollStartTime = -1.0;
    QTimer dragScrollTimer;
    std::optional<DragScrollDirection> dragDir;
    // Seconds since some fixed start; tests hand in a clock of their own.
    std::function<double()> uptime;

    // The shown row of a model row, or -1.
    int shownIndexOfRow(int row) const;
    // What a column of `count` strings in `row` looks like when it is blank.
    TabColumnData blankColumn(int stringCount) const { return TabColumnData(stringCount); }
    QRectF columnFrame(int row, int column) const;

Q_SIGNALS:
    // Rows were added, dropped, moved or resized, or the tab's width changed.
    void layoutChanged();
    void contentOffsetChanged();
    void highlightChanged();
    // A shown row's lyric text, chord names or header visibility changed.
    void shownRowChanged(int shownRow);
    // The queued redraws of one event, by shown row.
    void columnsNeedRender(int shownRow, const QList<int> &columns);
    void chordNamesNeedRender(int shownRow);
    void menuChanged();
    // A tap on a column's header asks the editor for its chord-name dialog.
    void chordNameDialogRequested(int row, int column);
    // The selection, its cover or the overlay of a drag changed.
    void selectionChanged();
    // The tab's data changed (an edit, an undo, a load), for views that show rows of their own.
    void tabDataChanged(const TabChange &change);

private:
    struct OwnTab;
    void tabChanged(const TabChange &change);
    void syncColumn(int row, int column);
    void syncLyrics(int row);
    void syncRowsAfterShapeChange(const TabChange &change);
    // Brings an edited place into view: for an undo this is what shows what was undone.
    void showEditedPlace(std::optional<int> row, std::optional<QRectF> scrollFrame);
    void queueColumnRender(int shownRow, int column);
    void queueChordNamesRender(int shownRow);
    void columnsRendered(int shownRow, const QList<int> &columns);
    void chordNamesRendered(int shownRow);
    // NoteMenuHost: the cell under a point, and the choice written there.
    std::optional<NoteMenuPlace> notePlaceAt(QPointF location) const override;
    QPointF noteMenuScroll() const override { return contentOffset; }
    void noteMenuChose(const NoteContextMenuSource &source, const ColumnItemType &item) override;
    void fillShownRow(VisibeTabRowView &view, int row);
    const TabColumnData *cursorColumn() const;
    void scrollToShowFrame(const QRectF &frame);
    void notifyColumnCountChange();
    void showMagicSelection();
    void resetChordLabels(int shownRow);
    void followBlock(const SelectionBox &block);
    void highlightChordColumn();

    std::unique_ptr<OwnTab> own;
    QPointer<TabEdits> edits;
    QMetaObject::Connection editsConnection;
    std::optional<int> throttledRow;
    // Typed lyric text that waits for lyricChangeTimer, by model row.
    struct PendingLyric {
        int row = -1;
        QString text;
    };
    std::optional<PendingLyric> pendingLyric;
    RenderGate renderGate;
};
