#include "tabeditviewcontroller.h"

#include "editorlog.h"
#include "services/analytics.h"
#include "services/dialogpresenter.h"
#include "services/lgundomanager.h"
#include "services/saveddata.h"
#include "sound/soundmanager.h"

#include <algorithm>
#include <cmath>
#include <functional>

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
    indicator = std::make_unique<TabScrollIndicator>(surface);
    pan = std::make_unique<TabRowPan>(surface, indicator.get());
    keys = std::make_unique<HardwareKeyboard>(*this);
    setUpChordsAndLyrics();
    magic = std::make_unique<MagicEdit>(*surface);
    magic->bandBottom = [this] {
        // Above the fretboard, and never far below the rows.
        const double fretTop = viewHeight - fretboardHeight - navHeight;
        return std::min(fretTop - 5.0, surface->frameSize.height() + 20.0);
    };
    pan->startArea = [this] {
        // Magic edit drags selections over the rows instead; the strip of the next row's
        // preview below the rows takes a pan as well.
        if (inMagicEditMode)
            return QRectF();
        const double bottom = tabEditViewHeight + (nextRowPreviewRow >= 0 ? 30.0 : 0.0);
        return QRectF(-3.0, 0.0, tabEditViewWidth + 3.0, bottom);
    };

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
        connect(lgDocument->edits(), &TabEdits::tabValuesChanged, this,
                &TabEditViewController::tabValuesChanged, Qt::UniqueConnection);
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
    viewHeight = h;
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
        closeSettingsMenu();
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
        // Without a fretboard the rows are edited as blocks.
        if (!inMagicEditMode)
            toggleMagicEditMode();
    } else {
        shortLayout = false;
        // Any new size of the normal layout leaves magic edit.
        if (inMagicEditMode)
            toggleMagicEditMode();
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
    lyricDropdown->closeLyricDropdown();
    // Without a fretboard there is nothing for the chord bar to cover.
    if (shortLayout)
        chordShortcutMode->leave();
    chordShortcutMode->setCoverSize(w, fretboardHeight);
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
    indicator->viewHeight = height;
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
    chordShortcutMode->refreshCustomEnabled();
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

bool TabEditViewController::runGuardedTool(const std::function<void()> &tool)
{
    // Between a fret press and its release the column differs from what the undo stack knows:
    // the tools that edit rows or walk the stack wait for the fingers to lift.
    if (pressInProgress())
        return false;
    tool();
    return true;
}

void TabEditViewController::tabClear()
{
    runGuardedTool([this] {
        if (inMagicEditMode)
            magic->clearSelection();
        else
            surface->clearCursorColumn();
        refreshFretHighlights();
        showEditMoveButts();
    });
}

void TabEditViewController::undoEdit()
{
    runGuardedTool([this] {
        surface->undoEdit();
        refreshFretHighlights();
        showEditMoveButts();
    });
}

void TabEditViewController::redoEdit()
{
    runGuardedTool([this] {
        surface->redoEdit();
        refreshFretHighlights();
        showEditMoveButts();
    });
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
    runGuardedTool([this] { addRowAtEnd(); });
}

void TabEditViewController::addRowAtEnd()
{
    const int count = int(surface->tabRows.size());
    surface->insertTabRow(surface->tabRowIndex + surface->showingCount(),
                          TabRowData(surface->numTabColumns, surface->stringCount()));
    // The window can't grow: the rows come up from one row lower.
    if (count >= surface->visibleTabRowCountPotential && !surface->freeVerticalScroll)
        pan->slideInFromBelow();
    markToolsSeen(true);
}

void TabEditViewController::insertTabRow()
{
    runGuardedTool([this] {
        surface->insertTabRow(surface->cursorTabRow(),
                              TabRowData(surface->numTabColumns, surface->stringCount()));
        markToolsSeen(true);
    });
}

void TabEditViewController::deleteTabRow()
{
    runGuardedTool([this] { deleteCursorRow(); });
}

void TabEditViewController::deleteCursorRow()
{
    // A tab's only row stays, and nothing is said.
    if (surface->tabRows.size() < 2)
        return;
    // With rows waiting below the window, those under the cursor's row slide up over it.
    const bool slide = !surface->freeVerticalScroll &&
                       surface->tabRowIndex + surface->showingCount() < surface->tabRows.size();
    surface->removeTabRow(surface->freeVerticalScroll ? surface->editShowingTabRowIndex
                                                      : surface->cursorTabRow());
    if (slide)
        pan->slideUpFrom(surface->editShowingTabRowIndex);
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
    lyricDropdown->reopenLyricDropdown();
    checkUnseenTools();
}

void TabEditViewController::checkUnseenTools()
{
    const SavedData &saved = SavedData::shared();
    bool show = false;
    if (saved.tabCreateCount <= 2 && existingTabCount <= 2 && !saved.toolsMarkedSeen &&
        !saved.toolsMarkedSeenTemporary && surface->tabRows.size() == 1 &&
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
    lyricDropdown->closeLyricDropdown();
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
    if (lyricDropdown->openedAtTabRowIndex != tabRowIndex)
        lyricDropdown->closeLyricDropdown();
    int preview = -1;
    if (!surface->freeVerticalScroll && fretboardHeight != 0.0 &&
        tabRowIndex + showingCount < totalCount)
        preview = tabRowIndex + showingCount;
    if (preview != nextRowPreviewRow) {
        nextRowPreviewRow = preview;
        Q_EMIT layoutChanged();
    }
    indicator->rowPositionChanged();
    magic->rowsMoved();
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

void TabEditViewController::stringTouched(Strip view, int stringNumber, int shownRow)
{
    // The letters beside the tab select a whole string, and only in magic edit.
    if (view == Strip::TabLetters) {
        magic->stringLetterTapped(stringNumber, shownRow);
        return;
    }
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

// View mode

QPoint TabEditViewController::viewModeStartPoint() const
{
    return QPoint(surface->editColIndex, surface->cursorTabRow());
}

void TabEditViewController::showRowFromViewMode(int row, int column)
{
    const int rows = int(surface->tabRows.size());
    if (row < 0 || row >= rows)
        return;
    surface->moveToTabRow(row, true, false);
    if (surface->freeVerticalScroll) {
        surface->setEditPosition(std::max(column, 0), row);
        return;
    }
    // Near the end the page can't put the row on top: it shows the last page instead.
    const int shown = surface->showingCount();
    if (row < surface->tabRowIndex || row >= surface->tabRowIndex + shown)
        surface->moveToTabRow(std::max(0, rows - shown), true, false);
    surface->setEditPosition(std::max(column, 0), row - surface->tabRowIndex);
}

// The document

void TabEditViewController::finishEditing()
{
    if (finishedEditing)
        return;
    finishedEditing = true;
    // Lyrics typed within the last second go with the rows.
    surface->commitLyricsField();
    if (lgDocument) {
        lgDocument->changeListener = nullptr;
        // The editor's tab is the document's own: only a document that lost it meanwhile
        // differs.
        if (!lgDocument->tabData)
            Analytics::logEvent(u"Tdata save diff"_qs);
        if (!lgDocument->close())
            Analytics::logEvent(u"Save fail"_qs);
    }
    Q_EMIT finished();
}

void TabEditViewController::documentConflictDetected(
    const std::optional<QList<FileVersion>> &versions)
{
    if (dialogs && dialogs->isPresenting())
        return;
    // No list of versions to choose from: the editor can't show this tab as it stands.
    if (!versions) {
        Q_EMIT returnToRootRequested();
        return;
    }
    if (!dialogs)
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
    pan->panCancelled();
    indicator->indicatorTouchCancelled();
    if (newData.stringCount() == surface->stringCount()) {
        // Another tuning of as many strings still changes the letters, the note names on the
        // rows and the pitch of a press; the capo follows through capoFret.
        surface->stringNotes = newData.stringNotes;
        surface->lyricsSizePercentage = int(newData.lyricSize);
        surface->replaceTabRows();
        board->setNumStrings(newData.stringCount());
        // Another tuning has other chords.
        if (chordShortcutMode->inChordShortcutMode)
            chordShortcutMode->rebuildChordBar();
    } else {
        applyStringLayout();
    }
    refreshFretHighlights();
    Q_EMIT layoutChanged();
}

void TabEditViewController::applyStringLayout()
{
    // A new string count: rows, letters and the fretboard's bands are built for it anew, and
    // chord shortcut mode ends.
    chordShortcutMode->leave();
    lyricDropdown->closeLyricDropdown();
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
