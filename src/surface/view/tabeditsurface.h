#pragma once

#include "surface/tabeditview.h"

#include <QPointer>
#include <QQuickItem>
#include <QRectF>
#include <QVariantList>

#include <memory>

class LgUndoManager;

// Hosts the editing surface in a scene: hands it the item's size, turns touches, mouse and
// pen into its touch operations and the press recogniser, scrolls, passes typed lyrics on,
// and publishes the layout that the row items and lyric fields bind to. Every decision stays
// in TabEditView.
class TabEditSurface : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal contentX READ contentX NOTIFY contentOffsetChanged)
    Q_PROPERTY(qreal contentY READ contentY NOTIFY contentOffsetChanged)
    Q_PROPERTY(qreal contentWidth READ contentWidth NOTIFY layoutChanged)
    Q_PROPERTY(qreal contentHeight READ contentHeight NOTIFY layoutChanged)
    Q_PROPERTY(int shownRowCount READ shownRowCount NOTIFY layoutChanged)
    Q_PROPERTY(QVariantList rowRects READ rowRects NOTIFY layoutChanged)
    Q_PROPERTY(QVariantList chordRects READ chordRects NOTIFY layoutChanged)
    Q_PROPERTY(QVariantList lyricRects READ lyricRects NOTIFY layoutChanged)
    Q_PROPERTY(QStringList lyricTexts READ lyricTexts NOTIFY rowsChanged)
    Q_PROPERTY(qreal lyricFontSize READ lyricFontSize NOTIFY layoutChanged)
    Q_PROPERTY(bool chordNamesHidden READ chordNamesHidden NOTIFY layoutChanged)
    Q_PROPERTY(QRectF highlightRect READ highlightRect NOTIFY highlightChanged)
    Q_PROPERTY(bool highlightVisible READ highlightVisible NOTIFY highlightChanged)
    Q_PROPERTY(qreal editColBorderWidth READ editColBorderWidth CONSTANT)
    Q_PROPERTY(bool tabRowTouchesEnabled READ tabRowTouchesEnabled NOTIFY highlightChanged)
    Q_PROPERTY(QStringList stringNotes READ stringNotes NOTIFY layoutChanged)
    Q_PROPERTY(qreal headerBandHeight READ headerBandHeight NOTIFY layoutChanged)
    Q_PROPERTY(qreal tabRowVertSpacing READ tabRowVertSpacing CONSTANT)
    Q_PROPERTY(int rowsWanted READ rowsWanted WRITE setRowsWanted NOTIFY rowsWantedChanged)
    Q_PROPERTY(bool freeScroll READ freeScroll WRITE setFreeScroll NOTIFY layoutChanged)
    Q_PROPERTY(bool notesOnTab READ notesOnTab WRITE setNotesOnTab NOTIFY rowsChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY undoStateChanged)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY undoStateChanged)
    Q_PROPERTY(QString message READ message NOTIFY messageChanged)
    Q_PROPERTY(qreal itemHeight READ itemHeight NOTIFY layoutChanged)
    Q_PROPERTY(QRectF selectionCoverRect READ selectionCoverRect NOTIFY selectionChanged)
    Q_PROPERTY(bool selectionCoverShown READ selectionCoverShown NOTIFY selectionChanged)

public:
    explicit TabEditSurface(QQuickItem *parent = nullptr);
    ~TabEditSurface() override;

    TabEditView *view() const { return editView; }
    LgUndoManager *undoManager() const { return ownUndo.get(); }

    qreal contentX() const { return editView->contentOffset.x(); }
    qreal contentY() const { return editView->contentOffset.y(); }
    qreal contentWidth() const;
    qreal contentHeight() const;
    int shownRowCount() const { return editView->showingCount(); }
    QVariantList rowRects() const;
    QVariantList chordRects() const;
    QVariantList lyricRects() const;
    QStringList lyricTexts() const;
    qreal lyricFontSize() const { return 24.0 * editView->lyricsSizePercentage / 100.0; }
    bool chordNamesHidden() const;
    QRectF highlightRect() const;
    bool highlightVisible() const;
    qreal editColBorderWidth() const { return TabEditView::editColBorderWidth; }
    bool tabRowTouchesEnabled() const { return editView->tabRowTouchesEnabled; }
    QStringList stringNotes() const { return editView->stringNotes; }
    qreal headerBandHeight() const { return editView->headerBandHeight(); }
    qreal tabRowVertSpacing() const { return TabEditView::tabRowVertSpacing; }
    int rowsWanted() const { return wantedRows; }
    void setRowsWanted(int count);
    bool freeScroll() const { return editView->freeVerticalScroll; }
    void setFreeScroll(bool free);
    bool notesOnTab() const;
    void setNotesOnTab(bool on);
    bool canUndo() const;
    bool canRedo() const;
    QString message() const { return lastMessage; }
    qreal itemHeight() const { return editView->itemHeight(); }
    // The cover over a moved block's source, in content coordinates.
    QRectF selectionCoverRect() const
    {
        return editView->magicSelectionMoveCover.value_or(QRectF());
    }
    bool selectionCoverShown() const { return editView->magicSelectionMoveCoverShown; }

    // Reads a tab file of either form; false if it could not be read.
    Q_INVOKABLE bool loadTab(const QString &pathOrUrl);
    void loadTabData(const TabData &tab);
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();
    Q_INVOKABLE void addColumn();
    Q_INVOKABLE void removeColumn();
    Q_INVOKABLE void toggleBar();
    Q_INVOKABLE void clearColumn();
    Q_INVOKABLE void addRow();
    // A fret touched and lifted on the string under the item cursor.
    Q_INVOKABLE void tapFret(int fret);
    Q_INVOKABLE void selectChordColumn(int shownRow, qreal x);
    // A shown row's lyric field as the user types, with its caret in content coordinates;
    // the row follows a second after the last key.
    Q_INVOKABLE void lyricsFieldTextChanged(int shownRow, const QString &text, qreal caretMinX,
                                            qreal caretMaxX);
    // The field was left (focus gone, Enter): what it holds is written now.
    Q_INVOKABLE void commitLyricsField();
    // The note menu, open and not yet chosen from.
    bool noteMenuOpen() const;

Q_SIGNALS:
    void contentOffsetChanged();
    void layoutChanged();
    void rowsChanged();
    void highlightChanged();
    void rowsWantedChanged();
    void undoStateChanged();
    void messageChanged();
    void menuChanged();
    void selectionChanged();

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void touchEvent(QTouchEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void touchUngrabEvent() override;
    void mouseUngrabEvent() override;
    void hoverMoveEvent(QHoverEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    bool childMouseEventFilter(QQuickItem *item, QEvent *event) override;

private:
    // Input: one pointer at a time, whether a finger, a mouse or a pen, drives the cursor,
    // the held-note recogniser and the sideways scroll (tabeditsurfaceinput.cpp).
    void setUpInput();
    void pointerPressed(const QPointF &position);
    void pointerMoved(const QPointF &position);
    void pointerReleased(const QPointF &position);
    void pointerCancelled();
    // Keeps the pointer from the editor's row pan while the surface uses it.
    void claimPointer(bool claim);
    void openMenuByClick(const QPointF &position);
    void endMenuByClick(const QPointF &position);
    void leaveLyricsField();
    void applyRowCount();
    void showMessage(const std::optional<QString> &text);
    QPointF toContent(const QPointF &position) const;

    QPointer<TabEditView> editView;
    std::unique_ptr<LgUndoManager> ownUndo;
    // Standing alone, the surface edits a tab of its own through the same edits as a document's.
    std::unique_ptr<TabData> ownTab;
    std::unique_ptr<TabEdits> ownEdits;
    int wantedRows = 0;
    int trackedTouchId = -1;
    QPointF pressPosition;
    QPointF pressOffset;
    bool dragging = false;
    // A menu opened by a right click stays open after the release until the next click.
    bool clickMenu = false;
    bool swallowRelease = false;
    QString lastMessage;
};
