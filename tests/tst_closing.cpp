// Closing the program while a transfer runs: the transfer stops, the socket is closed on the
// worker's thread, and the program always ends.
#include "app/appcontext.h"
#include "app/appmodel.h"
#include "app/log.h"
#include "sim/simdataport.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcpthread.h"
#include "ui/mainwindow.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_Closing : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void closingMidReceiveStopsAtOnce();
    void stuckDeviceIsGivenUpAfterTenSeconds();

private:
    QByteArray logText() const;
    std::unique_ptr<AppContext> makeContext() const;

    QTemporaryDir m_dir;
    std::unique_ptr<SimDataPort> m_port;
};

void tst_Closing::init()
{
    m_port = std::make_unique<SimDataPort>();
    QVERIFY(m_port->start(QHostAddress::LocalHost, 0) != 0);
    logOpen(m_dir.filePath(QStringLiteral("closing.log")), 0);
}

void tst_Closing::cleanup()
{
    logClose();
    QFile::remove(m_dir.filePath(QStringLiteral("closing.log")));
    m_port->stop();
    m_port.reset();
}

QByteArray tst_Closing::logText() const
{
    QFile file(m_dir.filePath(QStringLiteral("closing.log")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::unique_ptr<AppContext> tst_Closing::makeContext() const
{
    return std::make_unique<AppContext>(false, false, 0, true, nullptr,
                                        QStringLiteral("127.0.0.1:9:%1").arg(m_port->port()));
}

void tst_Closing::closingMidReceiveStopsAtOnce()
{
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceBytes(-1);
    auto context = makeContext();
    AppModel::instance()->recvOption()->setFileName(m_dir.filePath(QStringLiteral("recv.bin")));
    TCPThread *worker = context->worker();
    worker->beginRecvThread();
    QTRY_COMPARE_WITH_TIMEOUT(worker->recvStatus(), TS_RUN, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(m_dir.filePath(QStringLiteral("recv.bin"))).size() > 0,
                             10000);

    QElapsedTimer closing;
    closing.start();
    context.reset();
    QVERIFY2(closing.elapsed() < 3000, QByteArray::number(closing.elapsed()));

    const QByteArray log = logText();
    QVERIFY(log.contains("[INFO] application is closing\n"));
    QVERIFY(log.contains("[INFO] stop receiving\n"));
    QVERIFY(log.contains("[INFO] socket closed\n"));
    QVERIFY(!log.contains("canceled waiting for tcp socket close"));
    QVERIFY(log.endsWith("[INFO] application closed\n"));
}

// A device that takes nothing: the send is stopped, the close is waited for ten seconds with the
// doubling progress lines, then given up, and the program still ends.
void tst_Closing::stuckDeviceIsGivenUpAfterTenSeconds()
{
    m_port->setMode(SimDataPort::Mode::Sink);
    m_port->setStuck(true);
    const QString sendPath = m_dir.filePath(QStringLiteral("send.bin"));
    {
        QFile file(sendPath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(64 * 1024 * 1024, 'x'));
    }
    auto context = makeContext();
    AppModel::instance()->sendOption()->setFileName(sendPath);
    TCPThread *worker = context->worker();
    worker->beginSendThread();
    QTRY_COMPARE_WITH_TIMEOUT(worker->sendStatus(), TS_RUN, 10000);
    QTest::qWait(500); // the socket buffers fill up

    QElapsedTimer closing;
    closing.start();
    context.reset();
    const qint64 ms = closing.elapsed();
    QVERIFY2(ms >= 9900 && ms < 30000, QByteArray::number(ms));

    const QByteArray log = logText();
    for (int loop : {1, 2, 4, 8, 16, 32, 64})
        QVERIFY2(
            log.contains("waiting for tcp socket close [loop:" + QByteArray::number(loop) + "]\n"),
            QByteArray::number(loop));
    QVERIFY(!log.contains("waiting for tcp socket close [loop:128]"));
    QVERIFY(log.contains("[ ERR] canceled waiting for tcp socket close [timeout:10000ms, loop:"));
    QVERIFY(log.endsWith("[INFO] application closed\n"));
}

QTEST_MAIN(tst_Closing)
#include "tst_closing.moc"
