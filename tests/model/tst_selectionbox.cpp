#include "model/selectionbox.h"
#include "testmain.h"

class TestSelectionBox : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void counts_data();
    void counts();
    void cellFrame();
};

void TestSelectionBox::counts_data()
{
    QTest::addColumn<SelectionBox>("box");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("items");
    QTest::addColumn<int>("headers");

    QTest::newRow("one cell") << SelectionBox(4, 1, 2, 1, 0) << 1 << 1 << 0;
    QTest::newRow("block") << SelectionBox(2, 4, 1, 3, 7) << 4 << 3 << 0;

    SelectionBox namesOnly(3, 3, 0, 1, 0);
    namesOnly.itemIndexStart = -1;
    namesOnly.itemIndexEnd = -1;
    namesOnly.colHeaderStart = 3;
    namesOnly.colHeaderEnd = 5;
    QTest::newRow("chord names only") << namesOnly << 3 << 0 << 3;

    // An empty side counts as nothing, whatever its end field still says.
    SelectionBox noColumns(0, 5, 0, 6, 0);
    noColumns.colIndexStart = -1;
    QTest::newRow("no columns") << noColumns << 0 << 6 << 0;
    QTest::newRow("default") << SelectionBox() << 0 << 0 << 0;
}

void TestSelectionBox::counts()
{
    QFETCH(SelectionBox, box);
    QFETCH(int, columns);
    QFETCH(int, items);
    QFETCH(int, headers);
    QCOMPARE(box.columnCount(), columns);
    QCOMPARE(box.itemCount(), items);
    QCOMPARE(box.headerCount(), headers);
    QCOMPARE(box.selectedCellCount(), columns * items);
    QCOMPARE(box.hasCells(), columns * items > 0);
    QCOMPARE(box.hasHeaders(), headers > 0);
    if (box.hasCells()) {
        QVERIFY(box.containsColumn(box.colIndexStart) && box.containsColumn(box.colIndexEnd));
        QVERIFY(!box.containsColumn(box.colIndexEnd + 1));
        QVERIFY(!box.containsItem(box.itemIndexStart - 1));
    }
    QCOMPARE(box.containsItem(-1), false);
}

void TestSelectionBox::cellFrame()
{
    const SelectionBox box(3, 4, 1, 2, 9);
    // Widened by the caller's origin; the row itself plays no part.
    QCOMPARE(box.cellFrame(28.0, 20.0, 10.0, 50.0), QRectF(94.0, 70.0, 112.0, 40.0));
    QCOMPARE(box.cellFrame(28.0, 20.0, 0.0, 0.0), QRectF(84.0, 20.0, 112.0, 40.0));
}

LUTEGRID_TEST_MAIN(TestSelectionBox)
#include "tst_selectionbox.moc"
