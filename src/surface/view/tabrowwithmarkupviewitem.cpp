#include "tabrowwithmarkupviewitem.h"

#include "surface/stringspacedview.h"
#include "surfacefonts.h"
#include "surfacepainter.h"
#include "surfacepalette.h"

#include <QPainter>

TabRowWithMarkupViewItem::TabRowWithMarkupViewItem(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(this, &TabRowWithMarkupViewItem::changed, this, &TabRowWithMarkupViewItem::relayout);
    connect(this, &TabRowWithMarkupViewItem::changed, this,
            &TabRowWithMarkupViewItem::watchSurface);
    connect(SurfacePalette::instance(), &SurfacePalette::changed, this, [this] { update(); });
}

std::optional<TabRowWithMarkupView> TabRowWithMarkupViewItem::rowView() const
{
    if (!host || modelRow < 0 || modelRow >= host->view()->tabRows.size())
        return std::nullopt;
    const TabEditView *view = host->view();
    TabRowWithMarkupView::Options options;
    options.hideColHeaders = view->settings.hideColHeaders;
    options.notesOnTab = view->settings.notesOnTab;
    options.isEditMode = editMode;
    options.showLyrics = showLyrics;
    options.showChordNamesInit = showChordNames;
    options.lyricsBelow = lyricsBelow;
    options.fontName = SurfaceFonts::monoFamily();
    return TabRowWithMarkupView(view->tabRows[modelRow], view->stringNotes, capoFret,
                                view->lyricsSizePercentage, options);
}

void TabRowWithMarkupViewItem::watchSurface()
{
    if (watched == host)
        return;
    if (watched) {
        disconnect(watched, nullptr, this, nullptr);
        disconnect(watched->view(), nullptr, this, nullptr);
    }
    watched = host;
    if (!watched)
        return;
    connect(watched, &TabEditSurface::layoutChanged, this, &TabRowWithMarkupViewItem::relayout);
    // Only a change that reaches this row repaints it: an edit elsewhere costs nothing here.
    connect(watched->view(), &TabEditView::tabDataChanged, this, [this](const TabChange &change) {
        using Kind = TabChange::Kind;
        const bool cellsOnly = change.kind == Kind::Columns || change.kind == Kind::Lyrics;
        const bool rowsShifted = change.kind == Kind::RowInserted ||
                                 change.kind == Kind::RowRemoved || change.kind == Kind::Rows ||
                                 change.kind == Kind::RowsAppended;
        if ((cellsOnly && change.row == modelRow) || (rowsShifted && change.row <= modelRow) ||
            change.kind == Kind::ColumnInserted || change.kind == Kind::ColumnRemoved)
            relayout();
    });
}

void TabRowWithMarkupViewItem::relayout()
{
    if (auto row = rowView()) {
        row->setWidth(width());
        setImplicitHeight(row->requestedHeight);
    }
    update();
}

void TabRowWithMarkupViewItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.width() != oldGeometry.width())
        relayout();
}

void TabRowWithMarkupViewItem::paint(QPainter *painter)
{
    if (auto row = rowView()) {
        row->setWidth(width());
        paintRow(*painter, *row, boundingRect(), forceBlack, highlightColumn);
    }
}

void TabRowWithMarkupViewItem::paintRow(QPainter &painter, const TabRowWithMarkupView &row,
                                        const QRectF &rect, bool forceBlack, int highlightColumn)
{
    const SurfacePainter::Colors colors = SurfacePainter::colors(forceBlack);
    const TabRowWithMarkupView::Layout parts = row.layout(rect.size());
    painter.save();
    painter.translate(rect.topLeft());
    if (highlightColumn >= 0) {
        painter.fillRect(row.columnHighlightRect(highlightColumn, rect.size()),
                         SurfacePalette::instance()->colorEditColHighlightBg());
    }
    if (row.options.showLyrics) {
        painter.setPen(colors.label);
        painter.setFont(SurfaceFonts::mono(parts.lyricFontSize));
        for (int i = 0; i < parts.lyricLabels.size() && i < row.lyricLines.size(); ++i)
            painter.drawText(parts.lyricLabels[i], Qt::AlignLeft | Qt::AlignVCenter,
                             row.lyricLines[i]);
    }
    if (row.showsChordNames() && !parts.chordNamesDisplay.isEmpty()) {
        ChordNamesDisplay::Names names;
        for (const TabColumnData &column : row.rowData.colDatas)
            names.append(column.chordName);
        const bool viewMode = !row.options.isEditMode;
        // The band's names are 20 points high in a band of 25: they scale with the row.
        const double scale = parts.chordNamesDisplay.height() / (viewMode ? 19.0 : 25.0);
        painter.save();
        painter.translate(parts.chordNamesDisplay.topLeft());
        painter.scale(scale, scale);
        ChordNamesDisplay scaled(names, QRectF(0, 0, parts.chordNamesDisplay.width() / scale,
                                               parts.chordNamesDisplay.height() / scale));
        scaled.viewMode = viewMode;
        scaled.render();
        SurfacePainter::paintChordNames(painter, scaled, QPointF(0, 0), colors);
        painter.restore();
    }
    if (row.options.showTabRowViews && !parts.tabRowView.isEmpty()) {
        QList<TabColumnView> columns;
        for (const TabColumnData &column : row.rowData.colDatas) {
            columns.append(TabColumnView(column));
            columns.last().forceBlack = forceBlack;
        }
        SurfacePainter::paintColumns(painter, columns, parts.tabRowView,
                                     row.stringNotes.value_or(QStringList()),
                                     row.options.notesOnTab, colors, parts.tabRowView);
    }
    if (row.options.showNotesView && !parts.notesView.isEmpty() && row.stringNotes) {
        StringSpacedView letters;
        letters.numItems = row.stringCount;
        letters.numItemGroups = 1;
        letters.topPadding = parts.notesTopPadding;
        letters.frameSize = QSizeF(parts.notesView.width(), parts.tabRowView.bottom());
        const QList<QRectF> frames = letters.layoutItems();
        painter.setPen(colors.label);
        for (int i = 0; i < frames.size(); ++i) {
            painter.setFont(
                SurfaceFonts::black(StringSpacedView::letterFontSize(frames[i].height())));
            painter.drawText(frames[i], Qt::AlignCenter,
                             StringSpacedView::letter(*row.stringNotes, i));
        }
        if (row.capoFretNum >= 1) {
            const auto capo =
                StringSpacedView::capoLabels(parts.notesView.width(), parts.notesTopPadding);
            painter.save();
            painter.setFont(SurfaceFonts::label(capo.capoFontSize));
            painter.translate(capo.capoFrame.center());
            painter.rotate(-90);
            painter.translate(-capo.capoFrame.center());
            painter.drawText(capo.capoFrame, Qt::AlignCenter, u"CAPO"_qs);
            painter.restore();
            painter.setFont(SurfaceFonts::heavy(capo.numberFontSize));
            painter.drawText(capo.numberFrame, Qt::AlignCenter, QString::number(row.capoFretNum));
        }
    }
    painter.restore();
}
