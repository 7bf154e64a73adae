// One transfer run of a program without windows (the command-line tool, the Python module): the
// transfer worker on its own thread, started as the Receive and Send Dialogs start it and followed
// through its signals until the run ends, a byte or time limit stops it, or interrupt() does;
// then the worker's socket is closed and the figures are collected.
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
    qint64 bytes = 0;     // received into the file, or sent
    qint64 elapsedMs = 0; // from the connection to the end of the run
    qint64 fileSize = -1; // send only: the file's size, or what a stream gave
    bool interrupted = false;
    QString errorText; // the first failure the worker reported, or empty
};

class TransferRunner : public QObject
{
    Q_OBJECT

public:
    enum class Direction { Receive, Send };

    // `timeoutMs` replaces the worker's connect, write and close time-outs.
    TransferRunner(Direction direction, const QString &host, quint16 port, int timeoutMs,
                   QObject *parent = nullptr);

    // Limits of a receive; -1: none.
    void setLimits(qint64 bytes, qint64 ms);
    // Replaces how long a finished send waits before it closes the socket.
    void setCloseReserveMs(int ms) { m_closeReserveMs = ms; }

    // Names the file as the TCP tab does, with the same check (its failure is reported). Nothing
    // is shown: the whole bandwidth goes to the file. A standard stream is neither trimmed to the
    // byte limit nor measured afterwards. Before run().
    [[nodiscard]] bool prepare(const QString &path, bool standardStream = false);
    // Runs to the end.
    [[nodiscard]] TransferResult run();
    // Ctrl+C: stops the run as its stop button does.
    void interrupt();

    // The figures so far, for a progress line.
    [[nodiscard]] qint64 bytes() const { return m_result.bytes; }
    [[nodiscard]] qint64 fileSize() const { return m_result.fileSize; }
    [[nodiscard]] qint64 elapsedMs() const;

signals:
    // The worker has stopped; its socket may still be closing.
    void stopped();

private:
    void stop();
    void onStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void onRecvProgress(qint64 recvSize);
    void onSendProgress(qint64 sentSize, qint64 fileSize);
    void onReported(const QString &text, bool error);
    void waitForSocketClose();
    void collectFileFigures();
    [[nodiscard]] bool receiving() const { return m_direction == Direction::Receive; }

    Direction m_direction;
    QString m_host;
    quint16 m_port;
    int m_timeoutMs;
    int m_closeReserveMs;
    AppModel m_model;
    TransferRun m_run;
    bool m_standardStream = false;
    qint64 m_byteLimit = -1;
    qint64 m_timeLimitMs = -1;
    TCPThread *m_worker = nullptr;
    QEventLoop m_loop;
    QElapsedTimer m_clock;
    qint64 m_stoppedAtMs = -1;
    TransferResult m_result;
    bool m_running = false;
    bool m_stopRequested = false;
};
