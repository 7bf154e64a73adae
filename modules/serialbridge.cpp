#include "modules/serialbridge.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "modules/receivecap.h"
#include "settings/eepromwritesession.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

#include <QtEndian>

using namespace Rs232c;

SerialBridge::SerialBridge(WrenAgent *agent, QObject *parent)
    : QObject(parent), m_agent(agent), m_accessTimeoutMs(WrenAgent::kAccessTimeoutMs),
      m_dataTimeoutMs(WrenAgent::kAccessTimeoutMs)
{
    for (SerialConnectorSession *&one : m_sessions) {
        one = new SerialConnectorSession(agent->gate(), this);
        const auto connector = Connector(&one - m_sessions.data());
        connect(one, &SerialConnectorSession::closedByPeer, this, [this, connector](bool watched) {
            if (watched)
                emit monitorEnded(connector);
            emit connectionChanged();
        });
        connect(one, &SerialConnectorSession::arrived, this,
                [this, connector](const QByteArray &data) { emit monitored(connector, data); });
    }
}

SerialBridge::~SerialBridge() = default;

void SerialBridge::setTimeouts(int accessMs, int dataMs)
{
    m_accessTimeoutMs = accessMs;
    m_dataTimeoutMs = dataMs;
}

AccessGate *SerialBridge::gate() const
{
    return m_agent->gate();
}

quint16 SerialBridge::runningPort(Connector connector) const
{
    return connector == Connector::Dte ? m_running.tcpDataPort : m_running.tcpCommandPort;
}

void SerialBridge::takeRunningPorts(const MavixSetting &block)
{
    takePorts(block, true);
}

// Settings block: DTE port at 0x1C (the TCP data port), DCE port at 0x1E.
void SerialBridge::takePorts(const MavixSetting &block, bool running)
{
    m_config.connector(Connector::Dte).tcpPort = block.tcpDataPort;
    m_config.connector(Connector::Dce).tcpPort = block.tcpCommandPort;
    if (running)
        m_running = block;
}

void SerialBridge::reportAccessError(const WrenError &error)
{
    m_lastAccessError = int(error.code);
    if (!error.reason.isEmpty())
        reportError(error.reason);
    else if (error.code == WrenError::Timeout)
        reportError(tr("ZEL-RS232C timeout"));
    else
        reportError(tr("ZEL-RS232C undefined error"));
}

// ---- Registers ----

bool SerialBridge::read(bool eeprom)
{
    AccessGate::Hold hold(gate());
    m_lastAccessError.reset();
    const quint32 offset = eeprom ? kEepromOffset : 0;
    try {
        const QByteArray config =
            m_agent->read(kConfigAddress - offset, kConfigSize, m_accessTimeoutMs);
        Rs232cConfig decoded = m_config;
        const bool configValid = decoded.decode(config);
        const QByteArray block = configValid
                                     ? m_agent->read(kSettingsBlockAddress - offset,
                                                     MavixSetting::kImageSize, m_accessTimeoutMs)
                                     : QByteArray();
        const bool blockValid = block.size() >= MavixSetting::kImageSize;
        const QByteArray states =
            blockValid ? m_agent->read(kLineStateAddress, kLineStateSize, m_accessTimeoutMs)
                       : QByteArray();
        if (!configValid || !blockValid || !decoded.decodeLineStates(states)) {
            m_lastAccessError = int(WrenError::BadReply);
            reportError(tr("Read ZEL-RS232C setting is invalid"));
            return false;
        }
        m_config = decoded;
        MavixSetting setting;
        (void)setting.decode(block); // its size is checked above
        takePorts(setting, !eeprom);
        if (!eeprom)
            emit targetSettingChanged(setting);
    } catch (const WrenError &error) {
        reportAccessError(error);
        return false;
    }
    reportResult(tr("Reading ZEL-RS232C setting is successed"));
    return true;
}

bool SerialBridge::write(bool eeprom, Connector connector, quint16 port)
{
    AccessGate::Hold hold(gate());
    m_lastAccessError.reset();
    const quint32 offset = eeprom ? kEepromOffset : 0;
    const auto writes = [&] {
        try {
            writeSequence(offset, connector, port);
            return true;
        } catch (const WrenError &error) {
            reportAccessError(error);
            return false;
        }
    };
    if (eeprom) {
        EepromWriteSession session(m_agent, m_accessTimeoutMs);
        if (!session.run(writes)) {
            if (!m_lastAccessError && session.lastError())
                m_lastAccessError = int(session.lastError()->code);
            return false;
        }
    } else if (!writes()) {
        return false;
    }
    reportResult(tr("Writing ZEL-RS232C setting is successed"));
    return true;
}

bool SerialBridge::readRunningPorts()
{
    AccessGate::Hold hold(gate());
    m_lastAccessError.reset();
    try {
        const QByteArray block =
            m_agent->read(kSettingsBlockAddress, MavixSetting::kImageSize, m_accessTimeoutMs);
        MavixSetting setting;
        if (setting.decode(block)) {
            m_lastAccessError = int(WrenError::ShortReply);
            reportError(tr("Read ZEL-RS232C setting is invalid"));
            return false;
        }
        takePorts(setting, true);
        return true;
    } catch (const WrenError &error) {
        reportAccessError(error);
        return false;
    }
}

void SerialBridge::writeSequence(quint32 offset, Connector connector, quint16 port)
{
    (void)m_agent->write(kConfigAddress - offset, m_config.encode(), m_accessTimeoutMs);
    QByteArray portBytes(2, '\0');
    qToBigEndian<quint16>(port, portBytes.data());
    (void)m_agent->write(kSettingsBlockAddress - offset + quint32(kPortOffset[size_t(connector)]),
                         portBytes, m_accessTimeoutMs);

    const QByteArray block =
        m_agent->read(kSettingsBlockAddress - offset, MavixSetting::kImageSize, m_accessTimeoutMs);
    MavixSetting setting;
    if (setting.decode(block))
        return; // too short: the next read shows the ports
    takePorts(setting, offset == 0);
    if (offset == 0)
        emit targetSettingChanged(setting);
}

// ---- Data ----

bool SerialBridge::isConnected(Connector connector) const
{
    return session(connector)->isConnected();
}

bool SerialBridge::connectTo(Connector connector)
{
    const SerialConnectorSession::Result result =
        session(connector)->open(m_agent->targetAddress(), runningPort(connector), m_dataTimeoutMs);
    m_lastResult = result;
    emit connectionChanged();
    if (result != SerialConnectorSession::Result::Done) {
        reportError(tr("Fail to connect to device"));
        return false;
    }
    reportResult(tr("ZEL-RS232C connect successed"));
    return true;
}

void SerialBridge::disconnectFrom(Connector connector)
{
    session(connector)->close(m_dataTimeoutMs);
    emit connectionChanged();
}

bool SerialBridge::send(Connector connector, const QByteArray &bytes)
{
    if (bytes.isEmpty()) {
        m_lastResult = SerialConnectorSession::Result::Failed;
        reportError(tr("ZEL-RS232C data is empty"));
        return false;
    }
    return reportDataResult(session(connector)->send(bytes, m_dataTimeoutMs),
                            tr("ZEL-RS232C sending successed"));
}

bool SerialBridge::receive(Connector connector, qint64 maxLength, QByteArray *data)
{
    const SerialConnectorSession::Result result =
        session(connector)->receive(maxLength, m_dataTimeoutMs, data);
    if (result == SerialConnectorSession::Result::Done && maxLength <= 0 &&
        data->size() >= ModuleLimits::kReceiveCapBytes)
        reportResult(tr("Receiving stopped at %1 bytes; the rest waits for the next receive")
                         .arg(data->size()));
    const bool received = reportDataResult(result, tr("ZEL-RS232C receiving successed"));
    if (result == SerialConnectorSession::Result::NotConnected)
        emit connectionChanged();
    else if (result == SerialConnectorSession::Result::TimedOut)
        disconnectFrom(connector);
    return received;
}

bool SerialBridge::startMonitor(Connector connector)
{
    if (!isConnected(connector) && !connectTo(connector))
        return false;
    session(connector)->setWatched(true);
    emit connectionChanged();
    return true;
}

void SerialBridge::stopMonitor(Connector connector)
{
    session(connector)->setWatched(false);
    emit connectionChanged();
}

bool SerialBridge::isMonitored(Connector connector) const
{
    return session(connector)->isWatched();
}

bool SerialBridge::monitor(Connector connector, const std::function<void(QByteArray)> &sink)
{
    SerialConnectorSession *one = session(connector);
    if (!one->isConnected())
        return reportDataResult(SerialConnectorSession::Result::NotConnected, QString());
    AccessGate::Hold hold(gate());
    const QMetaObject::Connection handed =
        connect(one, &SerialConnectorSession::arrived, this, sink);
    one->setWatched(true);
    // Quiet periods are no failure: only the end of the connection or giving up ends the wait.
    AccessGate::WaitResult wait = AccessGate::WaitResult::TimedOut;
    while (wait == AccessGate::WaitResult::TimedOut)
        wait = gate()->waitFor(one, &SerialConnectorSession::closedByPeer, kMonitorWaitMs,
                               [one] { return !one->isWatched(); });
    disconnect(handed);
    one->setWatched(false);
    if (wait == AccessGate::WaitResult::Aborted)
        return true;
    return reportDataResult(SerialConnectorSession::Result::NotConnected, QString());
}

bool SerialBridge::reportDataResult(SerialConnectorSession::Result result,
                                    const QString &successMessage)
{
    m_lastResult = result;
    switch (result) {
    case SerialConnectorSession::Result::Done:
        reportResult(successMessage);
        return true;
    case SerialConnectorSession::Result::NotConnected:
        reportError(tr("ZEL-RS232C is not connected"));
        break;
    case SerialConnectorSession::Result::TimedOut:
        reportError(tr("ZEL-RS232C timeout"));
        break;
    case SerialConnectorSession::Result::Aborted: // the user gave up the wait (Esc)
        reportWrenError(WrenError{WrenError::Timeout, givenUpText()}, tr("ZEL-RS232C timeout"));
        break;
    default:
        reportError(tr("ZEL-RS232C undefined error"));
        break;
    }
    return false;
}
