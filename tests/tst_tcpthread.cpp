// The transfer worker on its own thread against the emulator's data port on loopback.
#include "tcpfixture.h"
#include "testtable.h"

#include "tcp/recvstream.h"

#include <QtTest>

#include <csignal>
#include <sys/resource.h>

class TestTcpThread : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_rig.start();
        m_rig.model->recvOption()->setDisplayMode(TCPOutputOption::kDisplayOff);
        m_rig.model->sendOption()->setShowData(false);
        m_events.clear(), m_runReports.clear(), m_lastSent = -1, m_drainDisplay = true,
                                                m_display = {};
        TCPThread *worker = m_rig.worker;
        auto event = [this](const char *kind, int value) {
            m_events += kind + (value < 0 ? QByteArray() : QByteArray::number(value)) + ' ';
        };
        connect(worker, &TCPThread::sendStatusChanged, this,
                [=](THREAD_STATUS, THREAD_STATUS status) { event("s", status); });
        connect(worker, &TCPThread::recvStatusChanged, this,
                [=](THREAD_STATUS, THREAD_STATUS status) { event("r", status); });
        connect(worker, &TCPThread::errorOccured, this, [=](TCPTHREAD_ERROR e) { event("e", e); });
        connect(worker, &TCPThread::writeFinished, this, [=] { event("w", -1); });
        connect(worker, &TCPThread::sendProgress, this, [this](qint64 sent) { m_lastSent = sent; });
        for (auto reported : {&TCPThread::recvReported, &TCPThread::sendReported})
            connect(worker, reported, this, [this](const QString &text) { m_runReports << text; });
        connect(worker, &TCPThread::recvStringAdded, this, [this] {
            if (m_drainDisplay)
                m_display += m_rig.worker->takeRecvData(RecvStream::kTailBytes);
        });
    }
    void cleanup() { m_rig.stop(); }
    // The device gets the file's bytes (hex text converted); the display shows up to 64 KiB.
    void sendsFile_data()
    {
        // clang-format off
        // shownFormat empty: Show Data off; shown: the first line shown and the bytes covered
        columns<QByteArray, bool, QString, QByteArray, QString>("file", "hexFile", "shownFormat", "bytes", "shown");
        const QByteArray large(3 * 1024 * 1024 + 1, '\x5a');
        QByteArray varied(9 * 1024 * 1024 + 1, '\0'); // over two of the sender's 4 MiB batches
        for (qsizetype i = 0; i < varied.size(); ++i)
            varied[i] = char(i * 7 % 251);
        QTest::addRow("3 MiB and a byte") << large << false << "" << large << " 0";
        QTest::addRow("empty file") << QByteArray() << false << "" << QByteArray() << " 0";
        QTest::addRow("9 MiB and a byte, in order") << varied << false << "" << varied << " 0";
        QTest::addRow("hex text: a byte across two batches") << QByteArray(4 * 1024 * 1024 - 1, ' ') + "aB\r\n" << true << "" << QByteArray("\xab") << " 0";
        QTest::addRow("shown up to 64 KiB") << large << false << "2-2" << large << "5A5A-5A5A 65536";
        QTest::addRow("hex text: CR LF lines, mixed case, separators") << QByteArray("7A 48\r\n[21-9a];\r\n") << true << "" << QByteArray("zH!\x9a") << " 0";
        QTest::addRow("hex text: junk and a lone nibble") << QByteArray("0A 0b\r\nz1") << true << "" << QByteArray("\x0a\x0b") << " 0";
        QTest::addRow("hex text shown: a character across chunks") << QByteArray(1023, ' ') + "\xc2\xb7" "41" << true << "1" << QByteArray("A") << QString(1023, ' ') + "\u00b741 1027";
        // clang-format on
    }
    void sendsFile()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, shownFormat);
        QFETCH(QByteArray, bytes);
        m_rig.model->setSendFileName(m_rig.file("send.bin", file));
        m_rig.port->setSinkFile(m_rig.dir.filePath("sink.bin"));
        m_rig.model->setSendUseHexFile(cell<bool>("hexFile"));
        m_rig.model->sendOption()->setShowData(!shownFormat.isEmpty());
        QVERIFY(shownFormat.isEmpty() || m_rig.model->setSendFormat(shownFormat));
        QString shown;
        qint64 shownBytes = 0;
        QObject scope; // ends the connection with this function
        connect(m_rig.worker, &TCPThread::sendStringAdded, &scope,
                [text = &shown, bytes = &shownBytes](const QString &piece, bool, qint64, qint64 n) {
                    *text += piece, *bytes += n;
                });
        m_rig.worker->beginSendThread(m_rig.run(false));
        QVERIFY(waitForStop('s'));
        QCOMPARE(m_events, "s1 s2 w s3 s0 ");
        QCOMPARE(m_lastSent, file.size()); // counted in file bytes
        QVERIFY(m_rig.port->waitForConnectionsDone(1, kTransferTimeoutMs));
        QVERIFY(readFile(m_rig.dir.filePath("sink.bin")) == bytes);
        QTEST(shown.section('\n', 0, 0) + ' ' + QString::number(shownBytes), "shown");
        QCOMPARE(m_runReports, QStringList{"Sending " + m_rig.dir.filePath("send.bin")});
        QCOMPARE(m_rig.logCount("reserve to close socket [after 50msec]"), 1);
    }
    // The write time-out, injected short, ends the run once.
    void stuckDeviceTimesOutOnce()
    {
        m_rig.worker->setTimeouts(TCPThread::kConnectTimeoutMs, 300,
                                  TCPThread::kDisconnectTimeoutMs);
        QElapsedTimer timer;
        timer.start();
        QFile file(m_rig.dir.filePath("large.bin")); // held by the stuck device in the write wait
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(64 * 1024 * 1024));
        m_rig.model->setSendFileName(file.fileName());
        m_rig.port->setStuck(true);
        m_rig.worker->beginSendThread(m_rig.run(false));
        QTRY_VERIFY_WITH_TIMEOUT(m_events.contains("s2 "), kTransferTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(m_events.contains("e1"), kTransferTimeoutMs);
        QVERIFY(timer.elapsed() >= 300 && timer.elapsed() < 5000);
        QTRY_COMPARE(m_rig.reports->errors, QStringList{"TCP write is timeout"});
        QVERIFY(m_runReports.contains("TCP write is timeout"));
        m_rig.port->setStuck(false); // lets the close finish
        QVERIFY(waitForStop('s'));
        QCOMPARE(m_events, "s1 s2 e1 s3 s0 ");
        QCOMPARE(m_rig.logCount("TCP write is timeout"), 1);
    }
    // A finite stream ends with the device closing; a paced one kept open, or an echo, with a stop.
    void receives_data()
    {
        // clang-format off
        columns<QString, qint64, QString, int, QByteArray, QString>("peer", "size", "file", "displayMode", "display", "result");
        const QString closed = "The device closed the connection. ", none;
        QTest::addRow("raw file, 3 MiB and a bit") << "source" << qint64(3145851) << "r" << 0 << QByteArray() << closed + "3145851 bytes were saved to %1.";
        QTest::addRow("display keeps the newest 4095 bytes") << "source" << qint64(10000) << none << 1 << QByteArray("\n[5905 bytes skipped]\n") << closed + "Nothing was saved (Save To is empty).";
        QTest::addRow("a file at 1 MB/s, kept open") << "paced" << qint64(300000) << "r" << 0 << QByteArray() << none;
        QTest::addRow("bytes waiting at start") << "echo" << qint64(5) << "r" << 1 << QByteArray("hello") << none;
        // clang-format on
    }
    void receives()
    {
        QFETCH(QString, peer);
        QFETCH(qint64, size);
        QFETCH(QByteArray, display);
        QFETCH(QString, result);
        const QString path = cell<QString>("file").isEmpty() ? "" : m_rig.dir.filePath("r.bin");
        m_rig.model->setRecvFileName(path);
        m_rig.model->recvOption()->setDisplayMode(cell<int>("displayMode"));
        m_drainDisplay = result.isEmpty(); // else the display is left to fill up
        m_rig.port->setMode(peer == "echo" ? SimDataPort::Mode::Echo : SimDataPort::Mode::Source);
        m_rig.port->setSourceBytes(size);
        QByteArray sent = peer == "echo" ? "hello" : SimDataPort::pattern(0, size);
        if (peer == "paced") {
            m_rig.port->setSourceFile(m_rig.file("source.bin", sent = QByteArray(size, 'p')));
            m_rig.port->setSourceRate(1000000);
            m_rig.port->setKeepOpen(true);
        } else if (peer == "echo") {
            m_rig.model->setSendFileName(m_rig.file("hello.txt", "hello"));
            m_rig.worker->setCloseReserveMs(1000); // the real reservation keeps the socket open
            m_rig.worker->beginSendThread(m_rig.run(false));
            QTRY_VERIFY(m_events.contains("w "));
            QTest::qWait(200); // the echo reaches the socket unannounced
        }
        QElapsedTimer timer;
        timer.start();
        m_rig.worker->beginRecvThread(m_rig.run(true));
        if (result.isEmpty()) {
            QTRY_COMPARE(readFile(path).size(), size); // written out within a second
            m_rig.worker->stopReceiving();
        }
        QVERIFY(waitForStop('r'));
        m_display += m_rig.worker->takeRecvData(-1);
        QVERIFY(m_events.contains("r1 r2 ") && !m_events.contains('e')); // and it ended with r0
        QVERIFY(m_rig.reports->errors.isEmpty());
        QTRY_COMPARE(m_rig.reports->results.join(""),
                     result.contains("%1") ? result.arg(path) : result);
        QVERIFY(path.isEmpty() || readFile(path) == sent);
        QVERIFY(peer != "paced" || timer.elapsed() >= 280);
        if (size == 10000)
            display += sent.right(4095); // the stream's tail, as the device sent it
        QCOMPARE(m_display, display);
    }
    // Runs in a child process whose files may not grow beyond 1000000 bytes, as on a full disk.
    void receiveIntoFullDiskStopsWithIntactPrefix()
    {
        if (qEnvironmentVariableIsEmpty("MAVIX_FILE_SIZE_LIMITED")) {
            QProcess child;
            qputenv("MAVIX_FILE_SIZE_LIMITED", "1"); // for the child only
            child.setProcessChannelMode(QProcess::MergedChannels);
            child.setChildProcessModifier([] {
                const rlimit limit{1000000, 1000000};
                setrlimit(RLIMIT_FSIZE, &limit);
                std::signal(SIGXFSZ, SIG_IGN); // the write fails with EFBIG instead
            });
            child.start(QCoreApplication::applicationFilePath(), {QTest::currentTestFunction()});
            qunsetenv("MAVIX_FILE_SIZE_LIMITED");
            QVERIFY(child.waitForFinished(kTransferTimeoutMs));
            QVERIFY2(child.exitCode() == 0, child.readAll().constData());
            return;
        }
        const QString path = m_rig.dir.filePath("full.bin");
        m_rig.model->setRecvFileName(path);
        m_rig.port->setMode(SimDataPort::Mode::Source);
        m_rig.worker->beginRecvThread(m_rig.run(true)); // an endless stream
        QVERIFY(waitForStop('r'));
        const QString reason =
            QStringLiteral("Receive file cannot be written: %1 (File too large). "
                           "1000000 bytes were saved to %1.")
                .arg(path);
        QTRY_COMPARE(m_rig.reports->errors, QStringList{reason});
        QCOMPARE(m_runReports, (QStringList{"Saving to " + path, reason}));
        QCOMPARE(m_events, "r1 r2 e2 r0 ");
        QVERIFY(readFile(path) == SimDataPort::pattern(0, 1000000));
        QCOMPARE(m_rig.logCount("recv file write failed"), 1);
    }

private:
    bool waitForStop(char direction)
    {
        return QTest::qWaitFor([=] { return m_events.endsWith(QByteArray(1, direction) + "0 "); },
                               kTransferTimeoutMs);
    }

    TcpFixture m_rig;
    QByteArray m_events;      // "s2 " send status, "r0 " receive status, "e1 " error, "w " written
    QStringList m_runReports; // what the dialogs are given to show
    qint64 m_lastSent = -1;
    bool m_drainDisplay = true;
    QByteArray m_display;
};

QTEST_GUILESS_MAIN(TestTcpThread)
#include "tst_tcpthread.moc"
