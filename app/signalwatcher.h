// Turns SIGINT and SIGTERM into a Qt signal delivered by the event loop, so that Ctrl+C or a
// service manager ends a program through its normal closing sequence. The handler only writes the
// signal number into a socket pair, which is async-signal-safe. One watcher a process.
#pragma once

#include <QObject>

class QSocketNotifier;

class SignalWatcher : public QObject
{
    Q_OBJECT

public:
    explicit SignalWatcher(QObject *parent = nullptr);
    ~SignalWatcher() override;

    // False when the socket pair or the handlers could not be set up.
    [[nodiscard]] bool isWatching() const { return m_notifier != nullptr; }

signals:
    void signalReceived(int signalNumber);

private:
    static void handle(int signalNumber);
    void readSignal();
    static void closeSockets();

    QSocketNotifier *m_notifier = nullptr;
};
