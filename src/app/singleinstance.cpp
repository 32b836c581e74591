#include "singleinstance.h"

#include "services/apppaths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalSocket>
#include <QTimer>

namespace {

// A request ends at the end of its line; JSON in compact form holds no line feed.
constexpr char terminator = '\n';

} // namespace

SingleInstance::SingleInstance(QObject *parent) : QObject(parent)
{
    server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = server.nextPendingConnection())
            readClient(socket);
    });
}

QString SingleInstance::serverName()
{
    const QByteArray user = qgetenv("USER").isEmpty() ? qgetenv("USERNAME") : qgetenv("USER");
    const QByteArray key =
        user + '\0' + QDir(AppPaths::configDirectory()).absolutePath().toUtf8();
    return u"lutegrid-"_qs +
           QString::fromLatin1(
               QCryptographicHash::hash(key, QCryptographicHash::Sha256).toHex().left(16));
}

bool SingleInstance::sendToRunning(const WindowRequest &request, const QString &name,
                                   int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(request.toBytes() + terminator);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    // The running one closes the connection once it has the request.
    if (socket.state() == QLocalSocket::ConnectedState)
        socket.waitForDisconnected(timeoutMs);
    return true;
}

bool SingleInstance::listen(const QString &name)
{
    // Someone answers: that is the running instance. Listening anyway would take its name.
    QLocalSocket probe;
    probe.connectToServer(name);
    if (probe.waitForConnected(500))
        return false;
    if (server.listen(name))
        return true;
    // A socket left by a program that crashed.
    QLocalServer::removeServer(name);
    return server.listen(name);
}

void SingleInstance::readClient(QLocalSocket *socket)
{
    auto *timeout = new QTimer(socket);
    timeout->setSingleShot(true);
    connect(timeout, &QTimer::timeout, socket, &QLocalSocket::abort);
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QLocalSocket::errorOccurred, socket, &QObject::deleteLater);
    auto read = [this, socket] {
        if (socket->bytesAvailable() > WindowRequest::maxBytes && !socket->canReadLine()) {
            socket->abort();
            return;
        }
        if (!socket->canReadLine())
            return;
        const QByteArray line = socket->readLine(WindowRequest::maxBytes + 1).trimmed();
        // One request per connection; whatever else came is not ours.
        disconnect(socket, &QLocalSocket::readyRead, this, nullptr);
        socket->disconnectFromServer();
        if (const auto request = WindowRequest::fromBytes(line))
            Q_EMIT requestReceived(*request);
    };
    connect(socket, &QLocalSocket::readyRead, this, read);
    timeout->start(clientTimeoutMs);
    if (socket->bytesAvailable() > 0)
        read();
}
