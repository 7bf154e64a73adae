// recv() and send() of a Python device: the window's transfer worker on its own thread, driven
// through its signals as the Receive and Send Dialogs drive it, until the run ends, the limits
// stop it, or Ctrl+C does.
#pragma once

#include "app/appmodel.h"
#include "tcp/threadstatus.h"
#include "tcp/transferrun.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>
#include <QString>

class TCPThread;

// What a finished run did.
struct TransferResult
{
    QString file;
    qint64 bytes = 0;
    qint64 elapsedMs = 0;
    qint64 fileSize = -1; // send only: the file's size
    bool interrupted = false;
};

class PythonTransfer : public QObject
{
    Q_OBJECT

public:
    enum class Direction { Receive, Send };

    PythonTransfer(Direction direction, const QString &host, quint16 port, int timeoutMs,
                   QObject *parent = nullptr);

    // Limits of a receive; -1: none.
    void setLimits(qint64 bytes, qint64 ms);

    // Checks the file as the TCP tab does; the failure is reported. Before run().
    [[nodiscard]] bool prepare(const QString &fileName);
    // Runs to the end; the failures are reported.
    [[nodiscard]] TransferResult run();
    // Ctrl+C: stops the run as its stop button does.
    void interrupt();

private:
    void stop();
    void onStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void onRecvProgress(qint64 recvSize);
    void waitForSocketClose();
    void keepOnlyByteLimit(TransferResult &result) const;
    [[nodiscard]] bool receiving() const { return m_direction == Direction::Receive; }

    Direction m_direction;
    QString m_host;
    quint16 m_port;
    int m_timeoutMs;
    AppModel m_model;
    TransferRun m_run;
    QString m_fileName;
    qint64 m_byteLimit = -1;
    qint64 m_timeLimitMs = -1;
    TCPThread *m_worker = nullptr;
    QEventLoop m_loop;
    QElapsedTimer m_clock;
    qint64 m_stoppedAtMs = -1;
    qint64 m_bytes = 0;
    qint64 m_fileSize = -1;
    bool m_running = false;
    bool m_stopRequested = false;
    bool m_interrupted = false;
};
