#include "benchtab.h"
#include "benchutil.h"
#include "services/lgundomanager.h"
#include "services/saveddata.h"
#include "surface/tabeditview.h"
#include "surfacefonts.h"
#include "surfacepainter.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

// Fret presses with their commits on the cursor row of a tab of `rows` rows: per press.
static double pressCost(int rows)
{
    TabData tab = makeBenchmarkTab(rows, 64, 6);
    LgUndoManager undo;
    undo.groupsByEvent = false;
    TabEdits edits(&tab, &undo);
    TabEditView view;
    view.setTabEdits(&edits);
    view.stringNotes = tab.stringNotes;
    view.setFrameSize(QSizeF(1600, 900));
    view.loadTabRows();
    view.setVisibleTabRowCount(3);
    view.moveToTabRow(rows / 2 - 1, false, false);
    const int presses = 2000;
    const double ms = bestOf([&] {
        for (int i = 0; i < presses; ++i) {
            view.setEditPosition(i % 64, 1);
            view.pressFret(1 + i % 6, i % 13);
            view.commitFretPress();
        }
    });
    return ms * 1000.0 / presses;
}

// One step of a dragged selection of 64 columns on eight strings, from the move to the row
// under it painted again with the names the block brings: per step. The dragged picture is
// painted once when the drag starts, as the item does, and only moves afterwards.
static double dragStepCost()
{
    TabData tab = makeBenchmarkTab(4, 64, 8);
    LgUndoManager undo;
    TabEdits edits(&tab, &undo);
    TabEditView view;
    view.setTabEdits(&edits);
    view.stringNotes = tab.stringNotes;
    view.setFrameSize(QSizeF(1600, 900));
    view.loadTabRows();
    view.setVisibleTabRowCount(3);
    view.setMagicEditMode(true);
    SelectionBox box(0, 64, 0, 8, 0);
    box.colHeaderStart = 0;
    box.colHeaderEnd = 63;
    view.commitSelection(box);
    const QRectF frame = *view.makeSelectionDragView(QPointF(10, view.headerBandHeight() + 5));
    view.makeSelectionCover(frame);
    view.showSelectionCover(true);
    // Every row repaints what the surface marks, as the row items do.
    QImage rowImage(QSize(64 * 25, int(view.tabRowHeight)), QImage::Format_ARGB32_Premultiplied);
    const SurfacePainter::Colors colors = SurfacePainter::colors(false);
    int painted = 0;
    QObject::connect(&view, &TabEditView::columnsNeedRender, [&](int shown, const QList<int> &) {
        const QRectF rowRect(0, 0, rowImage.width(), rowImage.height());
        rowImage.fill(Qt::white);
        QPainter painter(&rowImage);
        SurfacePainter::paintColumns(painter, view.showingTabRows[shown].tabColumnViews, rowRect,
                                     view.stringNotes, false, colors, rowRect);
        ++painted;
    });
    QObject::connect(&view, &TabEditView::chordNamesNeedRender, [&](int shown) {
        QPainter painter(&rowImage);
        SurfacePainter::paintChordNames(painter, view.showingTabRows[shown].chordNamesDisplay,
                                        QPointF(), colors);
    });
    const int steps = 200;
    const double ms = bestOf([&] {
        for (int i = 0; i < steps; ++i) {
            // Down a row and back: the block snaps to another row at every step.
            const double y = view.headerBandHeight() + view.tabRowPitch() * (i % 2) + 3;
            view.dragSelectionMoved(frame.x(), y, frame.width(), frame.height());
            QCoreApplication::sendPostedEvents();
        }
    });
    // The block only snaps from row to row: no column of the rows is painted again for it.
    if (painted != 3)
        printFigure("  unexpected column repaints", painted - 3, "");
    return ms / steps;
}

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home;
    qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
    QGuiApplication app(argc, argv);
    SavedData::shared().playSounds = false;

    const double small = pressCost(10);
    const double large = pressCost(1000);
    printFigure("press+commit, 10 rows", small, "us");
    printFigure("press+commit, 1,000 rows", large, "us");
    printFigure("ratio 1,000 / 10 rows", large / small, "");

    // One full row as the software renderer paints it: 64 columns on eight strings.
    const TabData tab = makeBenchmarkTab(1, 64, 8);
    QList<TabColumnView> columns;
    for (const TabColumnData &column : tab.tabRowDatas.first().colDatas)
        columns.append(TabColumnView(column));
    SurfaceFonts::load();
    const QRectF rowRect(0, 0, 64 * 25.0, 200.0);
    QImage image(rowRect.size().toSize(), QImage::Format_ARGB32_Premultiplied);
    const SurfacePainter::Colors colors = SurfacePainter::colors(false);
    const double paint = bestOf(
        [&] {
            image.fill(Qt::white);
            QPainter painter(&image);
            SurfacePainter::paintColumns(painter, columns, rowRect, tab.stringNotes, false, colors,
                                         rowRect);
        },
        20);
    printFigure("paint 64-column 8-string row", paint, "ms");
    printFigure("drag step, 64x8 selection", dragStepCost(), "ms");
    return 0;
}
