#include "singleinstance.h"

#include <QDirIterator>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

namespace {

QProcessEnvironment programEnvironment(const QString &home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LUTEGRID_HOME"_qs, home);
    environment.insert(u"QT_QPA_PLATFORM"_qs, u"offscreen"_qs);
    environment.insert(u"QT_QUICK_BACKEND"_qs, u"software"_qs);
    return environment;
}

QStringList filesNamed(const QString &folder, const QString &name)
{
    QStringList found;
    QDirIterator it(folder, {name}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        found.append(it.next());
    return found;
}

} // namespace

// One program per user and home: a later start's request reaches the running one, whatever
// else arrives on its socket or lies about from a crash.
class TestSingleInstance : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void staleSocketDoesNotBlock()
    {
        const QString name = dir.filePath(u"stale"_qs);
        // A socket file that nobody answers on, as a crashed program leaves it.
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        QVERIFY(fd >= 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray path = name.toLocal8Bit();
        std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
        QCOMPARE(::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
        ::close(fd);
        QVERIFY(QFile::exists(name));

        SingleInstance first;
        QVERIFY(first.listen(name));
        // While it runs, a second instance doesn't take its place.
        SingleInstance second;
        QVERIFY(!second.listen(name));
    }

    void garbageIsIgnored()
    {
        const QString name = dir.filePath(u"garbage"_qs);
        SingleInstance running;
        running.clientTimeoutMs = 300;
        QVERIFY(running.listen(name));
        QSignalSpy received(&running, &SingleInstance::requestReceived);

        const QList<QByteArray> garbage{QByteArray("hello\n"), QByteArray("\x00\xff\n", 3),
                                        QByteArray("{\"kind\":\"newtab\"}\n"),
                                        QByteArray(WindowRequest::maxBytes + 10, 'x')};
        QList<QLocalSocket *> clients;
        for (const QByteArray &bytes : garbage) {
            auto *client = new QLocalSocket(this);
            client->connectToServer(name);
            QVERIFY(client->waitForConnected(1000));
            client->write(bytes);
            client->flush();
            clients.append(client);
        }
        // One that says nothing at all is dropped after a while.
        QLocalSocket quiet;
        quiet.connectToServer(name);
        QVERIFY(quiet.waitForConnected(1000));
        QTRY_COMPARE_WITH_TIMEOUT(quiet.state(), QLocalSocket::UnconnectedState, 3000);
        QCOMPARE(received.size(), 0);
        qDeleteAll(clients);

        // And a real request still gets through.
        QTest::qWait(50);
        const WindowRequest request{WindowRequest::Kind::OpenFiles, {u"/a/b.lgrd"_qs}};
        QLocalSocket client;
        client.connectToServer(name);
        QVERIFY(client.waitForConnected(1000));
        client.write(request.toBytes() + '\n');
        QTRY_COMPARE(received.size(), 1);
        QCOMPARE(received.first().first().value<WindowRequest>(), request);
    }

    // The program started with a file hands it, as an absolute path, to the running one.
    void secondStartHandsOverItsFile()
    {
        const QString home = dir.filePath(u"home-one"_qs);
        qputenv("LUTEGRID_HOME", home.toLocal8Bit());
        SingleInstance running;
        QVERIFY(running.listen());
        QSignalSpy received(&running, &SingleInstance::requestReceived);

        QProcess second;
        second.setProcessEnvironment(programEnvironment(home));
        second.setWorkingDirectory(dir.path());
        second.start(QString::fromUtf8(LUTEGRID_PROGRAM), {u"song.lgrd"_qs});
        QTRY_COMPARE_WITH_TIMEOUT(received.size(), 1, 15000);
        // It may have gone already, while the request was being read.
        QVERIFY(second.state() == QProcess::NotRunning || second.waitForFinished(15000));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        const auto request = received.first().first().value<WindowRequest>();
        QCOMPARE(request.kind, WindowRequest::Kind::OpenFiles);
        QCOMPARE(request.files, QStringList{dir.filePath(u"song.lgrd"_qs)});
    }

    // Two real starts: the second asks for a new tab and leaves; the first makes it.
    void twoStartsOfTheProgram()
    {
        const QString home = dir.filePath(u"home-two"_qs);
        qputenv("LUTEGRID_HOME", home.toLocal8Bit());
        QProcess first;
        first.setProcessEnvironment(programEnvironment(home));
        first.start(QString::fromUtf8(LUTEGRID_PROGRAM), {});
        QVERIFY(first.waitForStarted(10000));
        // Up once it answers on its socket.
        QTRY_VERIFY_WITH_TIMEOUT(
            [] {
                QLocalSocket probe;
                probe.connectToServer(SingleInstance::serverName());
                return probe.waitForConnected(200);
            }(),
            30000);

        QProcess second;
        second.setProcessEnvironment(programEnvironment(home));
        second.start(QString::fromUtf8(LUTEGRID_PROGRAM), {u"--new-tab"_qs});
        QVERIFY(second.waitForFinished(15000));
        QCOMPARE(second.exitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(filesNamed(home, u"Untitled 1.lgrdi"_qs).size(), 1, 15000);
        QCOMPARE(first.state(), QProcess::Running);

        first.terminate();
        if (!first.waitForFinished(5000)) {
            first.kill();
            first.waitForFinished(5000);
        }
    }

private:
    QTemporaryDir dir;
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
