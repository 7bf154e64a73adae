// The server's line assembly: each input is a stream of chunks (split at 0xFE bytes) sent by a
// client over TCP to a session; telnet commands (0xFF) and every kind of line end included. Lines
// must come out whole, one at a time, never longer than the bound, without a line end inside, and
// the session must stay up.
#include "fuzzinput.h"
#include "server/rcclient.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace {

struct Session
{
    Session()
    {
        fuzzApplication();
        if (!server.listen(QHostAddress::LocalHost, 0))
            __builtin_trap();
        open();
    }
    void open()
    {
        peer.abort();
        peer.connectToHost(QHostAddress::LocalHost, server.serverPort());
        if (!peer.waitForConnected(1000) || !server.waitForNewConnection(1000))
            __builtin_trap();
        client = new RCClient(0, server.nextPendingConnection());
        QObject::connect(client, &RCClient::lineReceived, client, [this](const QString &line) {
            // The terminator comes with the line; anything longer than the bound was dropped.
            if (line.toUtf8().size() > RCClient::kMaxLineBytes + 2 || serving)
                __builtin_trap();
            // One terminator at most, at the end: every CR or LF inside ends a line of its own.
            const QString body = line.chopped(line.endsWith(QLatin1String("\r\n")) ? 2
                                              : line.isEmpty()                     ? 0
                                                                                   : 1);
            if (body.contains(QLatin1Char('\r')) || body.contains(QLatin1Char('\n')))
                __builtin_trap();
            serving = true;
            QMetaObject::invokeMethod(
                client,
                [this, line] {
                    serving = false;
                    client->sendPrompt();
                    client->finishCommand(line);
                },
                Qt::QueuedConnection);
        });
    }
    void serve()
    {
        for (int turn = 0; turn < 8; ++turn)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        (void)peer.readAll();
    }
    QTcpServer server;
    QTcpSocket peer;
    QPointer<RCClient> client;
    bool serving = false; // a line is out and not finished: no other may come
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Session session;
    if (!session.client || session.client->isDisposed()) {
        session.serving = false;
        session.open();
    }
    const QList<QByteArray> chunks = fuzzBytes(data, size).split('\xfe');
    for (qsizetype i = 0; i < chunks.size() && i < 16; ++i) {
        if (chunks.at(i).isEmpty())
            continue;
        session.peer.write(chunks.at(i));
        (void)session.peer.waitForBytesWritten(100);
        session.serve();
    }
    return 0;
}
