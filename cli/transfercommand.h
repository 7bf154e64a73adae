// The transfer commands of the tool, recv and send: the GUI's transfer worker on its own thread,
// driven through its signals as the receive and send dialogs drive it, with a progress line on a
// terminal, a one-line summary at the end and Ctrl+C as the stop button.
#pragma once

#include "tcp/threadstatus.h"
#include "tcp/transferrun.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>
#include <QString>

struct CommandContext;
class AppModel;
class TCPOutputOption;
class TCPThread;

class TransferCommand : public QObject
{
    Q_OBJECT

public:
    enum class Direction { Receive, Send };

    TransferCommand(const CommandContext &context, Direction direction, QObject *parent = nullptr);

    // Runs the transfer to its end and returns the exit code.
    int run();

private:
    [[nodiscard]] bool readLimits();
    [[nodiscard]] bool prepareFile(AppModel &model);
    [[nodiscard]] TransferRun runOf(const TCPOutputOption &option) const;
    void begin();
    void stop();
    void interrupt();
    void waitForSocketClose();
    void onRecvProgress(qint64 recvSize);
    void onSendProgress(qint64 sentSize, qint64 fileSize, qint64 elapsedMs);
    void onStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void showProgress();
    void keepOnlyByteLimit();
    void countBytesInFile();
    void printSummary();
    [[nodiscard]] int exitCode() const;
    [[nodiscard]] bool receiving() const { return m_direction == Direction::Receive; }
    [[nodiscard]] qint64 elapsedMs() const;

    const CommandContext &m_context;
    Direction m_direction;
    QString m_fileName;
    TransferRun m_run;
    qint64 m_byteLimit = -1;
    qint64 m_timeLimitMs = -1;
    TCPThread *m_worker = nullptr;
    QEventLoop m_loop;
    QElapsedTimer m_clock;
    qint64 m_stoppedAtMs = -1;
    qint64 m_bytes = 0;
    qint64 m_fileSize = -1;
    int m_errorsBefore = 0;
    int m_refusedExitCode = 0;
    bool m_running = false;
    bool m_stopRequested = false;
    bool m_interrupted = false;
};
