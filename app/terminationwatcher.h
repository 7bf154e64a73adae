// Turns SIGINT and SIGTERM into a normal end of the event loop, so that Ctrl+C in a terminal (or a
// service manager stopping the program) still runs the closing sequence and finishes the log.
#pragma once

#include <QObject>

class QSocketNotifier;

class TerminationWatcher : public QObject
{
    Q_OBJECT

public:
    explicit TerminationWatcher(QObject *parent = nullptr);
    ~TerminationWatcher() override;

signals:
    void terminationRequested(int signalNumber);

private:
    void readSignal();

    QSocketNotifier *m_notifier = nullptr;
};
