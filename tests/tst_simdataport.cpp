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

QByteArray sha256(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

// Reads until the peer closes or `size` bytes arrived.
QByteArray readUpTo(QTcpSocket *socket, qint64 size)
{
    QByteArray got;
    QElapsedTimer timer;
    timer.start();
    while (got.size() < size && timer.elapsed() < kWaitMs) {
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
    void sinkCountsHashesAndStores();
    void source_data();
    void source();
    void echoServesOneConnectionAtATime();
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

void TestSimDataPort::sinkCountsHashesAndStores()
{
    // Stuck at first, as a device that reads nothing, then released.
    const QString path = m_dir.filePath("sink.bin");
    m_port->setSinkFile(path);
    m_port->setStuck(true);
    const QByteArray bytes = randomBytes(3 * 1024 * 1024 + 17, 1);
    auto client = connectClient();
    QVERIFY(client);
    client->write(bytes.left(64 * 1024));
    QVERIFY(client->waitForBytesWritten(kWaitMs));
    QTest::qWait(200); // nothing may arrive, so there is no event to wait for
    QCOMPARE(m_port->totals().bytes, 0);
    m_port->setStuck(false);
    client->write(bytes.mid(64 * 1024));
    while (client->bytesToWrite() > 0)
        QVERIFY(client->waitForBytesWritten(kWaitMs));
    client->disconnectFromHost();
    QVERIFY(m_port->waitForConnectionsDone(1, kWaitMs));

    const SimDataPort::Totals totals = m_port->totals();
    QCOMPARE(totals.bytes, bytes.size());
    QCOMPARE(totals.sha256, sha256(bytes));
    QCOMPARE(totals.connections, 1);
    QVERIFY(!totals.connected && totals.seconds > 0);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), bytes);
}

void TestSimDataPort::source_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("fromFile");
    QTest::addColumn<qint64>("rate"); // bytes per second, 0: full speed
    QTest::addColumn<bool>("keepOpen");
    QTest::addRow("5 MiB of the pattern, then it closes")
        << qint64(5 * 1024 * 1024 + 3) << false << qint64(0) << false;
    QTest::addRow("a 2 MiB file, then it closes")
        << qint64(2 * 1024 * 1024 + 5) << true << qint64(0) << false;
    QTest::addRow("1000 bytes, then it stays open") << qint64(1000) << false << qint64(0) << true;
    QTest::addRow("300 kB at 1 MB/s takes 0.3 s")
        << qint64(300000) << false << qint64(1000000) << false;
}

void TestSimDataPort::source()
{
    QFETCH(qint64, size);
    QFETCH(bool, fromFile);
    QFETCH(qint64, rate);
    QFETCH(bool, keepOpen);

    QByteArray expected = SimDataPort::pattern(0, size);
    m_port->setMode(SimDataPort::Mode::Source);
    if (fromFile) {
        expected = randomBytes(size, 3);
        QFile file(m_dir.filePath("source.bin"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(expected) == size);
        m_port->setSourceFile(file.fileName());
    } else {
        m_port->setSourceBytes(size);
    }
    m_port->setSourceRate(rate);
    m_port->setKeepOpen(keepOpen);
    QElapsedTimer timer;
    timer.start();
    auto client = connectClient();
    QVERIFY(client);
    const QByteArray got = readUpTo(client.get(), keepOpen ? size : size + 1);
    const qint64 elapsedMs = timer.elapsed();
    QCOMPARE(got.size(), size);
    QVERIFY(got == expected);
    QTRY_VERIFY(m_port->totals().complete);
    QCOMPARE(m_port->totals().bytes, size);
    QCOMPARE(m_port->totals().sha256, sha256(expected));
    if (rate > 0) {
        QVERIFY2(elapsedMs >= size * 1000 / rate - 20, qPrintable(QString::number(elapsedMs)));
        QVERIFY2(elapsedMs < 10 * size * 1000 / rate, qPrintable(QString::number(elapsedMs)));
    }
    if (keepOpen) {
        QVERIFY(!client->waitForReadyRead(300));
        QCOMPARE(client->state(), QAbstractSocket::ConnectedState);
        QVERIFY(m_port->totals().connected);
        client->disconnectFromHost();
    } else {
        QTRY_COMPARE(client->state(), QAbstractSocket::UnconnectedState); // the device closed
    }
    QVERIFY(m_port->waitForConnectionsDone(1, kWaitMs));
}

void TestSimDataPort::echoServesOneConnectionAtATime()
{
    m_port->setMode(SimDataPort::Mode::Echo);
    auto client = connectClient();
    QVERIFY(client);
    QTRY_VERIFY(m_port->totals().connected);
    auto second = connectClient(); // taken by the system, then closed by the device
    QVERIFY(second);
    QTRY_COMPARE_WITH_TIMEOUT(second->state(), QAbstractSocket::UnconnectedState, kWaitMs);
    // Written and read in turns, as a peer with bounded buffers would.
    const QByteArray bytes = randomBytes(4 * 1024 * 1024, 4);
    QByteArray back;
    for (qint64 at = 0; at < bytes.size(); at += 256 * 1024) {
        client->write(bytes.mid(at, 256 * 1024));
        back += readUpTo(client.get(), 256 * 1024);
    }
    QVERIFY(back == bytes);
    client->disconnectFromHost();
    QVERIFY(m_port->waitForConnectionsDone(1, kWaitMs));
    QCOMPARE(m_port->totals().bytes, bytes.size());
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
