// Closing the program while a transfer runs: the transfer stops, the socket is closed on the
// worker's thread, and the program ends at once, even with a device that takes nothing.
#include "app/appcontext.h"
#include "app/appmodel.h"
#include "app/log.h"
#include "sim/simdataport.h"
#include "tcp/tcpthread.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_Closing : public QObject
{
    Q_OBJECT

private slots:
    void closingMidTransferEndsAtOnce_data();
    void closingMidTransferEndsAtOnce();
};

void tst_Closing::closingMidTransferEndsAtOnce_data()
{
    QTest::addColumn<bool>("sending");
    QTest::addRow("receiving an endless stream") << false;
    QTest::addRow("sending to a device that takes nothing") << true;
}

void tst_Closing::closingMidTransferEndsAtOnce()
{
    QFETCH(bool, sending);
    QCOMPARE(AppContext::kSocketCloseWaitMs, 10000); // the most closing may wait for the socket
    QTemporaryDir dir;
    SimDataPort port;
    port.setMode(sending ? SimDataPort::Mode::Sink : SimDataPort::Mode::Source);
    port.setStuck(sending);
    QVERIFY(port.start(QHostAddress::LocalHost, 0) != 0);
    QFile file(dir.filePath("data.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(sending ? 64 * 1024 * 1024 : 0));
    logOpen(dir.filePath("closing.log"), 0);
    auto context = std::make_unique<AppContext>(false, false, 0, true, nullptr,
                                                QStringLiteral("127.0.0.1:9:%1").arg(port.port()));
    (sending ? AppModel::currentSendOption() : AppModel::currentRecvOption())
        ->setFileName(file.fileName());
    TCPThread *worker = context->worker();
    sending ? worker->beginSendThread() : worker->beginRecvThread();
    QTRY_COMPARE_WITH_TIMEOUT(sending ? worker->sendStatus() : worker->recvStatus(), TS_RUN, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(sending ? worker->hasSocket() : file.size() > 0, 10000);

    QElapsedTimer closing;
    closing.start();
    context.reset();
    QVERIFY2(closing.elapsed() < 3000, QByteArray::number(closing.elapsed()));
    logClose();
    QFile log(dir.filePath("closing.log"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QByteArray lines = log.readAll();
    QVERIFY(lines.contains(sending ? "[INFO] stop sending\n" : "[INFO] stop receiving\n"));
    QVERIFY(lines.contains("[INFO] socket closed\n") && lines.endsWith("application closed\n"));
}

QTEST_MAIN(tst_Closing)
#include "tst_closing.moc"
