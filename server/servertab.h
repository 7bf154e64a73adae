// The Server tab (server mode): the remote-control service and its log. Command lines from every
// client wait in one queue and run one at a time, in arrival order, each holding the access gate,
// and never inside another device operation's wait.
#pragma once

#include "server/commandinterpreter.h"

#include <QList>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <memory>

namespace Ui {
class ServerTab;
}
class QPlainTextEdit;
class RCClient;
class RCListener;
class WrenAgent;

class ServerTab : public QWidget
{
    Q_OBJECT

public:
    // The log view keeps this many lines; older ones scroll away.
    static constexpr int kMaxLogLines = 5000;
    // Log lines are shown in batches, so that a busy client never waits for the view.
    static constexpr int kLogBatchMs = 100;

    explicit ServerTab(QWidget *parent = nullptr);
    ~ServerTab() override;

    // Set-up by the main window
    void setAgent(WrenAgent *agent);
    void setLogView(QPlainTextEdit *view);
    void setPort(int port) { m_port = port; }
    bool start();
    // The port listened on (the system's choice when started with port 0), 0 when not listening.
    [[nodiscard]] quint16 serverPort() const;
    // Time-out of each device access made for a client; tests shorten it.
    void setAccessTimeoutMs(int timeoutMs) { m_interpreter.setAccessTimeoutMs(timeoutMs); }

signals:
    void transmissionSuccessed();
    void transmissionFailed();

public slots:
    void addNewClient(RCClient *client);
    void runCommand(const QString &text);
    void deleteClient();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct PendingLine
    {
        QPointer<RCClient> client;
        QString text;
    };

    void scheduleNext();
    void runNext();
    void execute(const PendingLine &line);
    void appendLog(const QString &line);
    void flushLog();

    std::unique_ptr<Ui::ServerTab> m_ui;
    WrenAgent *m_agent = nullptr;
    QPlainTextEdit *m_logView = nullptr;
    RCListener *m_listener = nullptr;
    int m_port = 0;
    CommandInterpreter m_interpreter;
    QList<PendingLine> m_queue;
    int m_running = 0; // a command or a greeting is being sent
    QStringList m_pendingLog;
    QTimer *m_logTimer = nullptr;
};
