// The emulator's TCP data port with a plain socket as the peer: what the worker tests do not
// reach (files in and out, pacing, keeping open, one connection at a time, a busy port).
#include "sim/simdataport.h"

#include <QCryptographicHash>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

class TestSimDataPort : public QObject
{
    Q_OBJECT

private slots:
    void modes_data();
    void modes();
};

// A sink keeps what it got; a source sends its file, paced and kept open on request; another
// port on the same number is refused.
void TestSimDataPort::modes_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<qint64>("rate"); // bytes per second, 0: full speed
    QTest::addColumn<bool>("keepOpen");
    QTest::addRow("sink into a file") << "sink" << qint64(0) << false;
    QTest::addRow("source from a file") << "source" << qint64(0) << false;
    QTest::addRow("300 kB at 1 MB/s take 0.3 s") << "source" << qint64(1000000) << false;
    QTest::addRow("source kept open") << "source" << qint64(0) << true;
}

void TestSimDataPort::modes()
{
    QFETCH(QString, mode);
    QFETCH(qint64, rate);
    QFETCH(bool, keepOpen);
    QTemporaryDir dir;
    const QString path = dir.filePath("data.bin");
    const QByteArray bytes = QByteArray(300000, 'a') + "end";
    QFile file(path);
    QVERIFY(mode == "sink" || (file.open(QIODevice::WriteOnly) && file.write(bytes)));
    file.close();
    SimDataPort port;
    SimDataPort::Mode parsed;
    QVERIFY(SimDataPort::parseMode(mode, &parsed));
    port.setMode(parsed);
    mode == "sink" ? port.setSinkFile(path) : port.setSourceFile(path);
    port.setSourceRate(rate);
    port.setKeepOpen(keepOpen);
    const quint16 number = port.start(QHostAddress::LocalHost, 0);
    QVERIFY(number != 0);
    QCOMPARE(SimDataPort().start(QHostAddress::LocalHost, number), quint16(0));

    QElapsedTimer timer;
    timer.start();
    QTcpSocket client, second;
    client.connectToHost(QHostAddress::LocalHost, number);
    QVERIFY(client.waitForConnected(5000));
    QByteArray got;
    if (mode == "sink") {
        QTRY_VERIFY(port.totals().connected); // a second client is closed at once
        second.connectToHost(QHostAddress::LocalHost, number);
        QTRY_COMPARE(second.state(), QAbstractSocket::UnconnectedState);
        client.write(bytes);
        QVERIFY(client.waitForBytesWritten(5000));
        client.disconnectFromHost();
    } else {
        QTRY_VERIFY_WITH_TIMEOUT((got += client.readAll()).size() == bytes.size(), 5000);
    }
    QVERIFY(keepOpen || port.waitForConnectionsDone(1, 5000));
    QTRY_COMPARE(port.totals().sha256, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256));
    QVERIFY(mode == "sink" ? file.open(QIODevice::ReadOnly) && file.readAll() == bytes
                           : got == bytes);
    if (rate > 0)
        QVERIFY2(timer.elapsed() >= 280 && timer.elapsed() < 3000,
                 qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(port.totals().connected, keepOpen);
}

QTEST_GUILESS_MAIN(TestSimDataPort)
#include "tst_simdataport.moc"
