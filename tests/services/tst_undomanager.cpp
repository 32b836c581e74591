#include "services/lgundomanager.h"
#include "testmain.h"
#include "undocounter.h"

class TestUndoManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void oneTurnIsOneStep();
    void limitOfFiftyLevels();
    void explicitGroupSpansTurns();
    void groupingOffMakesEachRegistrationAStep();
};

void TestUndoManager::oneTurnIsOneStep()
{
    LgUndoManager manager;
    Counter model{&manager, {0, 0, 0}};
    model.set(0, 1);
    model.set(1, 2);
    model.set(2, 3);
    // The open group already counts: an undo in the same turn closes and undoes it.
    QVERIFY(manager.canUndo());
    QCoreApplication::processEvents();
    model.set(0, 9);
    manager.undo();
    QCOMPARE(model.values, QList<int>({1, 2, 3}));
    manager.undo();
    QCOMPARE(model.values, QList<int>({0, 0, 0}));
    QVERIFY(!manager.canUndo());

    // Redo walks the same steps back.
    manager.redo();
    QCOMPARE(model.values, QList<int>({1, 2, 3}));
    manager.redo();
    QCOMPARE(model.values, QList<int>({9, 2, 3}));
    QVERIFY(!manager.canRedo());

    // A new edit drops what could be redone.
    manager.undo();
    QVERIFY(manager.canRedo());
    model.set(1, 5);
    QVERIFY(!manager.canRedo());
    QCoreApplication::processEvents();
    QVERIFY(!manager.canRedo());
    manager.undo();
    QCOMPARE(model.values, QList<int>({1, 2, 3}));
}

void TestUndoManager::limitOfFiftyLevels()
{
    LgUndoManager manager;
    Counter model{&manager, {0}};
    for (int i = 1; i <= 51; ++i) {
        model.set(0, i);
        QCoreApplication::processEvents();
    }
    for (int i = 0; i < 50; ++i)
        manager.undo();
    // The first edit fell away: its value stays.
    QCOMPARE(model.values[0], 1);
    QVERIFY(!manager.canUndo());
    for (int i = 0; i < 50; ++i)
        manager.redo();
    QCOMPARE(model.values[0], 51);
    QVERIFY(!manager.canRedo());
}

void TestUndoManager::explicitGroupSpansTurns()
{
    LgUndoManager manager;
    Counter model{&manager, {0, 0}};
    {
        UndoGroupGuard guard(&manager);
        model.set(0, 1);
        QCoreApplication::processEvents(); // still open: the guard holds it
        model.set(1, 1);
    }
    QCoreApplication::processEvents();
    QCOMPARE(manager.groupingLevel(), 0);
    manager.undo();
    QCOMPARE(model.values, QList<int>({0, 0}));
    QVERIFY(!manager.canUndo());
}

void TestUndoManager::groupingOffMakesEachRegistrationAStep()
{
    LgUndoManager manager;
    manager.groupsByEvent = false;
    Counter model{&manager, {0}};
    model.set(0, 1);
    model.set(0, 2);
    manager.undo();
    QCOMPARE(model.values[0], 1);
    {
        UndoGroupGuard guard(&manager);
        model.set(0, 3);
        model.set(0, 4);
    }
    manager.undo();
    QCOMPARE(model.values[0], 1);
}

LUTEGRID_TEST_MAIN(TestUndoManager)
#include "tst_undomanager.moc"
