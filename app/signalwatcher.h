// Turns SIGINT and SIGTERM into a Qt signal delivered by the event loop, so that Ctrl+C or a
// service manager ends a program through its normal closing sequence. The handler only writes the
// signal number into a socket pair, which is async-signal-safe. One watcher a process. The handlers
// it replaces are put back when it ends or is disarmed.
#pragma once

#include <QObject>

class QSocketNotifier;

class SignalWatcher : public QObject
{
    Q_OBJECT

public:
    // Unarmed, the watcher is ready but the handlers stay as they are until arm().
    explicit SignalWatcher(QObject *parent = nullptr, bool armed = true);
    ~SignalWatcher() override;

    // False when the socket pair or the handlers could not be set up.
    [[nodiscard]] bool isWatching() const { return m_notifier != nullptr; }

    // Puts the watcher's handlers in place (false when they could not be), or puts back the ones
    // they replaced. Cheap: for a watch around each of many short waits.
    bool arm();
    void disarm();

signals:
    void signalReceived(int signalNumber);

private:
    static void handle(int signalNumber);
    void readSignal();
    static void closeSockets();

    QSocketNotifier *m_notifier = nullptr;
    bool m_armed = false;
};
