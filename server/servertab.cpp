#include "server/servertab.h"

#include "app/accessgate.h"
#include "server/rcclient.h"
#include "server/rclistener.h"
#include "ui_servertab.h"
#include "wren/wrenagent.h"

#include <QEvent>
#include <QPlainTextEdit>

#include <optional>

ServerTab::ServerTab(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::ServerTab>())
{
    m_ui->setupUi(this);
    m_logTimer = new QTimer(this);
    m_logTimer->setSingleShot(true);
    connect(m_logTimer, &QTimer::timeout, this, &ServerTab::flushLog);
    setLogView(m_ui->serverLogTextarea);
}

ServerTab::~ServerTab() = default;

void ServerTab::setAgent(WrenAgent *agent)
{
    if (m_agent)
        disconnect(m_agent->gate(), nullptr, this, nullptr);
    m_agent = agent;
    m_interpreter.setAgent(agent);
    if (!agent)
        return;
    // Lines that arrived while another part of the program used the device run once it is done,
    // from the event loop. Only then is anything posted: most releases find the queue empty.
    connect(agent->gate(), &AccessGate::busyChanged, this, [this](bool busy) {
        if (!busy && m_running == 0)
            scheduleNext();
    });
    if (m_listener)
        m_listener->setGate(agent->gate());
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
    if (!m_listener) {
        m_listener = new RCListener(this);
        connect(m_listener, &RCListener::connected, this, &ServerTab::addNewClient);
    }
    m_listener->setGate(m_agent ? m_agent->gate() : nullptr);
    const bool listening = m_listener->start(m_port);
    // The program log has the failure; the tab says it too, so that nobody waits for clients.
    if (listening)
        appendLog(tr("Listening on port %1").arg(m_listener->serverPort()));
    else
        appendLog(tr("Server mode, fail to listen"));
    return listening;
}

quint16 ServerTab::serverPort() const
{
    return m_listener ? m_listener->serverPort() : 0;
}

void ServerTab::addNewClient(RCClient *client)
{
    appendLog(tr("Connection ID: %1").arg(client->id()));
    connect(client, &RCClient::lineReceived, this, &ServerTab::runCommand);
    connect(client, &RCClient::disconnected, this, &ServerTab::deleteClient);
    ++m_running; // no command starts inside the greeting's wait
    QPointer<RCClient> guard(client);
    client->sendData(QByteArrayLiteral("OK:Connected"));
    if (guard)
        guard->sendPrompt();
    --m_running;
    appendLog(QStringLiteral("OK:Connected"));
    scheduleNext();
}

void ServerTab::runCommand(const QString &text)
{
    m_queue.append(PendingLine{qobject_cast<RCClient *>(sender()), text});
    // Nothing else going on: serve it now rather than one event-loop turn later.
    if (m_queue.size() == 1)
        runNext();
    else
        scheduleNext();
}

void ServerTab::deleteClient()
{
    if (const auto *client = qobject_cast<RCClient *>(sender()))
        appendLog(tr("Disconnect %1").arg(client->id()));
}

void ServerTab::scheduleNext()
{
    if (!m_queue.isEmpty())
        QMetaObject::invokeMethod(this, &ServerTab::runNext, Qt::QueuedConnection);
}

void ServerTab::runNext()
{
    AccessGate *gate = m_agent ? m_agent->gate() : nullptr;
    if (m_running > 0 || m_queue.isEmpty() || (gate && gate->isBusy()))
        return; // a running command, or the gate's release, brings us back
    const PendingLine line = m_queue.takeFirst();
    ++m_running;
    {
        std::optional<AccessGate::Hold> hold;
        if (gate)
            hold.emplace(gate);
        execute(line);
    }
    --m_running;
    scheduleNext();
}

void ServerTab::execute(const PendingLine &line)
{
    if (!line.client || line.client->isDisposed())
        return; // the client left before its turn
    const QString command = CommandInterpreter::withoutTerminator(line.text);
    appendLog(tr("Client %1: %2").arg(line.client->id()).arg(command));
    const CommandInterpreter::Result result = m_interpreter.run(command);
    for (const QString &logLine : result.logLines)
        appendLog(logLine);
    // The client may have vanished while the device answered.
    const QByteArray out = result.prompt ? result.reply + RCClient::prompt() : result.reply;
    if (line.client && !out.isEmpty())
        line.client->sendData(out);
    if (result.outcome == CommandInterpreter::Outcome::Succeeded)
        emit transmissionSuccessed();
    else if (result.outcome == CommandInterpreter::Outcome::Failed)
        emit transmissionFailed();
    if (line.client)
        line.client->finishCommand(line.text);
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
