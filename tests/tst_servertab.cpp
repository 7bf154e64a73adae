// The Server tab: the view of the remote-control server, with the entry points the main window
// uses; real TCP clients against the emulator on loopback. The server itself: tst_rcserver.
#include "app/accessgate.h"
#include "app/log.h"
#include "server/allowrule.h"
#include "server/rcclient.h"
#include "server/servertab.h"
#include "simclient.h"
#include "tabfixture.h"
#include "testtable.h"

#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

#include "terminal.h"

#include <memory>

class TestServerTab : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        f = std::make_unique<TabFixture<ServerTab>>();
        QVERIFY(f->start());
        f->sim()->poke(0x10, hex("01020AFF"));
        f->tab.setAccessTimeoutMs(300);
        f->tab.setPort(0);
        QVERIFY(f->tab.start());
    }
    void cleanup() { f.reset(); }

    // The tab shows the server's log: connections with their peers, commands, departures.
    void logShowsSessions()
    {
        Terminal client(f->tab.serverPort());
        QVERIFY(client.waitFor(kGreeting.size()));
        const QString port = QString::number(client.socket.localPort());
        client.socket.write("read 10 4\r\nquit\r\n");
        QVERIFY(client.waitFor(kGreeting.size() + 13 + kDump10.size() + 18));
        QTRY_VERIFY(logText().endsWith(QStringLiteral("Disconnect 0")));
        QCOMPARE(logText().section(QLatin1Char('\n'), 1),
                 QStringLiteral("Connection ID: 0\nPeer address: 127.0.0.1:%1\nOK:Connected\n"
                                "Client 0: read 10 4\nClient 0: quit\nDisconnect 0")
                     .arg(port));
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0"));
    }
    // Where it listens, whom it lets in and the folder of its files, as set at start-up.
    void statusLine()
    {
        f->tab.setAllowRule(*AllowRule::parse(QStringLiteral("192.168.1.0/24,10.0.0.5")));
        QVERIFY(f->tab.setFileFolder(dir.path()));
        QVERIFY(!f->tab.setFileFolder(dir.filePath(QStringLiteral("none"))));
        QCOMPARE(f->child<QLabel>("serverStatusLabel")->text(),
                 QStringLiteral("Listening on port %1 of every interface.\nClients allowed from: "
                                "loopback, 192.168.1.0/24, 10.0.0.5 (-uiallow: adds networks).\n"
                                "Files of read and write: %2")
                     .arg(f->tab.serverPort())
                     .arg(QFileInfo(dir.path()).canonicalFilePath()));
    }
    // runCommand() takes a line from the session that sent it, as the server's own wiring does.
    void runCommandEntryPoint()
    {
        Terminal client(f->tab.serverPort());
        QVERIFY(client.waitFor(kGreeting.size()));
        RCClient *session = f->tab.findChild<RCClient *>();
        QVERIFY(session);
        connect(session, &RCClient::lineReceived, &f->tab, &ServerTab::runCommand);
        client.socket.write("read 10 4\r\n");
        // Queued twice: once by the server, once through the tab.
        QVERIFY(client.waitFor(kGreeting.size() + 13 + 2 * kDump10.size()));
    }
    void portInUseLogsOneError()
    {
        QTcpServer occupant;
        QVERIFY(occupant.listen(QHostAddress::Any));
        const QString logPath = dir.filePath(QStringLiteral("server.log"));
        logOpen(logPath, LOG_DBG);
        f->tab.setPort(occupant.serverPort());
        QVERIFY(!f->tab.start());
        logClose();
        QFile log(logPath);
        QVERIFY(log.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(log.readAll()).count(QStringLiteral("[ ERR]")), 1);
        QTRY_VERIFY(logText().endsWith(QStringLiteral("Server mode, fail to listen")));
    }

private:
    QString logText() const { return f->tab.findChild<QPlainTextEdit *>()->toPlainText(); }

    const QByteArray P = "\r\nMavixUtil>";
    const QByteArray kGreeting = "OK:Connected\r\nMavixUtil>";
    const QByteArray kDump10 = "OK:\r\n10 : 01 02 0A FF \r\n" + P;
    std::unique_ptr<TabFixture<ServerTab>> f;
    QTemporaryDir dir;
};

QTEST_MAIN(TestServerTab)
#include "tst_servertab.moc"
