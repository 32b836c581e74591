#pragma once

#include "library/conflictresolver.h"
#include "model/tabdata.h"
#include "library/lutegriddocument.h"
#include "surface/fretboard.h"
#include "surface/tabeditview.h"

#include <QObject>
#include <QPointer>
#include <QSizeF>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>

#include <memory>
#include <optional>

class DialogPresenter;
class SoundManager;

// The letters left of the fretboard stand for the open strings; the letters beside the tab
// only select in magic edit.
class StringTouchResponder {
public:
    enum class Strip { FretLetters, TabLetters };
    virtual ~StringTouchResponder() = default;
    virtual void stringTouched(Strip view, int stringNumber, int shownRow) = 0;
    virtual void stringReleased() = 0;
    virtual void stringCancelled(Strip view) = 0;
};

// The editor screen's decisions: the tools, fret input, the layout for a window size, the row
// pan and the scroll indicator, and the link to the document. It owns no pixels; the screen's
// items bind to its properties and hand it their touches.
class TabEditViewController : public QObject,
                              public EditHighlightListener,
                              public TabRowChangeListener,
                              public FretResponder,
                              public StringTouchResponder,
                              public DocumentChangeListener {
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    Q_PROPERTY(bool undoEnabled MEMBER undoEnabled NOTIFY toolsChanged)
    Q_PROPERTY(bool redoEnabled MEMBER redoEnabled NOTIFY toolsChanged)
    Q_PROPERTY(bool editLeftEnabled MEMBER editLeftEnabled NOTIFY toolsChanged)
    Q_PROPERTY(bool editRightEnabled MEMBER editRightEnabled NOTIFY toolsChanged)
    Q_PROPERTY(bool editMoveButtsCompacted MEMBER editMoveButtsCompacted NOTIFY layoutChanged)
    Q_PROPERTY(bool editMoveButtsShown MEMBER editMoveButtsShown NOTIFY toolsChanged)
    Q_PROPERTY(bool moreToolsUnseenDotShown MEMBER moreToolsUnseenDotShown NOTIFY toolsChanged)
    Q_PROPERTY(bool pressInProgress READ pressInProgress NOTIFY toolsChanged)
    Q_PROPERTY(bool compactToolbar MEMBER compactToolbar NOTIFY layoutChanged)
    Q_PROPERTY(QVariantMap buttonWidths READ buttonWidths NOTIFY layoutChanged)
    Q_PROPERTY(bool shortLayout MEMBER shortLayout NOTIFY layoutChanged)
    Q_PROPERTY(double navHeight MEMBER navHeight NOTIFY layoutChanged)
    Q_PROPERTY(double toolbarHeight READ toolbarHeight CONSTANT)
    Q_PROPERTY(double fretboardHeight MEMBER fretboardHeight NOTIFY layoutChanged)
    Q_PROPERTY(double fretLabelHeight MEMBER fretLabelHeight NOTIFY layoutChanged)
    Q_PROPERTY(double fretLettersWidth MEMBER fretLettersWidth NOTIFY layoutChanged)
    Q_PROPERTY(double tabLettersWidth READ tabLettersWidth CONSTANT)
    Q_PROPERTY(double tabEditViewHeight MEMBER tabEditViewHeight NOTIFY layoutChanged)
    Q_PROPERTY(double tabEditViewWidth MEMBER tabEditViewWidth NOTIFY layoutChanged)
    Q_PROPERTY(int visibleRows MEMBER visibleRows NOTIFY layoutChanged)
    Q_PROPERTY(bool freeScroll READ freeScroll NOTIFY layoutChanged)
    Q_PROPERTY(bool fadeOutBottomCoverHidden MEMBER fadeOutBottomCoverHidden NOTIFY layoutChanged)
    Q_PROPERTY(int nextRowPreviewRow MEMBER nextRowPreviewRow NOTIFY layoutChanged)
    Q_PROPERTY(QStringList stringNotes READ stringNotes NOTIFY layoutChanged)
    Q_PROPERTY(double panOffsetY MEMBER panOffsetY NOTIFY panChanged)
    Q_PROPERTY(bool panSettling MEMBER panSettling NOTIFY panChanged)
    Q_PROPERTY(int rowSlideFrom MEMBER rowSlideFrom NOTIFY rowSlideChanged)
    Q_PROPERTY(double rowSlideOffset MEMBER rowSlideOffset NOTIFY rowSlideChanged)
    Q_PROPERTY(bool rowSliding MEMBER rowSliding NOTIFY rowSlideChanged)
    Q_PROPERTY(bool indicatorVisible READ indicatorVisible NOTIFY indicatorChanged)
    Q_PROPERTY(bool indicatorShown MEMBER indicatorShown NOTIFY indicatorChanged)
    Q_PROPERTY(bool indicatorDragging READ indicatorDragging NOTIFY indicatorChanged)
    Q_PROPERTY(double scrubberY READ scrubberY NOTIFY indicatorChanged)
    Q_PROPERTY(double scrubberHeight READ scrubberHeight NOTIFY indicatorChanged)
    Q_PROPERTY(QVariantList openStringMarks READ openStringMarks NOTIFY highlightsChanged)

public:
    // The surface and the fretboard are the screen's; without them the controller makes its own,
    // as tests do.
    TabEditViewController(LutegridDocument *document, TabEditView *surface = nullptr,
                          Fretboard *board = nullptr, QObject *parent = nullptr);
    ~TabEditViewController() override;

    static constexpr double toolbarHeightValue = 55.0;
    static constexpr double tabLettersWidthValue = 28.0;
    static constexpr double indicatorWidth = 14.0;

    // Editor state that carries logic.
    bool fretRegTouchInProgress = false;
    bool fretZeroTouchInProgress = false;
    bool inMagicEditMode = false;
    bool editMoveButtsCompacted = false;
    bool editMoveButtsCanShow = false;
    bool editMoveButtsShown = false;
    QTimer editMoveButtsTimer;
    const QPointer<LutegridDocument> lgDocument;
    // The tab edited: the document's own, which the surface edits in place.
    const TabData &tabData() const { return surface->tab(); }
    double tabPanStartY = -1.0;
    bool fadeOutWasHiddenBeforePan = false;
    double initialFretboardHeight = -1.0;
    double baseFretboardHeight = -1.0;
    double initialFretLettersWidth = -1.0;
    double initialTabEditViewHeight = -1.0;
    double baseTabEditViewHeight = -1.0;
    std::optional<QSizeF> prevViewSize;
    bool freeVerticalDetermined = false;

    // What the layout decided.
    double navHeight = 56.0;
    double bottomInset = 0.0;
    // A desktop counts as a tablet: the free-scroll setting applies there.
    bool desktopIdiom = true;
    bool compactToolbar = false;
    bool shortLayout = false;
    double fretboardHeight = 330.0;
    double fretLabelHeight = 50.0;
    double fretLettersWidth = 44.0;
    double tabEditViewHeight = 0.0;
    double tabEditViewWidth = 0.0;
    int visibleRows = 1;
    bool fadeOutBottomCoverHidden = false;
    int nextRowPreviewRow = -1;
    bool undoEnabled = false;
    bool redoEnabled = false;
    bool editLeftEnabled = false;
    bool editRightEnabled = true;
    bool moreToolsUnseenDotShown = false;

    // The row pan: the content's offset from its resting place.
    double panOffsetY = 0.0;
    bool panSettling = false;
    QTimer panSettleTimer;

    // A deleted row's slide: the shown rows from rowSlideFrom down stand rowSlideOffset lower
    // and come up over the gap while rowSliding.
    int rowSlideFrom = -1;
    double rowSlideOffset = 0.0;
    bool rowSliding = false;

    // The scroll indicator.
    bool indicatorShown = false;
    QTimer indicatorFadeTimer;
    std::optional<double> touchScrollStartLoc;
    double lastStaticPosY = 0.0;
    double dragScrubberY = -1.0;

    TabEditView *tabEditView() const { return surface; }
    Fretboard *fretboard() const { return board; }
    void setDialogPresenter(DialogPresenter *presenter) { dialogs = presenter; }
    // For tests that play no sound; absent: the shared one.
    void setSoundManager(SoundManager *manager) { soundManager = manager; }
    // How many tabs the library holds, as the app last counted them.
    qsizetype existingTabCount = 0;

    QString title() const;
    bool pressInProgress() const { return fretRegTouchInProgress || fretZeroTouchInProgress; }
    QVariantMap buttonWidths() const;
    double toolbarHeight() const { return toolbarHeightValue; }
    double tabLettersWidth() const { return tabLettersWidthValue; }
    bool freeScroll() const { return surface->freeVerticalScroll; }
    QStringList stringNotes() const { return surface->stringNotes; }
    QVariantList openStringMarks() const;
    bool indicatorVisible() const;
    bool indicatorDragging() const { return touchScrollStartLoc.has_value(); }
    double scrubberY() const;
    double scrubberHeight() const;
    double singlePositionHeight() const;

    // Layout for the screen's size.
    Q_INVOKABLE void applyViewSize(double w, double h);
    void setVisibleRows(int rows, double height);
    bool freeScrollWanted() const;

    // Toolbar.
    Q_INVOKABLE void tabClear();
    Q_INVOKABLE void undoEdit();
    Q_INVOKABLE void redoEdit();
    Q_INVOKABLE void addTabColumn();
    Q_INVOKABLE void deleteTabColumn();
    Q_INVOKABLE void addTabRow();
    Q_INVOKABLE void insertTabRow();
    Q_INVOKABLE void deleteTabRow();
    Q_INVOKABLE void putBarButtPress();
    Q_INVOKABLE void editLeftPress();
    Q_INVOKABLE void editRightPress();
    void updateUndoButtons();
    void showEditMoveButts();
    void hideEditMoveButts();
    void refreshFretHighlights();

    // The row pan, in the surface's coordinates. Began answers whether the pan is taken.
    Q_INVOKABLE bool panBegan(double x, double y);
    Q_INVOKABLE void panChanged(double translationY);
    Q_INVOKABLE void panEnded(double velocityY);
    Q_INVOKABLE void panCancelled();
    void settleTabPan(int rowDelta, double targetOffset);

    // A finger on the scroll indicator, y in the surface's coordinates.
    Q_INVOKABLE void indicatorTouchBegan(double y);
    Q_INVOKABLE void indicatorTouchMoved(double y);
    Q_INVOKABLE void indicatorTouchEnded();
    Q_INVOKABLE void indicatorTouchCancelled();

    // The open-string letters, for the screen's letter strip.
    Q_INVOKABLE void fretLetterPressed(int stringNumber)
    {
        stringTouched(Strip::FretLetters, stringNumber, 0);
    }
    Q_INVOKABLE void fretLetterReleased() { stringReleased(); }
    Q_INVOKABLE void fretLetterCancelled() { stringCancelled(Strip::FretLetters); }

    // Closing: the document closes, with no question asked.
    Q_INVOKABLE void finishEditing();

    // Conflicts: the rows of the open dialog and the choice made in it.
    std::optional<ConflictResolver> conflictResolver;
    void confirmConflictSelection(int row);

    // Every step done, undone or redone on the document's undo manager.
    void undoStateChanged();
    // EditHighlightListener, TabRowChangeListener.
    void editHighlightMoved(bool atFirstColumn, bool atLastColumn) override;
    void tabWidthChanged(double tabWidth) override;
    void tabRowCountChanged() override;
    void tabRowPositionChanged(int tabRowIndex, int showingCount, int totalCount) override;
    void columnItemChanged() override;
    void lyricsFieldEdited() override {}
    // FretResponder.
    void fretTouched(int stringNum, int fretNum) override;
    void fretTouchesEnded() override;
    void fretTouchesCancelled() override;
    // StringTouchResponder.
    void stringTouched(Strip view, int stringNumber, int shownRow) override;
    void stringReleased() override;
    void stringCancelled(Strip view) override;
    // DocumentChangeListener.
    void documentConflictDetected(const std::optional<QList<FileVersion>> &versions) override;
    void documentReloaded(const TabData &newData) override;

Q_SIGNALS:
    void titleChanged();
    void toolsChanged();
    void layoutChanged();
    void panChanged();
    void rowSlideChanged();
    void indicatorChanged();
    void highlightsChanged();
    // The editor is done; the screen goes.
    void finished();

private:
    void loadIntoSurface();
    void commitPress();
    void markToolsSeen(bool fromSender);
    void checkUnseenTools();
    void applyStringLayout();
    void showIndicatorThenFade();
    void pressString(int stringNumber, qint64 fret);

    TabEditView *surface = nullptr;
    Fretboard *board = nullptr;
    std::unique_ptr<TabEditView> ownSurface;
    std::unique_ptr<Fretboard> ownBoard;
    DialogPresenter *dialogs = nullptr;
    SoundManager *soundManager = nullptr;
    QList<FretPosition> openStrings;
    int pendingRowDelta = 0;
    bool finishedEditing = false;
};
