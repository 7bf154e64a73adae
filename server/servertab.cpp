#include "server/servertab.h"

#include "server/allowrule.h"
#include "server/rcclient.h"
#include "server/rcserver.h"
#include "ui_servertab.h"

#include <QEvent>
#include <QPlainTextEdit>

ServerTab::ServerTab(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::ServerTab>())
{
    m_ui->setupUi(this);
    m_server = new RCServer(this);
    connect(m_server, &RCServer::logLine, this, &ServerTab::appendLog);
    connect(m_server, &RCServer::transmissionSuccessed, this, &ServerTab::transmissionSuccessed);
    connect(m_server, &RCServer::transmissionFailed, this, &ServerTab::transmissionFailed);
    m_logTimer = new QTimer(this);
    m_logTimer->setSingleShot(true);
    connect(m_logTimer, &QTimer::timeout, this, &ServerTab::flushLog);
    setLogView(m_ui->serverLogTextarea);
    showStatus();
}

ServerTab::~ServerTab() = default;

void ServerTab::setAgent(WrenAgent *agent)
{
    m_server->setAgent(agent);
}

void ServerTab::setPort(int port)
{
    m_server->setPort(port);
}

void ServerTab::setAccessTimeoutMs(int timeoutMs)
{
    m_server->setAccessTimeoutMs(timeoutMs);
}

void ServerTab::setAllowRule(const AllowRule &rule)
{
    m_server->setAllowRule(rule);
    showStatus();
}

bool ServerTab::setFileFolder(const QString &path)
{
    const bool set = m_server->setFileFolder(path);
    showStatus();
    return set;
}

void ServerTab::setLogView(QPlainTextEdit *view)
{
    flushLog();
    if (m_logView)
        m_logView->removeEventFilter(this);
    m_logView = view;
    if (!m_logView)
        return;
    m_logView->setMaximumBlockCount(kMaxLogLines);
    m_logView->installEventFilter(this);
}

bool ServerTab::eventFilter(QObject *watched, QEvent *event)
{
    // Lines gathered while the view was hidden show up as soon as it is shown.
    if (watched == m_logView && event->type() == QEvent::Show && !m_pendingLog.isEmpty())
        m_logTimer->start(0);
    return QWidget::eventFilter(watched, event);
}

bool ServerTab::start()
{
    const bool listening = m_server->start();
    // The program log has the failure; the tab says it too, so that nobody waits for clients.
    if (listening)
        appendLog(tr("Listening on port %1").arg(m_server->serverPort()));
    else
        appendLog(tr("Server mode, fail to listen"));
    showStatus();
    return listening;
}

quint16 ServerTab::serverPort() const
{
    return m_server->serverPort();
}

void ServerTab::runCommand(const QString &text)
{
    if (auto *client = qobject_cast<RCClient *>(sender()))
        m_server->enqueue(client, text);
}

void ServerTab::showStatus()
{
    const quint16 port = m_server->serverPort();
    const QString listening =
        port != 0 ? tr("Listening on port %1 of every interface").arg(port) : tr("Not listening");
    m_ui->serverStatusLabel->setText(
        tr("%1.\nClients allowed from: %2 (-uiallow: adds networks).\nFiles of read and write: %3")
            .arg(listening, m_server->allowRule().describe(),
                 m_server->fileFolder().isEmpty() ? tr("the working directory")
                                                  : m_server->fileFolder()));
}

void ServerTab::appendLog(const QString &line)
{
    if (!m_logView)
        return;
    m_pendingLog << QString(line).replace(QLatin1String("\r\n"), QLatin1String("\n"));
    // Trimmed in bulk: the view keeps no more than kMaxLogLines anyway.
    if (m_pendingLog.size() >= 2 * kMaxLogLines)
        m_pendingLog.remove(0, m_pendingLog.size() - kMaxLogLines);
    // A hidden view is not laid out over and over; it catches up when shown.
    if (!m_logTimer->isActive() && m_logView->isVisible())
        m_logTimer->start(kLogBatchMs);
}

void ServerTab::flushLog()
{
    if (m_pendingLog.size() > kMaxLogLines)
        m_pendingLog.remove(0, m_pendingLog.size() - kMaxLogLines);
    if (m_logView && !m_pendingLog.isEmpty())
        m_logView->appendPlainText(m_pendingLog.join(QLatin1Char('\n')));
    m_pendingLog.clear();
}
