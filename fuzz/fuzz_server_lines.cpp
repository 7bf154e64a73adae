// The server's line assembly: each input is a stream of chunks (split at 0xFF bytes) sent by a
// client over TCP to a session. Lines must come out whole, never longer than the bound, and the
// session must stay up.
#include "app/accessgate.h"
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
        client = new RCClient(0, server.nextPendingConnection(), &gate);
        QObject::connect(client, &RCClient::lineReceived, client, [this](const QString &line) {
            // The terminator comes with the line; anything longer than the bound was dropped.
            if (line.toUtf8().size() > RCClient::kMaxLineBytes + 2)
                __builtin_trap();
            client->sendPrompt();
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
    AccessGate gate;
    QPointer<RCClient> client;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Session session;
    if (!session.client || session.client->isDisposed())
        session.open();
    const QList<QByteArray> chunks = fuzzBytes(data, size).split('\xff');
    for (qsizetype i = 0; i < chunks.size() && i < 16; ++i) {
        if (chunks.at(i).isEmpty())
            continue;
        session.peer.write(chunks.at(i));
        (void)session.peer.waitForBytesWritten(100);
        session.serve();
    }
    return 0;
}
