#include "tabeditsurface.h"

#include "model/tabfileformat.h"
#include "services/lgundomanager.h"
#include "services/saveddata.h"
#include "surface/tabrowvalues.h"
#include "surfacefonts.h"

#include <QFile>
#include <QLineF>
#include <QUrl>

#include <algorithm>
#include <cmath>

TabEditSurface::TabEditSurface(QQuickItem *parent)
    : QQuickItem(parent), editView(new TabEditView(this)),
      ownUndo(std::make_unique<LgUndoManager>()),
      ownTab(std::make_unique<TabData>(editView->tab())),
      ownEdits(std::make_unique<TabEdits>(ownTab.get(), ownUndo.get()))
{
    SurfaceFonts::load();
    setUpInput();
    setClip(true);
    editView->setTabEdits(ownEdits.get());
    // Standing alone (the demo page) it follows the app's settings; an editor hands its own.
    editView->settings.hideColHeaders = SavedData::shared().hideColHeaders;
    editView->settings.notesOnTab = SavedData::shared().notesOnTab;
    editView->stringNotes = standardStringNotes(editView->tabRows.first().stringCount);
    connect(editView, &TabEditView::layoutChanged, this, &TabEditSurface::layoutChanged);
    connect(editView, &TabEditView::layoutChanged, this, &TabEditSurface::highlightChanged);
    connect(editView, &TabEditView::contentOffsetChanged, this,
            &TabEditSurface::contentOffsetChanged);
    connect(editView, &TabEditView::highlightChanged, this, &TabEditSurface::highlightChanged);
    connect(editView, &TabEditView::shownRowChanged, this, &TabEditSurface::rowsChanged);
    connect(editView, &TabEditView::menuChanged, this, &TabEditSurface::menuChanged);
    connect(editView, &TabEditView::selectionChanged, this, &TabEditSurface::selectionChanged);
    connect(ownUndo.get(), &LgUndoManager::changed, this, &TabEditSurface::undoStateChanged);
}

TabEditSurface::~TabEditSurface()
{
    if (editView)
        editView->setTabEdits(nullptr);
}

qreal TabEditSurface::contentWidth() const
{
    return std::max(editView->contentSize.width(), editView->tabWidth);
}

qreal TabEditSurface::contentHeight() const
{
    return std::max(editView->contentSize.height(), height());
}

QVariantList TabEditSurface::rowRects() const
{
    QVariantList rects;
    for (const VisibeTabRowView &row : std::as_const(editView->showingTabRows))
        rects.append(row.tabRowFrame);
    return rects;
}

QVariantList TabEditSurface::chordRects() const
{
    QVariantList rects;
    for (const VisibeTabRowView &row : std::as_const(editView->showingTabRows))
        rects.append(row.chordNamesDisplay.frame);
    return rects;
}

QVariantList TabEditSurface::lyricRects() const
{
    QVariantList rects;
    for (const VisibeTabRowView &row : std::as_const(editView->showingTabRows))
        rects.append(row.lyricsField.frame);
    return rects;
}

QStringList TabEditSurface::lyricTexts() const
{
    QStringList texts;
    for (const VisibeTabRowView &row : std::as_const(editView->showingTabRows))
        texts.append(row.lyricsField.text);
    return texts;
}

bool TabEditSurface::chordNamesHidden() const
{
    return editView->settings.hideColHeaders;
}

QRectF TabEditSurface::highlightRect() const
{
    return editView->editColumnHighlight.value_or(QRectF());
}

bool TabEditSurface::highlightVisible() const
{
    return editView->editColumnHighlight && !editView->editColumnHighlightHidden &&
           editView->showingCount() > 0;
}

void TabEditSurface::setRowsWanted(int count)
{
    if (count == wantedRows)
        return;
    wantedRows = count;
    Q_EMIT rowsWantedChanged();
    applyRowCount();
}

void TabEditSurface::setFreeScroll(bool free)
{
    if (free == editView->freeVerticalScroll)
        return;
    editView->setFreeVerticalScroll(free, 0, true);
    applyRowCount();
}

bool TabEditSurface::notesOnTab() const
{
    return editView->settings.notesOnTab;
}

void TabEditSurface::setNotesOnTab(bool on)
{
    if (editView->settings.notesOnTab == on)
        return;
    SavedData::shared().notesOnTab = on;
    editView->settings.notesOnTab = on;
    editView->refreshShowingRows(true);
    Q_EMIT rowsChanged();
}

bool TabEditSurface::canUndo() const
{
    return ownUndo->canUndo();
}

bool TabEditSurface::canRedo() const
{
    return ownUndo->canRedo();
}

void TabEditSurface::applyRowCount()
{
    if (height() <= 0 || width() <= 0)
        return;
    editView->setFrameSize(size());
    int count = wantedRows;
    if (editView->freeVerticalScroll) {
        count = int(editView->tabRows.size());
    } else if (count <= 0) {
        // As many rows as keep a comfortable string spacing.
        const double pitch = TabRowValues::totalHeight + TabEditView::tabRowVertSpacing;
        count = std::max(1, int((height() + TabEditView::tabRowVertSpacing) / pitch));
    }
    editView->setVisibleTabRowCount(count);
}

void TabEditSurface::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        applyRowCount();
}

bool TabEditSurface::loadTab(const QString &pathOrUrl)
{
    const QUrl url(pathOrUrl);
    QString path = pathOrUrl;
    if (url.scheme() == u"qrc")
        path = u":"_qs + url.path();
    else if (url.isLocalFile())
        path = url.toLocalFile();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    std::optional<TabData> tab = path.endsWith(u".lgrdi"_qs) ? tabDataFromDocumentData(bytes)
                                                             : tabDataFromExchangeData(bytes);
    if (!tab)
        return false;
    loadTabData(*tab);
    return true;
}

void TabEditSurface::loadTabData(const TabData &tab)
{
    ownUndo->removeAllActions();
    editView->stringNotes = tab.stringNotes;
    editView->lyricsSizePercentage = int(tab.lyricSize);
    editView->loadTabRows(tab.tabRowDatas);
    // Views built for another tuning go: the next layout builds them for this one.
    editView->showingTabRows.clear();
    applyRowCount();
    editView->setEditPosition(0, 0);
    Q_EMIT layoutChanged();
    Q_EMIT rowsChanged();
    Q_EMIT undoStateChanged();
}

void TabEditSurface::showMessage(const std::optional<QString> &text)
{
    lastMessage = text.value_or(QString());
    Q_EMIT messageChanged();
}

void TabEditSurface::undo()
{
    if (!editView->preEditColumnData)
        editView->undoEdit();
}

void TabEditSurface::redo()
{
    if (!editView->preEditColumnData)
        editView->redoEdit();
}

void TabEditSurface::addColumn()
{
    showMessage(editView->addColumnAtCursor());
}

void TabEditSurface::removeColumn()
{
    showMessage(editView->removeColumn(editView->cursorTabRow(), editView->editColIndex));
}

void TabEditSurface::toggleBar()
{
    editView->toggleBarColumn();
}

void TabEditSurface::clearColumn()
{
    editView->clearCursorColumn();
}

void TabEditSurface::addRow()
{
    const int index = editView->cursorTabRow() + 1;
    editView->insertTabRow(index, TabRowData(editView->numTabColumns, editView->stringCount()));
    applyRowCount();
}

void TabEditSurface::tapFret(int fret)
{
    editView->pressFret(editView->editColItemIndex + 1, fret);
    if (editView->commitFretPress()) {
        const qint64 amount = SavedData::shared().autoCursorAmount;
        if (amount > 0) {
            editView->editColIndex += int(std::min<qint64>(amount, 3));
            editView->setEditPosition(editView->editColIndex, editView->editShowingTabRowIndex);
        }
    }
}

void TabEditSurface::selectChordColumn(int shownRow, qreal x)
{
    if (!editView->tabRowTouchesEnabled || shownRow < 0 || shownRow >= editView->showingCount())
        return;
    ChordNamesDisplay &display = editView->showingTabRows[shownRow].chordNamesDisplay;
    const int column = display.columnAt(x);
    if (column >= 0)
        editView->chordNameTapped(&display, column);
}
