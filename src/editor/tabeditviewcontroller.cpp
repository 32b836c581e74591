#include "tabeditviewcontroller.h"

#include "services/dialogpresenter.h"
#include "editorlog.h"
#include "services/analytics.h"
#include "services/lgundomanager.h"
#include "services/saveddata.h"
#include "sound/soundmanager.h"

#include <algorithm>
#include <cmath>

Q_LOGGING_CATEGORY(lcEditor, "lutegrid.editor")

TabEditViewController::TabEditViewController(LutegridDocument *document, TabEditView *surfaceView,
                                             Fretboard *fretboardLogic, QObject *parent)
    : QObject(parent), lgDocument(document)
{
    // An editor is only made for a document that opened with a model.
    Q_ASSERT(document && document->tabData);
    if (!surfaceView) {
        ownSurface = std::make_unique<TabEditView>();
        surfaceView = ownSurface.get();
    }
    if (!fretboardLogic) {
        ownBoard = std::make_unique<Fretboard>();
        fretboardLogic = ownBoard.get();
    }
    surface = surfaceView;
    board = fretboardLogic;

    editMoveButtsTimer.setSingleShot(true);
    editMoveButtsTimer.setInterval(1700);
    connect(&editMoveButtsTimer, &QTimer::timeout, this, &TabEditViewController::hideEditMoveButts);
    panSettleTimer.setSingleShot(true);
    panSettleTimer.setInterval(100);
    connect(&panSettleTimer, &QTimer::timeout, this, [this] {
        panSettling = false;
        panOffsetY = 0.0;
        surface->moveTabRowDelayTimer.stop();
        if (const int delta = std::exchange(pendingRowDelta, 0))
            surface->moveToTabRow(surface->tabRowIndex + delta, true, false);
        Q_EMIT panChanged();
    });
    indicatorFadeTimer.setSingleShot(true);
    indicatorFadeTimer.setInterval(1000);
    connect(&indicatorFadeTimer, &QTimer::timeout, this, [this] {
        indicatorShown = false;
        Q_EMIT indicatorChanged();
    });
    connect(surface, &TabEditView::layoutChanged, this, &TabEditViewController::indicatorChanged);

    loadIntoSurface();
    if (lgDocument)
        lgDocument->changeListener = this;
}

TabEditViewController::~TabEditViewController()
{
    if (lgDocument && lgDocument->changeListener == this)
        lgDocument->changeListener = nullptr;
    if (board->fretResponder == this)
        board->fretResponder = nullptr;
    surface->editHighlightListener = nullptr;
    surface->tabRowChangeListener = nullptr;
    surface->setTabEdits(nullptr);
}

QString TabEditViewController::title() const
{
    return u"Edit - "_qs + tabData().title;
}

void TabEditViewController::loadIntoSurface()
{
    board->fretResponder = this;
    surface->editHighlightListener = this;
    surface->tabRowChangeListener = this;
    if (lgDocument && lgDocument->tabData) {
        lgDocument->undoManager()->levelsOfUndo = 50;
        surface->setTabEdits(lgDocument->edits());
    }
    connect(surface->docUndoManager(), &LgUndoManager::changed, this,
            &TabEditViewController::undoStateChanged, Qt::UniqueConnection);
    board->setNumStrings(tabData().stringCount());
    SavedData &saved = SavedData::shared();
    surface->settings.hideColHeaders = saved.hideColHeaders;
    surface->settings.notesOnTab = saved.notesOnTab;
    if (saved.lastFretCount <= 0) {
        saved.lastFretCount = Fretboard::fretCountFor(0);
        saved.save();
    }
    board->refreshFretCount(saved.lastFretCount);
    surface->stringNotes = tabData().stringNotes;
    surface->lyricsSizePercentage = int(tabData().lyricSize);
    // Row views built for another tuning go; the layout builds them for this one.
    surface->showingTabRows.clear();
    surface->editShowingTabRowIndex = 0;
    if (tabData().tabRowDatas.isEmpty())
        surface->loadTabRows({TabRowData(32, tabData().stringCount())});
    else
        surface->loadTabRows();
    surface->editColIndex = 0;
    updateUndoButtons();
}

QVariantMap TabEditViewController::buttonWidths() const
{
    if (compactToolbar)
        return {{u"undo"_qs, 29},   {u"redo"_qs, 29}, {u"clear"_qs, 26}, {u"add"_qs, 29},
                {u"delete"_qs, 29}, {u"row"_qs, 29},  {u"bar"_qs, 29}};
    return {{u"undo"_qs, 44},   {u"redo"_qs, 44}, {u"clear"_qs, 44}, {u"add"_qs, 44},
            {u"delete"_qs, 44}, {u"row"_qs, 44},  {u"bar"_qs, 44}};
}

QVariantList TabEditViewController::openStringMarks() const
{
    QVariantList marks;
    for (const FretPosition &position : openStrings)
        marks.append(position.stringNum);
    return marks;
}

// Layout

bool TabEditViewController::freeScrollWanted() const
{
    if (!freeVerticalDetermined)
        return SavedData::shared().freeScrollSetting && desktopIdiom;
    return surface->freeVerticalScroll;
}

void TabEditViewController::applyViewSize(double w, double h)
{
    const QSizeF size(w, h);
    if (prevViewSize == size)
        return;
    prevViewSize = size;
    const int strings = tabData().stringCount();

    if (initialFretboardHeight < 0) {
        initialFretboardHeight = 330.0;
        initialFretLettersWidth = 44.0;
        initialTabEditViewHeight = 279.0 - (SavedData::shared().hideColHeaders ? 25.0 : 0.0);
    }
    baseFretboardHeight = initialFretboardHeight - 20.0 * (6 - strings);
    baseTabEditViewHeight = initialTabEditViewHeight - 20.0 * (6 - strings);
    const double base = baseTabEditViewHeight;
    const double spacing = TabEditView::tabRowVertSpacing;
    const double inset = bottomInset;

    if (h * 0.7 < baseFretboardHeight) {
        // Too short for the fretboard: the rows alone.
        if (dialogs && dialogs->isPresenting())
            dialogs->dismissDialog();
        shortLayout = true;
        fretboardHeight = 0.0;
        compactToolbar = false;
        fadeOutBottomCoverHidden = true;
        editMoveButtsCompacted = false;
        editMoveButtsCanShow = false;
        hideEditMoveButts();
        tabEditViewWidth = std::max(w - tabLettersWidthValue - indicatorWidth, 0.0);
        surface->setFreeVerticalScroll(false, 0, true);
        setVisibleRows(1, std::min(h - 120.0, base));
    } else {
        shortLayout = false;
        compactToolbar = w < 340.0;
        editMoveButtsCompacted = w < 475.0;
        editMoveButtsCanShow = w < 475.0 && !(w < 340.0);
        if (editMoveButtsShown)
            hideEditMoveButts();
        editMoveButtsShown = false;

        const double avail = h - (navHeight + base + 10.0) - 90.0 + (w < 340.0 ? 25.0 : 0.0);
        const double height = std::min(avail, baseFretboardHeight);
        fretboardHeight = height;
        fretLabelHeight = (height == avail && height < 300.0) ? 20.0 : 50.0;
        fretLettersWidth = w < 340.0 ? 35.0 : initialFretLettersWidth;
        board->setFretLabelHeight(fretLabelHeight);
        board->setFrameSize(QSizeF(std::max(w - fretLettersWidth, 0.0), height));

        tabEditViewWidth = std::max(w - tabLettersWidthValue - indicatorWidth, 0.0);
        const double space = h - height - navHeight - 10.0 - toolbarHeightValue - inset;
        if (freeScrollWanted()) {
            const int n = int(surface->tabRows.size());
            surface->setFreeVerticalScroll(true, base, false);
            fadeOutBottomCoverHidden = true;
            setVisibleRows(n, std::min(base * n + spacing * (n - 1), space));
        } else {
            surface->setFreeVerticalScroll(false, 0, true);
            fadeOutBottomCoverHidden = false;
            if (height != baseFretboardHeight || !(2 * base + spacing < space)) {
                setVisibleRows(1, base);
            } else {
                const int r = int(std::trunc((space + spacing) / (base + spacing)));
                setVisibleRows(r, std::min(base * r + spacing * (r - 1), space));
            }
            // The cover fades rows out over the preview; with too little room it would only
            // hide the toolbar's edge.
            const double gap =
                h - inset - toolbarHeightValue - height - (navHeight + tabEditViewHeight);
            if (gap < 30.0)
                fadeOutBottomCoverHidden = true;
        }
    }
    freeVerticalDetermined = true;
    tabRowPositionChanged(surface->tabRowIndex, surface->showingCount(),
                          int(surface->tabRows.size()));
    Q_EMIT layoutChanged();
}

void TabEditViewController::setVisibleRows(int rows, double height)
{
    const double base = baseTabEditViewHeight;
    const double spacing = TabEditView::tabRowVertSpacing;
    surface->visibleTabRowCountPotential = rows + (surface->freeVerticalScroll ? 10 : 0);
    const int count = int(surface->tabRows.size());
    if (count < rows) {
        rows = std::max(count, 1);
        height = base * rows + spacing * (rows - 1);
    }
    visibleRows = rows;
    tabEditViewHeight = height;
    surface->setFrameSize(QSizeF(tabEditViewWidth, height));
    surface->setVisibleTabRowCount(rows);
}

// Tools

void TabEditViewController::updateUndoButtons()
{
    LgUndoManager *undo = surface->docUndoManager();
    undoEnabled = undo && undo->canUndo();
    redoEnabled = undo && undo->canRedo();
    Q_EMIT toolsChanged();
}

void TabEditViewController::refreshFretHighlights()
{
    QList<FretPosition> positions;
    if (!inMagicEditMode && !surface->editColumnHighlightHidden)
        positions = surface->currentFretPositions();
    board->setHighlights(positions);
    openStrings.clear();
    for (const FretPosition &position : std::as_const(positions)) {
        if (position.fretNum == 0)
            openStrings.append(position);
    }
    Q_EMIT highlightsChanged();
}

void TabEditViewController::showEditMoveButts()
{
    const SavedData &saved = SavedData::shared();
    if (!editMoveButtsCanShow || saved.disableFlashNavArrows || inMagicEditMode)
        return;
    editMoveButtsTimer.start();
    if (!editMoveButtsShown) {
        editMoveButtsShown = true;
        Q_EMIT toolsChanged();
    }
}

void TabEditViewController::hideEditMoveButts()
{
    editMoveButtsTimer.stop();
    if (editMoveButtsShown) {
        editMoveButtsShown = false;
        Q_EMIT toolsChanged();
    }
}

void TabEditViewController::tabClear()
{
    if (pressInProgress())
        return;
    surface->clearCursorColumn();
    refreshFretHighlights();
    showEditMoveButts();
}

void TabEditViewController::undoEdit()
{
    if (pressInProgress())
        return;
    surface->undoEdit();
    refreshFretHighlights();
    showEditMoveButts();
}

void TabEditViewController::redoEdit()
{
    if (pressInProgress())
        return;
    surface->redoEdit();
    refreshFretHighlights();
    showEditMoveButts();
}

void TabEditViewController::markToolsSeen(bool fromSender)
{
    SavedData &saved = SavedData::shared();
    saved.toolsMarkedSeenTemporary = true;
    if (fromSender && !saved.toolsMarkedSeen) {
        saved.toolsMarkedSeen = true;
        saved.save();
    }
    if (moreToolsUnseenDotShown) {
        moreToolsUnseenDotShown = false;
        Q_EMIT toolsChanged();
    }
}

void TabEditViewController::addTabColumn()
{
    if (const auto message = surface->addColumnAtCursor()) {
        if (dialogs)
            dialogs->presentMessage(*message);
        return;
    }
    markToolsSeen(true);
}

void TabEditViewController::deleteTabColumn()
{
    if (const auto message =
            surface->removeColumn(surface->cursorTabRow(), surface->editColIndex)) {
        if (dialogs)
            dialogs->presentMessage(*message);
    }
}

void TabEditViewController::addTabRow()
{
    if (pressInProgress())
        return;
    const int count = int(surface->tabRows.size());
    surface->insertTabRow(surface->tabRowIndex + surface->showingCount(),
                          TabRowData(surface->numTabColumns, surface->stringCount()));
    if (count >= surface->visibleTabRowCountPotential && !surface->freeVerticalScroll) {
        // The window can't grow: the rows come up from one row lower.
        panSettleTimer.stop();
        panOffsetY = surface->tabRowPitch();
        Q_EMIT panChanged();
        settleTabPan(0, 0.0);
    }
    markToolsSeen(true);
}

void TabEditViewController::insertTabRow()
{
    if (pressInProgress())
        return;
    surface->insertTabRow(surface->cursorTabRow(),
                          TabRowData(surface->numTabColumns, surface->stringCount()));
    markToolsSeen(true);
}

void TabEditViewController::deleteTabRow()
{
    if (pressInProgress() || surface->tabRows.size() < 2)
        return;
    // With rows waiting below the window, those under the cursor's row slide up over it.
    const bool slide = !surface->freeVerticalScroll
                       && surface->tabRowIndex + surface->showingCount() < surface->tabRows.size();
    surface->removeTabRow(surface->freeVerticalScroll ? surface->editShowingTabRowIndex
                                                      : surface->cursorTabRow());
    if (!slide)
        return;
    rowSlideFrom = surface->editShowingTabRowIndex;
    rowSlideOffset = surface->tabRowPitch();
    rowSliding = false;
    Q_EMIT rowSlideChanged();
    // The screen shows the rows one row lower first, then animates them home over the settle
    // time of a pan.
    QTimer::singleShot(0, this, [this] {
        rowSliding = true;
        rowSlideOffset = 0.0;
        Q_EMIT rowSlideChanged();
        QTimer::singleShot(panSettleTimer.interval(), this, [this] {
            rowSliding = false;
            rowSlideFrom = -1;
            Q_EMIT rowSlideChanged();
        });
    });
}

void TabEditViewController::putBarButtPress()
{
    surface->toggleBarColumn();
}

void TabEditViewController::editLeftPress()
{
    surface->setEditPosition(surface->editColIndex - 1, surface->editShowingTabRowIndex);
}

void TabEditViewController::editRightPress()
{
    surface->setEditPosition(surface->editColIndex + 1, surface->editShowingTabRowIndex);
}

// Listeners of the surface

void TabEditViewController::undoStateChanged()
{
    updateUndoButtons();
    checkUnseenTools();
}

void TabEditViewController::checkUnseenTools()
{
    const SavedData &saved = SavedData::shared();
    bool show = false;
    if (saved.tabCreateCount <= 2 && existingTabCount <= 2 &&
        !saved.toolsMarkedSeen && !saved.toolsMarkedSeenTemporary && surface->tabRows.size() == 1 &&
        surface->tabRows.first().colDatas.size() >= 11) {
        const QList<TabColumnData> &columns = surface->tabRows.first().colDatas;
        for (qsizetype i = columns.size() - 8; i < columns.size(); ++i) {
            const TabColumnData &column = columns[i];
            if (!column.isSameColumn(TabColumnData(int(column.columnItems.size()))))
                show = true;
        }
    }
    // The dot stays once shown, until the tools are used.
    if (show && !moreToolsUnseenDotShown) {
        moreToolsUnseenDotShown = true;
        Q_EMIT toolsChanged();
    }
}

void TabEditViewController::editHighlightMoved(bool atFirstColumn, bool atLastColumn)
{
    refreshFretHighlights();
    editLeftEnabled = !atFirstColumn;
    editRightEnabled = !atLastColumn;
    Q_EMIT toolsChanged();
    showEditMoveButts();
}

void TabEditViewController::tabWidthChanged(double)
{
    Q_EMIT layoutChanged();
}

void TabEditViewController::tabRowCountChanged()
{
    if (!prevViewSize)
        return;
    const QSizeF size = *prevViewSize;
    prevViewSize.reset();
    applyViewSize(size.width(), size.height());
}

void TabEditViewController::tabRowPositionChanged(int tabRowIndex, int showingCount, int totalCount)
{
    int preview = -1;
    if (!surface->freeVerticalScroll && fretboardHeight != 0.0 &&
        tabRowIndex + showingCount < totalCount)
        preview = tabRowIndex + showingCount;
    if (preview != nextRowPreviewRow) {
        nextRowPreviewRow = preview;
        Q_EMIT layoutChanged();
    }
    if (!touchScrollStartLoc)
        lastStaticPosY = scrubberY();
    Q_EMIT indicatorChanged();
    refreshFretHighlights();
}

void TabEditViewController::columnItemChanged()
{
    refreshFretHighlights();
}

// Fret input

void TabEditViewController::fretTouched(int stringNum, int fretNum)
{
    const bool wasPressing = pressInProgress();
    fretRegTouchInProgress = true;
    pressString(stringNum, fretNum);
    refreshFretHighlights();
    if (!wasPressing)
        Q_EMIT toolsChanged();
}

void TabEditViewController::pressString(int stringNumber, qint64 fret)
{
    const std::optional<ColumnItemType> item = surface->pressFret(stringNumber, fret);
    // The note sounds as it goes in; a note pressed off again is silent.
    if (!item || item->isBlank() || !SavedData::shared().playSounds)
        return;
    QList<ColumnItemType> items(surface->stringCount(), ColumnItemType::blank());
    if (stringNumber >= 1 && stringNumber <= items.size())
        items[stringNumber - 1] = *item;
    SoundManager &sound = soundManager ? *soundManager : SoundManager::shared();
    sound.playColumnItems(items, surface->stringNotes, false);
}

void TabEditViewController::fretTouchesEnded()
{
    fretRegTouchInProgress = false;
    if (fretZeroTouchInProgress)
        return;
    commitPress();
}

void TabEditViewController::commitPress()
{
    const bool added = surface->commitFretPress();
    Q_EMIT toolsChanged();
    showEditMoveButts();
    if (added) {
        const qint64 n = std::min<qint64>(SavedData::shared().autoCursorAmount, 3);
        if (n > 0)
            surface->setEditPosition(surface->editColIndex + int(n),
                                     surface->editShowingTabRowIndex);
    }
    refreshFretHighlights();
}

void TabEditViewController::fretTouchesCancelled()
{
    fretRegTouchInProgress = false;
    fretZeroTouchInProgress = false;
    surface->cancelFretPress();
    refreshFretHighlights();
    Q_EMIT toolsChanged();
}

void TabEditViewController::stringTouched(Strip view, int stringNumber, int)
{
    // The letters beside the tab select only in magic edit, which this screen doesn't offer.
    if (view == Strip::TabLetters)
        return;
    const bool wasPressing = pressInProgress();
    fretZeroTouchInProgress = true;
    pressString(stringNumber, 0);
    refreshFretHighlights();
    if (!wasPressing)
        Q_EMIT toolsChanged();
}

void TabEditViewController::stringReleased()
{
    if (!fretZeroTouchInProgress)
        return;
    fretZeroTouchInProgress = false;
    if (!fretRegTouchInProgress)
        commitPress();
}

void TabEditViewController::stringCancelled(Strip view)
{
    if (view == Strip::TabLetters)
        return;
    fretTouchesCancelled();
}

// The row pan

bool TabEditViewController::panBegan(double x, double y)
{
    if (surface->freeVerticalScroll || inMagicEditMode || panSettling)
        return false;
    x -= surface->contentOffset.x();
    const double bottom = tabEditViewHeight + (nextRowPreviewRow >= 0 ? 30.0 : 0.0);
    if (y <= 0 || y >= bottom || x < -3 || x >= tabEditViewWidth)
        return false;
    tabPanStartY = 0.0;
    fadeOutWasHiddenBeforePan = fadeOutBottomCoverHidden;
    fadeOutBottomCoverHidden = false;
    indicatorFadeTimer.stop();
    indicatorShown = true;
    dragScrubberY = lastStaticPosY;
    Q_EMIT indicatorChanged();
    Q_EMIT layoutChanged();
    return true;
}

void TabEditViewController::panChanged(double translationY)
{
    if (tabPanStartY < 0)
        return;
    panOffsetY = translationY;
    const double pitch = surface->tabRowPitch();
    if (pitch > 0)
        dragScrubberY = lastStaticPosY - translationY / pitch * singlePositionHeight();
    Q_EMIT panChanged();
    Q_EMIT indicatorChanged();
}

void TabEditViewController::panEnded(double velocityY)
{
    if (tabPanStartY < 0)
        return;
    const double pitch = surface->tabRowPitch();
    int d = pitch > 0 ? int(std::round((velocityY * 0.125 + panOffsetY) / pitch)) : 0;
    d = std::clamp(d, -1, 1);
    if (!surface->canMoveTabRow(-d))
        d = 0;
    dragScrubberY = -1.0;
    showIndicatorThenFade();
    settleTabPan(-d, pitch * d);
    fadeOutBottomCoverHidden = fadeOutWasHiddenBeforePan;
    tabPanStartY = -1.0;
    Q_EMIT layoutChanged();
}

void TabEditViewController::panCancelled()
{
    if (tabPanStartY < 0)
        return;
    dragScrubberY = -1.0;
    showIndicatorThenFade();
    settleTabPan(0, 0.0);
    fadeOutBottomCoverHidden = fadeOutWasHiddenBeforePan;
    tabPanStartY = -1.0;
    Q_EMIT layoutChanged();
}

void TabEditViewController::settleTabPan(int rowDelta, double targetOffset)
{
    // The screen animates the offset to its target over the settle time, then the rows move.
    panSettleTimer.stop();
    pendingRowDelta = rowDelta;
    panSettling = true;
    panOffsetY = targetOffset;
    Q_EMIT panChanged();
    panSettleTimer.start();
}

// The scroll indicator

bool TabEditViewController::indicatorVisible() const
{
    return !surface->freeVerticalScroll && surface->tabRows.size() > surface->showingCount();
}

double TabEditViewController::scrubberHeight() const
{
    const int total = int(surface->tabRows.size());
    if (total < 1)
        return tabEditViewHeight;
    return std::max(36.0, tabEditViewHeight * surface->showingCount() / total);
}

double TabEditViewController::singlePositionHeight() const
{
    const int positions = int(surface->tabRows.size()) - surface->showingCount();
    if (positions < 1)
        return 0.0;
    return (tabEditViewHeight - scrubberHeight()) / positions;
}

double TabEditViewController::scrubberY() const
{
    if (dragScrubberY >= 0)
        return std::clamp(dragScrubberY, 0.0, std::max(tabEditViewHeight - scrubberHeight(), 0.0));
    return surface->tabRowIndex * singlePositionHeight();
}

void TabEditViewController::showIndicatorThenFade()
{
    indicatorShown = true;
    indicatorFadeTimer.start();
    Q_EMIT indicatorChanged();
}

void TabEditViewController::indicatorTouchBegan(double y)
{
    if (surface->freeVerticalScroll || touchScrollStartLoc || !indicatorVisible())
        return;
    touchScrollStartLoc = y;
    lastStaticPosY = scrubberY();
    dragScrubberY = lastStaticPosY;
    indicatorFadeTimer.stop();
    indicatorShown = true;
    Q_EMIT indicatorChanged();
}

void TabEditViewController::indicatorTouchMoved(double y)
{
    if (!touchScrollStartLoc)
        return;
    dragScrubberY = lastStaticPosY + y - *touchScrollStartLoc;
    const double single = singlePositionHeight();
    if (single > 0) {
        const int row = int(std::round(scrubberY() / single));
        surface->moveToTabRowThrottled(row);
    }
    Q_EMIT indicatorChanged();
}

void TabEditViewController::indicatorTouchEnded()
{
    if (!touchScrollStartLoc)
        return;
    const double single = singlePositionHeight();
    const int row = single > 0 ? int(std::round(scrubberY() / single)) : surface->tabRowIndex;
    touchScrollStartLoc.reset();
    dragScrubberY = -1.0;
    surface->moveToTabRow(row, true, false);
    lastStaticPosY = scrubberY();
    showIndicatorThenFade();
}

void TabEditViewController::indicatorTouchCancelled()
{
    if (!touchScrollStartLoc)
        return;
    touchScrollStartLoc.reset();
    dragScrubberY = -1.0;
    showIndicatorThenFade();
}

// The document

void TabEditViewController::finishEditing()
{
    if (finishedEditing)
        return;
    finishedEditing = true;
    if (lgDocument) {
        lgDocument->changeListener = nullptr;
        if (!lgDocument->close())
            Analytics::logEvent(u"Doc close fail"_qs);
    }
    Q_EMIT finished();
}

void TabEditViewController::documentConflictDetected(
    const std::optional<QList<FileVersion>> &versions)
{
    if (!versions || (dialogs && dialogs->isPresenting()) || !dialogs)
        return;
    conflictResolver.emplace(*versions, lgDocument.data());
    QPointer<TabEditViewController> self(this);
    dialogs->presentConflict(conflictResolver->rowTitles(), [self](int row) {
        if (self)
            self->confirmConflictSelection(row);
    });
}

void TabEditViewController::confirmConflictSelection(int row)
{
    if (!conflictResolver)
        return;
    ConflictResolver resolver = *std::exchange(conflictResolver, std::nullopt);
    resolver.confirmSelection(row);
}

void TabEditViewController::documentReloaded(const TabData &newData)
{
    // The document hands over its own tab, whose rows the surface shows anew; a tab handed
    // over from elsewhere becomes the document's.
    if (lgDocument && lgDocument->tabData && &*lgDocument->tabData != &newData)
        *lgDocument->tabData = newData;
    Q_EMIT titleChanged();
    panCancelled();
    indicatorTouchCancelled();
    if (newData.stringCount() == surface->stringCount()) {
        surface->replaceTabRows();
        surface->lyricsSizePercentage = int(newData.lyricSize);
        board->setNumStrings(newData.stringCount());
    } else {
        applyStringLayout();
    }
    refreshFretHighlights();
    Q_EMIT layoutChanged();
}

void TabEditViewController::applyStringLayout()
{
    // A new string count: rows, letters and the fretboard's bands are built for it anew.
    const int row = surface->tabRowIndex;
    surface->stringNotes = tabData().stringNotes;
    surface->showingTabRows.clear();
    surface->loadTabRows();
    board->setNumStrings(tabData().stringCount());
    if (prevViewSize) {
        const QSizeF size = *prevViewSize;
        prevViewSize.reset();
        applyViewSize(size.width(), size.height());
    }
    surface->moveToTabRow(std::min(row, int(surface->tabRows.size()) - surface->showingCount()),
                          true, true);
}
