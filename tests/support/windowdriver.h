#pragma once

#include <QDir>
#include <QGuiApplication>
#include <QPointingDevice>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>

// What every window test drives its window with: touches, clicks, drags, keys and shots.

// The first item of type T under `item`; with a name, the first visible one of that name.
// Repeater delegates are children of their item only, so the search walks the item tree.
template <typename T = QQuickItem> T *findItem(QQuickItem *item, const QString &name = {})
{
    if (!item)
        return nullptr;
    auto *typed = qobject_cast<T *>(item);
    if (typed && (name.isEmpty() || (item->objectName() == name && item->isVisible())))
        return typed;
    const QList<QQuickItem *> children = item->childItems();
    for (QQuickItem *child : children) {
        if (T *found = findItem<T>(child, name))
            return found;
    }
    return nullptr;
}

inline QPoint centerOf(QQuickItem *target)
{
    return target->mapToScene(QPointF(target->width() / 2, target->height() / 2)).toPoint();
}

// A test class derives from this and QObject and names the window it drives.
class WindowDriver {
protected:
    virtual ~WindowDriver() = default;
    virtual QQuickWindow *drivenWindow() const = 0;

    QPointingDevice *touch = nullptr;
    QString shots;

    // The touch device, and the screenshot folder build/<shotFolder> under the source tree.
    void startDriving(const QString &shotFolder)
    {
        touch = QTest::createTouchDevice();
        shots = QDir(QString::fromUtf8(LUTEGRID_SOURCE_DIR)).filePath(u"build/"_qs + shotFolder);
        QDir().mkpath(shots);
    }

    QTest::QTouchEventSequence touches() { return QTest::touchEvent(drivenWindow(), touch); }

    void tap(QPoint point)
    {
        touches().press(0, point, drivenWindow());
        touches().release(0, point, drivenWindow());
        QCoreApplication::processEvents();
    }
    void tap(QQuickItem *target)
    {
        QVERIFY(target);
        tap(centerOf(target));
    }

    void click(QPoint point, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(drivenWindow(), button, {}, point);
        QCoreApplication::processEvents();
    }

    // One finger or the left mouse button, as a test row chooses.
    void press(QPoint point, bool mouse)
    {
        if (mouse)
            QTest::mousePress(drivenWindow(), Qt::LeftButton, {}, point);
        else
            touches().press(0, point, drivenWindow());
    }
    void move(QPoint point, bool mouse)
    {
        if (mouse)
            QTest::mouseMove(drivenWindow(), point);
        else
            touches().move(0, point, drivenWindow());
    }
    void release(QPoint point, bool mouse)
    {
        if (mouse)
            QTest::mouseRelease(drivenWindow(), Qt::LeftButton, {}, point);
        else
            touches().release(0, point, drivenWindow());
    }
    // Press, move in even steps, release.
    void drag(QPoint from, QPoint to, bool mouse, int steps = 4)
    {
        press(from, mouse);
        for (int step = 1; step <= steps; ++step)
            move(from + (to - from) * step / steps, mouse);
        release(to, mouse);
        QCoreApplication::processEvents();
    }

    void typeText(const QString &text)
    {
        for (QChar ch : text)
            QTest::keyClick(drivenWindow(), ch.toLatin1());
    }

    // Past the dialogs' fade and the pages' slide, the window to shots/<name>.png.
    void saveShot(const QString &name)
    {
        QTest::qWait(300);
        const QImage image = drivenWindow()->grabWindow();
        QVERIFY(!image.isNull());
        QVERIFY(image.save(QDir(shots).filePath(name + u".png"_qs)));
    }
};

// Every window test runs in a fresh LUTEGRID_HOME, set before anything asks for a path.
#define LUTEGRID_WINDOW_TEST_MAIN(TestObject)                                                      \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        QTemporaryDir home;                                                                        \
        qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());                                       \
        QGuiApplication app(argc, argv);                                                           \
        TestObject test;                                                                           \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
