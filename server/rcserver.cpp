#include "server/rcserver.h"

#include "app/accessgate.h"
#include "server/rcclient.h"
#include "server/rclistener.h"
#include "wren/wrenagent.h"

#include <optional>

RCServer::RCServer(QObject *parent) : QObject(parent)
{
    m_listener = new RCListener(this);
    connect(m_listener, &RCListener::connected, this, &RCServer::addClient);
    connect(m_listener, &RCListener::refused, this,
            [this](const QString &peer, RCListener::Refusal reason) {
                emit logLine(reason == RCListener::Refusal::NotAllowed
                                 ? tr("Refused %1: not an allowed address").arg(peer)
                                 : tr("Refused %1: too many clients").arg(peer));
            });
}

RCServer::~RCServer() = default;

void RCServer::setAgent(WrenAgent *agent)
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
}

void RCServer::setAllowRule(const AllowRule &rule)
{
    m_allow = rule;
    m_listener->setAllowRule(rule);
}

bool RCServer::setFileFolder(const QString &path)
{
    FileFolder folder;
    if (!folder.setPath(path))
        return false;
    m_interpreter.setFileFolder(folder);
    return true;
}

void RCServer::setSendTimeoutMs(int timeoutMs)
{
    m_listener->setSendTimeoutMs(timeoutMs);
}

bool RCServer::start()
{
    if (m_interpreter.fileFolder().path().isEmpty())
        (void)setFileFolder(QString());
    return m_listener->start(m_port);
}

quint16 RCServer::serverPort() const
{
    return m_listener->serverPort();
}

void RCServer::addClient(RCClient *client)
{
    emit logLine(tr("Connection ID: %1").arg(client->id()));
    emit logLine(tr("Peer address: %1").arg(client->peer()));
    connect(client, &RCClient::lineReceived, this,
            [this, client](const QString &text) { enqueue(client, text); });
    connect(client, &RCClient::disconnected, this,
            [this, client] { emit logLine(tr("Disconnect %1").arg(client->id())); });
    client->sendData(QByteArrayLiteral("OK:Connected"));
    client->sendPrompt();
    emit logLine(QStringLiteral("OK:Connected"));
}

void RCServer::enqueue(RCClient *client, const QString &text)
{
    m_queue.append(PendingLine{client, text});
    // Nothing else going on: served now rather than one event-loop turn later. The session hands
    // a line over as the last thing it does, so it may even end while the command runs.
    AccessGate *gate = m_agent ? m_agent->gate() : nullptr;
    if (m_queue.size() == 1 && m_running == 0 && !(gate && gate->isBusy()))
        runNext();
    else
        scheduleNext();
}

// Later lines are served from the event loop, one at a time.
void RCServer::scheduleNext()
{
    if (m_queue.isEmpty() || m_scheduled)
        return;
    m_scheduled = true;
    QMetaObject::invokeMethod(this, &RCServer::runNext, Qt::QueuedConnection);
}

void RCServer::runNext()
{
    m_scheduled = false;
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

void RCServer::execute(const PendingLine &line)
{
    if (!line.client || line.client->isDisposed())
        return; // the client left before its turn
    const QString command = CommandInterpreter::withoutTerminator(line.text);
    emit logLine(tr("Client %1: %2").arg(QString::number(line.client->id()), command));
    const CommandInterpreter::Result result = m_interpreter.run(command);
    for (const QString &entry : result.logLines)
        emit logLine(entry);
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
