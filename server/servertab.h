// The Server tab (server mode): shows where the remote-control server listens, whom it lets in,
// the folder of its files, and its log. The server itself is an RCServer, which runs without any
// window as well.
#pragma once

#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <memory>

namespace Ui {
class ServerTab;
}
class AllowRule;
class QPlainTextEdit;
class RCServer;
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
    void setPort(int port);
    bool start();
    // Set-up from the command line: who else may connect, and the folder of the files.
    void setAllowRule(const AllowRule &rule);
    bool setFileFolder(const QString &path);
    // The port listened on (the system's choice when started with port 0), 0 when not listening.
    [[nodiscard]] quint16 serverPort() const;
    // Time-out of each device access made for a client; tests shorten it.
    void setAccessTimeoutMs(int timeoutMs);
    [[nodiscard]] RCServer *server() const { return m_server; }

signals:
    void transmissionSuccessed();
    void transmissionFailed();

public slots:
    // A line from the client that sent the signal, as the server's own sessions deliver them.
    void runCommand(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void appendLog(const QString &line);
    void flushLog();
    void showStatus();

    std::unique_ptr<Ui::ServerTab> m_ui;
    RCServer *m_server = nullptr;
    QPlainTextEdit *m_logView = nullptr;
    QStringList m_pendingLog;
    QTimer *m_logTimer = nullptr;
};
