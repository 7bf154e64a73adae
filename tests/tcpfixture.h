// What the transfer tests share: per test a fresh log, model and transfer worker on its own thread,
// as at start-up, with the emulator's data port on loopback as the current target; and small
// helpers for files, hex text and a refused connection.
#pragma once

#include "reportcollector.h"

#include "app/appmodel.h"
#include "app/log.h"
#include "settings/mavixsetting.h"
#include "sim/simdataport.h"
#include "tcp/hexlayout.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcpthread.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <memory>

constexpr int kTransferTimeoutMs = 20000;

inline QByteArray randomBytes(qint64 size, quint32 seed)
{
    QByteArray bytes(size / 4 * 4 + 4, Qt::Uninitialized);
    QRandomGenerator(seed).fillRange(reinterpret_cast<quint32 *>(bytes.data()), bytes.size() / 4);
    bytes.truncate(size);
    return bytes;
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Bytes as hex text in `format`, as one stream from its start.
inline QByteArray renderAll(const QString &format, const QByteArray &bytes, const char *lineEnd)
{
    qint64 position = 0;
    return HexLayout::parse(format).render(bytes, &position, lineEnd);
}

inline void pointWorkerAt(quint16 port)
{
    MavixSetting target;
    target.ipAddress = QStringLiteral("127.0.0.1");
    target.tcpDataPort = port;
    MavixSetting::setCurrent(target);
}

// A loopback port that was free a moment ago and is closed again: a connect to it is refused.
inline quint16 closedPort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost, 0) ? server.serverPort() : 0;
}

class TcpFixture
{
public:
    // Per test, as at start-up: a fresh log at every level, the model (receive data shown as text,
    // sent data shown), the worker on its own thread; and a data port in sink mode as the target.
    void start()
    {
        QVERIFY(dir.isValid());
        m_logPath = dir.filePath(QStringLiteral("MavixUtility.log"));
        QFile::remove(m_logPath);
        logOpen(m_logPath, LOG_DBG);
        reports = std::make_unique<ReportCollector>();
        model = std::make_unique<AppModel>();
        thread = std::make_unique<QThread>();
        thread->start();
        worker = new TCPThread(thread.get());
        QCOMPARE(TCPThread::instance(), worker);
        port = std::make_unique<SimDataPort>();
        const quint16 number = port->start(QHostAddress::LocalHost, 0);
        QVERIFY2(number != 0, qPrintable(port->errorString()));
        pointWorkerAt(number);
    }

    // Both directions stopped and the connection closed before the worker goes; its destructor
    // must find nothing to complain about.
    void stop()
    {
        if (QTest::currentTestFailed())
            qInfo("log of the failed case:\n%s", log().constData());
        if (!worker || !port)
            return qWarning("the fixture was not started");
        port->setStuck(false);
        if (worker->recvStatus() == TS_RUN)
            worker->stopReceiving();
        if (worker->sendStatus() == TS_RUN)
            worker->stopSending();
        const bool idle = QTest::qWaitFor(
            [this] {
                return worker->recvStatus() == TS_STOP && worker->sendStatus() == TS_STOP &&
                       !worker->hasSocket();
            },
            kTransferTimeoutMs);
        thread->quit();
        thread->wait();
        // What the worker queued before it ended reaches its receivers now, not in the next test.
        QCoreApplication::sendPostedEvents();
        delete worker;
        worker = nullptr;
        port.reset();
        model.reset();
        reports.reset();
        logClose();
        QVERIFY2(idle, "the worker did not stop");
        QCOMPARE(TCPThread::instance(), nullptr);
        QCOMPARE(logCount("[ ERR] Invalid"), 0);
        QCOMPARE(logCount("socket is not null"), 0);
    }

    // A file of `bytes` in the test folder.
    [[nodiscard]] QString file(const QString &name, const QByteArray &bytes)
    {
        const QString path = dir.filePath(name);
        if (!writeFile(path, bytes))
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    [[nodiscard]] QByteArray log() const { return readFile(m_logPath); }
    [[nodiscard]] int logCount(const QByteArray &line) const { return int(log().count(line)); }

    QTemporaryDir dir;
    std::unique_ptr<ReportCollector> reports;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<QThread> thread;
    TCPThread *worker = nullptr;
    std::unique_ptr<SimDataPort> port;

private:
    QString m_logPath;
};
