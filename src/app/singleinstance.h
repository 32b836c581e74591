#pragma once

#include "shell/windowrequest.h"

#include <QByteArray>
#include <QLocalServer>
#include <QObject>
#include <QString>

class QLocalSocket;

// One running program per user and home: a later start hands its request to the running one
// over a local socket and leaves. The running one reads at most one request per connection,
// ignores what isn't one, and drops a client that goes quiet.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    explicit SingleInstance(QObject *parent = nullptr);

    // Unique to the user and to the folder the settings live in, so that test runs with their
    // own home don't meet a user's program.
    static QString serverName();
    // True once a running instance has the whole request.
    static bool sendToRunning(const WindowRequest &request, const QString &name = serverName(),
                              int timeoutMs = 3000);

    // Starts answering; a socket left over by a program that crashed is cleared first. False if
    // another instance answers already or the socket can't be had.
    bool listen(const QString &name = serverName());
    QString fullServerName() const { return server.fullServerName(); }

    // How long a client may take to send its request.
    int clientTimeoutMs = 5000;

Q_SIGNALS:
    void requestReceived(const WindowRequest &request);

private:
    void readClient(QLocalSocket *socket);

    QLocalServer server;
};
