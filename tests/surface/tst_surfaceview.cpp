#include "services/saveddata.h"
#include "surface/tabeditview.h"
#include "surfacepalette.h"
#include "tabeditsurface.h"
#include "tabrowviewitem.h"

#include "windowdriver.h"

#include <QQuickView>
#include <QtQml/qqmlextensionplugin.h>
#include <QWheelEvent>

Q_IMPORT_QML_PLUGIN(Lutegrid_SurfacePlugin)

// Drives the demo page as a user would, with touches and clicks, and keeps screenshots.
class TestSurfaceView : public QObject, WindowDriver {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void touchesPlaceCursorAndEdit();
    void mouseDragScrollsSideways();
    void screenshots_data();
    void screenshots();
    void pressRepaintsOnlyItsColumn();
    void magicModeLeavesLyricFieldsUsable();

private:
    QPoint scenePoint(double contentX, double contentY) const;
    QQuickItem *find(const char *name) const
    {
        return findItem(window->rootObject(), QString::fromLatin1(name));
    }
    QImage grab();
    QQuickWindow *drivenWindow() const override { return window.get(); }

    std::unique_ptr<QQuickView> window;
    TabEditSurface *surface = nullptr;
};

void TestSurfaceView::initTestCase()
{
    startDriving(u"surface-shots"_qs);
}

void TestSurfaceView::init()
{
    SavedData::resetShared();
    SavedData::shared().autoCursorAmount = 1;
    SurfacePalette::instance()->setDark(false);
    window = std::make_unique<QQuickView>();
    window->setResizeMode(QQuickView::SizeRootObjectToView);
    window->resize(900, 640);
    window->setSource(QUrl(u"qrc:/Lutegrid/Surface/SurfaceDemoPage.qml"_qs));
    QVERIFY2(window->status() == QQuickView::Ready,
             qPrintable(window->errors().value(0).toString()));
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    surface = window->rootObject()->findChild<TabEditSurface *>(u"surface"_qs);
    QVERIFY(surface);
    QTRY_VERIFY(surface->view()->showingCount() >= 2);
    QCOMPARE(surface->view()->stringNotes.size(), 6);
}

void TestSurfaceView::cleanup()
{
    window.reset();
    surface = nullptr;
}

QPoint TestSurfaceView::scenePoint(double contentX, double contentY) const
{
    const QPointF offset = surface->view()->contentOffset;
    return surface->mapToScene(QPointF(contentX, contentY) - offset).toPoint();
}

QImage TestSurfaceView::grab()
{
    QCoreApplication::processEvents();
    QTest::qWait(30);
    return window->grabWindow();
}

void TestSurfaceView::touchesPlaceCursorAndEdit()
{
    TabEditView *view = surface->view();
    const double h = view->headerBandHeight();
    const double item = view->itemHeight();
    // Column 8 of the first row, fourth string.
    tap(scenePoint(8 * 25 + 12, h + item * 3.5));
    QCOMPARE(view->editColIndex, 8);
    QCOMPARE(view->editColItemIndex, 3);
    // A quick tap opens no menu.
    QTest::qWait(350);
    QVERIFY(!view->noteContextMenu);
    // The lyric band is no place for the cursor.
    tap(scenePoint(20 * 25 + 12, 10));
    QCOMPARE(view->editColIndex, 8);

    const TabColumnData before = view->tabRows[0].colDatas[8];
    QQuickItem *fret = find("fret7");
    QVERIFY(fret);
    tap(fret);
    QCOMPARE(view->tabRows[0].colDatas[8].columnItems[3], ColumnItemType::note(7));
    QCOMPARE(view->editColIndex, 9); // advanced by one
    QVERIFY(surface->canUndo());
    QQuickItem *undo = find("demoUndo");
    tap(undo);
    QCOMPARE(view->tabRows[0].colDatas[8], before);

    // A tap on a chord name selects its column only.
    QQuickItem *chords = find("chordNames1");
    QVERIFY(chords);
    tap(chords->mapToScene(QPointF(16 * 25 + 5, 12)).toPoint());
    QCOMPARE(view->editShowingTabRowIndex, 1);
    QCOMPARE(view->editColIndex, 16);
}

void TestSurfaceView::mouseDragScrollsSideways()
{
    TabEditView *view = surface->view();
    window->resize(520, 640);
    QTRY_VERIFY(surface->contentWidth() > surface->width() + 160);
    const QPoint start = scenePoint(12 * 25, view->headerBandHeight() + view->itemHeight() * 2.5);
    // The cursor's first column may stand a border's width left of the content.
    const double before = view->contentOffset.x();
    QTest::mousePress(window.get(), Qt::LeftButton, {}, start);
    for (int dx = 20; dx <= 160; dx += 20)
        QTest::mouseMove(window.get(), start - QPoint(dx, 0));
    QTest::mouseRelease(window.get(), Qt::LeftButton, {}, start - QPoint(160, 0));
    QCOMPARE(view->contentOffset.x(), std::max(0.0, before + 160.0));
    QVERIFY(view->contentOffset.x() > 150);
    // The drag moved nothing but the view.
    QVERIFY(!view->noteContextMenu);
    QVERIFY(!surface->canUndo());

    // A wheel turned sideways, or with Shift, scrolls by two columns a notch.
    auto wheel = [&](QPoint angle, Qt::KeyboardModifiers modifiers) {
        const QPointF at(start);
        QWheelEvent event(at, window->mapToGlobal(at), QPoint(), angle, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(window.get(), &event);
    };
    const double dragged = view->contentOffset.x();
    wheel(QPoint(-120, 0), Qt::NoModifier);
    QCOMPARE(view->contentOffset.x(), dragged + 50);
    wheel(QPoint(0, 240), Qt::ShiftModifier);
    QCOMPARE(view->contentOffset.x(), dragged - 50);
    // Up and down leave the paged rows where they are.
    wheel(QPoint(0, -120), Qt::NoModifier);
    QCOMPARE(view->contentOffset.x(), dragged - 50);
    QCOMPARE(view->contentOffset.y(), 0.0);
}

void TestSurfaceView::screenshots_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<bool>("notes");
    QTest::newRow("light") << false << false;
    QTest::newRow("dark-note-names") << true << true;
}

void TestSurfaceView::screenshots()
{
    QFETCH(bool, dark);
    QFETCH(bool, notes);
    SurfacePalette::instance()->setDark(dark);
    surface->setNotesOnTab(notes);
    TabEditView *view = surface->view();
    view->setEditPosition(6, 0);
    const QImage shot = grab();
    QVERIFY(shot.save(shots + u"/surface-"_qs + QString::fromLatin1(QTest::currentDataTag()) +
                      u".png"_qs));
    const double scale = shot.devicePixelRatio();
    auto pixel = [&](double x, double y) {
        return QColor(shot.pixel((QPointF(scenePoint(x, y)) * scale).toPoint()));
    };
    const QColor label = SurfacePalette::instance()->colorLabel();
    const QColor background = SurfacePalette::instance()->colorSystemBg();
    auto near = [](const QColor &a, const QColor &b) {
        return qAbs(a.red() - b.red()) + qAbs(a.green() - b.green()) + qAbs(a.blue() - b.blue()) <
               60;
    };
    const double top = view->headerBandHeight() + view->tabRowPitch(); // second row
    const double item = view->itemHeight();
    // Blank column 21 of row 2: the dash's middle is drawn, the gap between columns is not.
    QVERIFY(near(pixel(21 * 25 + 12.5, top + item * 1.5), label));
    QVERIFY(near(pixel(21 * 25 + 0.5, top + item * 1.5), background));
    QVERIFY(near(pixel(21 * 25 + 12.5, top + item * 1.5 + 4), background));
    // Column 12 of row 1 is a bar: the line runs through, nothing else stands beside it.
    const double barTop = view->headerBandHeight();
    for (double y : {item * 0.5, item * 2.9, item * 5.5})
        QVERIFY(near(pixel(12 * 25 + 12.5, barTop + y), label));
    QVERIFY(near(pixel(12 * 25 + 5, barTop + item * 2.5), background));
}

void TestSurfaceView::pressRepaintsOnlyItsColumn()
{
    auto *row = qobject_cast<TabRowViewItem *>(find("tabRow0"));
    QVERIFY(row);
    grab();
    const int before = row->paintedColumnCount;
    surface->view()->setEditPosition(25, 0);
    surface->tapFret(3);
    grab();
    const int painted = row->paintedColumnCount - before;
    QVERIFY2(painted >= 1 && painted <= 4, qPrintable(QString::number(painted)));
}

void TestSurfaceView::magicModeLeavesLyricFieldsUsable()
{
    TabEditView *view = surface->view();
    view->setEditPosition(3, 0);
    view->setMagicEditMode(true);
    tap(scenePoint(10 * 25 + 3, view->headerBandHeight() + 5));
    QCOMPARE(view->editColIndex, 3);
    QQuickItem *lyrics = find("lyricsField0");
    QVERIFY(lyrics);
    QCOMPARE(lyrics->property("text").toString(), u"Down by the river where the willows grow"_qs);
    tap(lyrics->mapToScene(QPointF(40, 20)).toPoint());
    QTRY_VERIFY(lyrics->hasActiveFocus());
}

LUTEGRID_WINDOW_TEST_MAIN(TestSurfaceView)
#include "tst_surfaceview.moc"
