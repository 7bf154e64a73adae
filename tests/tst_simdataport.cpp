// The emulator's TCP data port with plain sockets as the peer: each mode, one connection at a
// time, pacing, keeping open, files in and out, and the totals it reports.
#include "sim/simdataport.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

constexpr int kWaitMs = 10000;

QByteArray randomBytes(qint64 size, quint32 seed)
{
    QRandomGenerator generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(generator.bounded(256));
    return bytes;
}

// Reads until the peer closes or `size` bytes arrived.
QByteArray readUpTo(QTcpSocket *socket, qint64 size, int timeoutMs = kWaitMs)
{
    QByteArray got;
    QElapsedTimer timer;
    timer.start();
    while (got.size() < size && timer.elapsed() < timeoutMs) {
        if (socket->bytesAvailable() == 0 && socket->state() != QAbstractSocket::ConnectedState)
            break;
        if (socket->bytesAvailable() == 0 && !socket->waitForReadyRead(100))
            continue;
        got += socket->read(size - got.size());
    }
    return got;
}

} // namespace

class TestSimDataPort : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void patternIsOneStream_data();
    void patternIsOneStream();
    void sinkCountsHashesAndStores();
    void stuckSinkReadsNothingUntilReleased();
    void sourceSendsPatternThenCloses();
    void sourceSendsFile();
    void sourceKeepsOpenWhenAsked();
    void sourceHoldsItsRate();
    void echoSendsEverythingBack();
    void servesOneConnectionAtATime();
    void refusesABusyPort();

private:
    [[nodiscard]] std::unique_ptr<QTcpSocket> connectClient() const;

    QTemporaryDir m_dir;
    std::unique_ptr<SimDataPort> m_port;
    quint16 m_portNumber = 0;
};

void TestSimDataPort::init()
{
    m_port = std::make_unique<SimDataPort>();
    m_portNumber = m_port->start(QHostAddress::LocalHost, 0);
    QVERIFY2(m_portNumber != 0, qPrintable(m_port->errorString()));
}

void TestSimDataPort::cleanup()
{
    m_port.reset();
}

std::unique_ptr<QTcpSocket> TestSimDataPort::connectClient() const
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QHostAddress::LocalHost, m_portNumber);
    return socket->waitForConnected(kWaitMs) ? std::move(socket) : nullptr;
}

void TestSimDataPort::patternIsOneStream_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<qint64>("size");
    QTest::addRow("start") << qint64(0) << qint64(100);
    QTest::addRow("inside the first period") << qint64(12345) << qint64(1000);
    QTest::addRow("across the period boundary")
        << SimDataPort::kPatternPeriodBytes - 10 << qint64(20);
    QTest::addRow("longer than a period") << qint64(7) << SimDataPort::kPatternPeriodBytes + 99;
}

void TestSimDataPort::patternIsOneStream()
{
    QFETCH(qint64, offset);
    QFETCH(qint64, size);
    const QByteArray whole = SimDataPort::pattern(0, offset + size);
    QCOMPARE(SimDataPort::pattern(offset, size), whole.mid(offset));
    QVERIFY(whole.count(whole.left(8)) < 2 + (offset + size) / SimDataPort::kPatternPeriodBytes);
}

void TestSimDataPort::sinkCountsHashesAndStores()
{
    const QString path = m_dir.filePath("sink.bin");
    m_port->setSinkFile(path);
    const QByteArray bytes = randomBytes(3 * 1024 * 1024 + 17, 1);
    auto client = connectClient();
    QVERIFY(client);
    client->write(bytes);
    while (client->bytesToWrite() > 0)
        QVERIFY(client->waitForBytesWritten(kWaitMs));
    client->disconnectFromHost();
    QVERIFY(m_port->waitForConnectionsDone(1, kWaitMs));

    const SimDataPort::Totals totals = m_port->totals();
    QCOMPARE(totals.bytes, bytes.size());
    QCOMPARE(totals.sha256, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256));
    QCOMPARE(totals.connections, 1);
    QVERIFY(!totals.connected);
    QVERIFY(totals.seconds > 0);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), bytes);
}

void TestSimDataPort::stuckSinkReadsNothingUntilReleased()
{
    m_port->setStuck(true);
    auto client = connectClient();
    QVERIFY(client);
    client->write(randomBytes(64 * 1024, 2));
    QVERIFY(client->waitForBytesWritten(kWaitMs));
    QTest::qWait(200);
    QCOMPARE(m_port->totals().bytes, 0);
    m_port->setStuck(false);
    QTRY_COMPARE_WITH_TIMEOUT(m_port->totals().bytes, 64 * 1024, kWaitMs);
}

void TestSimDataPort::sourceSendsPatternThenCloses()
{
    const qint64 size = 5 * 1024 * 1024 + 3;
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceBytes(size);
    auto client = connectClient();
    QVERIFY(client);
    const QByteArray got = readUpTo(client.get(), size + 1);
    QCOMPARE(got.size(), size);
    QVERIFY(got == SimDataPort::pattern(0, size));
    QTRY_COMPARE(client->state(), QAbstractSocket::UnconnectedState); // the device closed
    QVERIFY(m_port->waitForConnectionsDone(1, kWaitMs));
    const SimDataPort::Totals totals = m_port->totals();
    QVERIFY(totals.complete);
    QCOMPARE(totals.bytes, size);
    QCOMPARE(totals.sha256, QCryptographicHash::hash(got, QCryptographicHash::Sha256));
}

void TestSimDataPort::sourceSendsFile()
{
    const QByteArray bytes = randomBytes(2 * 1024 * 1024 + 5, 3);
    const QString path = m_dir.filePath("source.bin");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceFile(path);
    auto client = connectClient();
    QVERIFY(client);
    QVERIFY(readUpTo(client.get(), bytes.size() + 1) == bytes);
    QVERIFY(m_port->waitForConnectionsDone(1, kWaitMs));
    QCOMPARE(m_port->totals().sha256, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256));
}

void TestSimDataPort::sourceKeepsOpenWhenAsked()
{
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceBytes(1000);
    m_port->setKeepOpen(true);
    auto client = connectClient();
    QVERIFY(client);
    QCOMPARE(readUpTo(client.get(), 1000).size(), 1000);
    QTRY_VERIFY(m_port->totals().complete);
    QVERIFY(!client->waitForReadyRead(300));
    QCOMPARE(client->state(), QAbstractSocket::ConnectedState);
    QVERIFY(m_port->totals().connected);
    client->disconnectFromHost();
    QVERIFY(m_port->waitForConnectionsDone(1, kWaitMs));
}

void TestSimDataPort::sourceHoldsItsRate()
{
    const qint64 rate = 1000000;
    const qint64 size = 300000;
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceBytes(size);
    m_port->setSourceRate(rate);
    QElapsedTimer timer;
    timer.start();
    auto client = connectClient();
    QVERIFY(client);
    QCOMPARE(readUpTo(client.get(), size + 1).size(), size);
    const qint64 elapsedMs = timer.elapsed();
    QVERIFY2(elapsedMs >= 280, qPrintable(QString::number(elapsedMs)));
    QVERIFY2(elapsedMs < 3000, qPrintable(QString::number(elapsedMs)));
}

void TestSimDataPort::echoSendsEverythingBack()
{
    m_port->setMode(SimDataPort::Mode::Echo);
    const QByteArray bytes = randomBytes(4 * 1024 * 1024, 4);
    auto client = connectClient();
    QVERIFY(client);
    // Written and read in turns, as a peer with bounded buffers would.
    QByteArray back;
    for (qint64 at = 0; at < bytes.size(); at += 256 * 1024) {
        client->write(bytes.mid(at, 256 * 1024));
        back += readUpTo(client.get(), 256 * 1024);
    }
    QVERIFY(back == bytes);
    client->disconnectFromHost();
    QVERIFY(m_port->waitForConnectionsDone(1, kWaitMs));
    QCOMPARE(m_port->totals().bytes, bytes.size());
}

void TestSimDataPort::servesOneConnectionAtATime()
{
    m_port->setMode(SimDataPort::Mode::Echo);
    auto first = connectClient();
    QVERIFY(first);
    QTRY_VERIFY(m_port->totals().connected);
    auto second = connectClient(); // taken by the system, then closed by the device
    QVERIFY(second);
    QTRY_COMPARE_WITH_TIMEOUT(second->state(), QAbstractSocket::UnconnectedState, kWaitMs);
    first->write("still here");
    QCOMPARE(readUpTo(first.get(), 10), QByteArray("still here"));
    QCOMPARE(m_port->totals().connections, 1);
}

void TestSimDataPort::refusesABusyPort()
{
    SimDataPort other;
    QCOMPARE(other.start(QHostAddress::LocalHost, m_portNumber), quint16(0));
    QVERIFY(other.errorString().contains(QString::number(m_portNumber)));
}

QTEST_GUILESS_MAIN(TestSimDataPort)
#include "tst_simdataport.moc"
