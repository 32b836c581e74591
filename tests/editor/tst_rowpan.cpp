#include "editorsession.h"
#include "testmain.h"

// The row pan and the scroll indicator beside the rows, driven as the screen drives them.
class TestRowPan : public QObject, private EditorSessions {
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }

    void rowPanMovesAtMostOneRow_data()
    {
        QTest::addColumn<int>("startRow");
        QTest::addColumn<double>("rowsDragged");
        QTest::addColumn<double>("velocity");
        QTest::addColumn<int>("endRow");
        QTest::newRow("0.4 up stays") << 1 << -0.4 << 0.0 << 1;
        QTest::newRow("0.6 up moves on") << 1 << -0.6 << 0.0 << 2;
        QTest::newRow("0.6 down moves back") << 1 << 0.6 << 0.0 << 0;
        QTest::newRow("flick moves one") << 0 << -0.2 << -20000.0 << 1;
        QTest::newRow("first row can't go back") << 0 << 0.9 << 0.0 << 0;
    }

    void rowPanMovesAtMostOneRow()
    {
        QFETCH(int, startRow);
        QFETCH(double, rowsDragged);
        QFETCH(double, velocity);
        QFETCH(int, endRow);
        auto [document, editor, view, undo] = open(u"Pan"_qs, 5);
        TabRowPan *pan = editor->rowPan();
        TabScrollIndicator *indicator = editor->scrollIndicator();
        view->moveToTabRow(startRow, true, false);
        QCOMPARE(view->tabRowIndex, startRow);
        const double pitch = view->tabRowPitch();
        QVERIFY(!pan->panBegan(100, -5));
        QVERIFY(pan->panBegan(100, 100));
        pan->panMoved(rowsDragged * pitch);
        QCOMPARE(pan->panOffsetY, rowsDragged * pitch);
        pan->panEnded(velocity);
        QVERIFY(pan->panSettling);
        QCOMPARE(pan->panSettleTimer.interval(), 100);
        QCOMPARE(pan->panOffsetY, (startRow - endRow) * pitch);
        QTRY_VERIFY(!pan->panSettling);
        QCOMPARE(view->tabRowIndex, endRow);
        QCOMPARE(pan->panOffsetY, 0.0);
        QCOMPARE(indicator->scrubberY(), endRow * indicator->singlePositionHeight());
    }

    void scrollIndicatorDragMovesRows()
    {
        auto [document, editor, view, undo] = open(u"Indicator"_qs, 9);
        TabScrollIndicator *indicator = editor->scrollIndicator();
        QVERIFY(indicator->indicatorVisible());
        const double single = indicator->singlePositionHeight();
        QVERIFY(single > 0);
        indicator->indicatorTouchBegan(10);
        QVERIFY(indicator->indicatorDragging());
        indicator->indicatorTouchMoved(10 + single * 3.2);
        indicator->indicatorTouchEnded();
        QCOMPARE(view->tabRowIndex, 3);
        QVERIFY(!indicator->indicatorDragging());
        QVERIFY(indicator->indicatorShown);
        // A cancelled drag returns to where it was.
        indicator->indicatorTouchBegan(0);
        indicator->indicatorTouchMoved(-5000);
        indicator->indicatorTouchCancelled();
        QTRY_COMPARE(view->tabRowIndex, 3);
        QCOMPARE(indicator->scrubberY(), 3 * single);
    }
};

LUTEGRID_TEST_MAIN(TestRowPan)
#include "tst_rowpan.moc"
