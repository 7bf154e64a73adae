// What the transfer tests share: per test a fresh log, model and transfer worker on its own thread,
// as at start-up, with the emulator's data port on loopback as the current target.
#pragma once

#include "reportcollector.h"

#include "app/appmodel.h"
#include "app/log.h"
#include "settings/mavixsetting.h"
#include "sim/simdataport.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcpthread.h"

#include <QTcpServer>
#include <QtTest>

constexpr int kTransferTimeoutMs = 20000;

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The current data row's value in `column`.
template <typename T> T cell(const char *column)
{
    return *static_cast<T *>(QTest::qData(column, qMetaTypeId<T>()));
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
    void start()
    {
        logOpen(dir.filePath(QStringLiteral("MavixUtility.log")), LOG_DBG);
        reports = std::make_unique<ReportCollector>();
        model = std::make_unique<AppModel>();
        thread = std::make_unique<QThread>();
        thread->start();
        worker = new TCPThread(thread.get());
        port = std::make_unique<SimDataPort>();
        const quint16 number = port->start(QHostAddress::LocalHost, 0);
        QVERIFY2(number != 0, qPrintable(port->errorString()));
        pointWorkerAt(number);
    }

    // Both directions stopped and the connection closed before the worker goes; its destructor
    // must find nothing to complain about.
    void stop()
    {
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
        QCoreApplication::sendPostedEvents(); // what the worker queued, not into the next test
        delete worker;
        port.reset();
        model.reset();
        reports.reset();
        logClose();
        QVERIFY2(idle, "the worker did not stop");
        QCOMPARE(logCount("[ ERR] Invalid") + logCount("socket is not null"), 0);
        QFile::remove(dir.filePath(QStringLiteral("MavixUtility.log")));
    }

    [[nodiscard]] QString file(const QString &name, const QByteArray &bytes)
    {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    [[nodiscard]] int logCount(const QByteArray &line) const
    {
        return int(readFile(dir.filePath(QStringLiteral("MavixUtility.log"))).count(line));
    }

    QTemporaryDir dir;
    std::unique_ptr<ReportCollector> reports;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<QThread> thread;
    TCPThread *worker = nullptr;
    std::unique_ptr<SimDataPort> port;
};
