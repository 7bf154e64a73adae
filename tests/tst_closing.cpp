// Closing the program while a send to a device that takes nothing runs: the send stops, the socket
// is closed on the worker's thread, and the program ends at once.
#include "app/appcontext.h"
#include "app/appmodel.h"
#include "sim/simdataport.h"
#include "tcp/tcpthread.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_Closing : public QObject
{
    Q_OBJECT

private slots:
    void closingMidTransferEndsAtOnce();
};

void tst_Closing::closingMidTransferEndsAtOnce()
{
    QCOMPARE(AppContext::kSocketCloseWaitMs, 10000); // the most closing may wait for the socket
    QTemporaryDir dir;
    SimDataPort port;
    port.setStuck(true);
    QVERIFY(port.start(QHostAddress::LocalHost, 0) != 0);
    QFile file(dir.filePath("data.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(64 * 1024 * 1024));
    auto context = std::make_unique<AppContext>(false, false, 0, true, nullptr,
                                                QStringLiteral("127.0.0.1:9:%1").arg(port.port()));
    AppModel::currentSendOption()->setFileName(file.fileName());
    context->worker()->beginSendThread();
    QTRY_COMPARE_WITH_TIMEOUT(context->worker()->sendStatus(), TS_RUN, 10000);

    QElapsedTimer closing;
    closing.start();
    context.reset();
    QVERIFY2(closing.elapsed() < 3000, QByteArray::number(closing.elapsed()));
}

QTEST_MAIN(tst_Closing)
#include "tst_closing.moc"
