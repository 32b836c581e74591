#include "services/apppaths.h"
#include "windowplacement.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QWindow>
#include <QtTest>

class TestWindowPlacement : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(home.isValid());
        qputenv("LUTEGRID_HOME", home.path().toUtf8());
    }

    // A frame saved by one run is where the next run's window opens.
    void savedGeometryIsRestored()
    {
        const QString file = WindowPlacement::placementFile();
        QVERIFY(file.startsWith(home.path()));
        QFile::remove(file);
        QWindow first;
        WindowPlacement::restoreAndTrack(&first);
        first.show();
        first.setGeometry(QRect(40, 50, 700, 500));
        first.hide();
        QCOMPARE(WindowPlacement::savedGeometry(), QRect(40, 50, 700, 500));

        QWindow second;
        WindowPlacement::restoreAndTrack(&second);
        QCOMPARE(second.geometry(), QRect(40, 50, 700, 500));
    }

    void firstRunAndBadInput()
    {
        const QRect screen(0, 0, 1920, 1080);
        // First run: the desktop size centred, never the phone's.
        QCOMPARE(WindowPlacement::chooseGeometry({}, screen), QRect(410, 160, 1100, 760));
        // A small screen clamps it.
        QCOMPARE(WindowPlacement::chooseGeometry({}, QRect(0, 0, 1024, 600)).size(),
                 QSize(1024, 600));
        // A frame off every screen starts afresh; one hanging over the edge is pulled in.
        QCOMPARE(WindowPlacement::chooseGeometry(QRect(5000, 5000, 800, 600), screen),
                 QRect(410, 160, 1100, 760));
        QCOMPARE(WindowPlacement::chooseGeometry(QRect(1500, 900, 800, 600), screen),
                 QRect(1120, 480, 800, 600));

        const QString file = home.filePath(u"broken.json"_qs);
        for (const QByteArray &bytes : {QByteArray("not json"), QByteArray("{\"width\": -5}"),
                                        QByteArray("[1,2]")}) {
            QFile out(file);
            QVERIFY(out.open(QIODevice::WriteOnly));
            out.write(bytes);
            out.close();
            QCOMPARE(WindowPlacement::savedGeometry(file), QRect());
        }
    }

private:
    QTemporaryDir home;
};

QTEST_MAIN(TestWindowPlacement)
#include "tst_windowplacement.moc"
