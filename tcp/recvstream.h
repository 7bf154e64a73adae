// The receive direction of a run: every byte read from the connection goes to the recorder at
// once, the newest ones to the display tail that the receive dialog drains, and the count out as
// spaced progress figures. The recorder's block is written out every second. Lives on the worker
// thread; only the display calls (setDisplayMode, take) come from other threads.
#pragma once

#include "tcp/displaytail.h"
#include "tcp/progressthrottle.h"
#include "tcp/recvrecorder.h"
#include "tcp/threadstatus.h"
#include "tcp/transferrun.h"

#include <QByteArray>
#include <QMutex>
#include <QObject>

class QIODevice;
class QTimer;

class RecvStream : public QObject
{
    Q_OBJECT

public:
    // The newest received bytes kept for the display; older ones are skipped and counted.
    static constexpr qsizetype kTailBytes = 4095;
    // Largest single read from the connection.
    static constexpr int kProgressIntervalMs = 50;
    static constexpr int kFlushIntervalMs = 1000;

    explicit RecvStream(QObject *parent = nullptr);

    // How a run ended when its connection broke.
    struct End
    {
        QString text;
        bool failed = true;
        TCPTHREAD_ERROR error = TTE_CONNECT_ERROR;
    };

    // Run
    // Starts over for `run`; gives what the run will do with the bytes, for the user.
    [[nodiscard]] QString start(const TransferRun &run);
    // Opens (truncates) the run's file, if it names one; false with the reason in
    // openFailureText().
    [[nodiscard]] bool openFile();
    [[nodiscard]] QString openFailureText() const;
    // The flush and progress timers run only while receiving.
    void setRunning(bool running);
    // Takes everything `device` holds; false when the file could not be written (it is closed).
    [[nodiscard]] bool readFrom(QIODevice *device);
    // Sends the figure the throttle still holds.
    void sendLastProgress();
    // Closes the file; false when its last write failed.
    [[nodiscard]] bool closeFile();
    // Ends the run at a broken connection: the last figure goes out and the file is closed.
    [[nodiscard]] End endAtBreak(bool closedByDevice, const QString &failure);
    [[nodiscard]] bool isFileOpen() const { return m_recorder.isOpen(); }
    // What the file holds now, and why writing it failed, for the messages of a run's end.
    [[nodiscard]] QString savedText() const;
    [[nodiscard]] QString writeFailureText() const;

    // Display, from any thread: how bytes are shown from now on (TCPOutputOption::kDisplay*), and
    // at most `maxSize` bytes of display text (-1: all), led by a mark when bytes were skipped.
    void setDisplayMode(int mode);
    [[nodiscard]] QByteArray take(qint64 maxSize);

signals:
    void textAdded();
    void progressed(qint64 received);
    // The periodic write of the file failed; the file is closed.
    void writeFailed();

private:
    void emitProgress(bool force);

    TransferRun m_run;
    RecvRecorder m_recorder;
    qint64 m_received = 0;
    ProgressThrottle m_throttle{kProgressIntervalMs};
    QTimer *m_progressDue = nullptr; // sends a figure held back by the throttle
    QTimer *m_flushTimer = nullptr;

    mutable QMutex m_displayMutex; // guards the members below
    DisplayTail m_tail{kTailBytes};
    HexLayout m_layout;
    int m_displayMode = 0;
    bool m_textSignalled = false;
};
