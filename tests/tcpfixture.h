// What the transfer tests share: per test a fresh log, model and transfer worker on its own thread,
// as at start-up, with the emulator's data port on loopback as the target.
#pragma once

#include "reportcollector.h"

#include "app/appmodel.h"
#include "app/devicetarget.h"
#include "app/log.h"
#include "sim/simdataport.h"
#include "tcp/tcpthread.h"

#include <QtNetwork>
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

class TcpFixture
{
public:
    void start()
    {
        logOpen(log(), LOG_DBG);
        reports = std::make_unique<ReportCollector>();
        model = std::make_unique<AppModel>();
        thread.start();
        worker = new TCPThread(&thread);
        worker->setCloseReserveMs(50);
        port = std::make_unique<SimDataPort>();
        pointWorkerAt(port->start(QHostAddress::LocalHost, 0));
        QVERIFY(target.tcpPort() == port->port());
    }

    // 0: a loopback port that was free a moment ago and is closed again, so a connect is refused.
    void pointWorkerAt(quint16 tcpPort)
    {
        QTcpServer server;
        target.set(QStringLiteral("127.0.0.1"), target.udpPort(),
                   tcpPort || !server.listen(QHostAddress::LocalHost) ? tcpPort
                                                                      : server.serverPort());
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
        const bool idle = QTest::qWaitFor([this] {
            return !worker->hasSocket() && worker->recvStatus() + worker->sendStatus() == TS_STOP;
        });
        thread.quit();
        thread.wait();
        QCoreApplication::sendPostedEvents(); // what the worker queued, not into the next test
        delete worker;
        port.reset(), model.reset(), reports.reset();
        logClose();
        QVERIFY2(idle, "the worker did not stop");
        QCOMPARE(logCount("[ ERR] Invalid") + logCount("socket is not null"), 0);
        QFile::remove(log());
    }

    // A run of the model's option against the target, as the dialogs start one.
    TransferRun run(bool receiving) const
    {
        return TransferRun::of(receiving ? *model->recvOption() : *model->sendOption(),
                               target.host(), target.tcpPort());
    }
    QString file(const QString &name, const QByteArray &bytes)
    {
        QFile file(dir.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()
                   ? file.fileName()
                   : QString();
    }
    int logCount(const QByteArray &line) const { return int(readFile(log()).count(line)); }
    QString log() const { return dir.filePath("MavixUtility.log"); }

    QTemporaryDir dir;
    std::unique_ptr<ReportCollector> reports;
    std::unique_ptr<AppModel> model;
    DeviceTarget target;
    QThread thread;
    TCPThread *worker = nullptr;
    std::unique_ptr<SimDataPort> port;
};
