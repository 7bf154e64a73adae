// The ZEL-RS232C serial bridge module as every front end drives it (the tab, the command-line
// tool): its configuration, line states and connector ports through the register-access agent, and
// one TCP connection per connector for the data. Each operation reports its outcome with the tab's
// messages.
#pragma once

#include "modules/rs232cconfig.h"
#include "modules/serialconnectorsession.h"
#include "settings/mavixsetting.h"

#include <QObject>

#include <array>
#include <functional>
#include <optional>

class AccessGate;
class WrenAgent;
struct WrenError;

class SerialBridge : public QObject
{
    Q_OBJECT

public:
    using Connector = Rs232c::Connector;

    // The agent is not owned; its gate orders every wait.
    explicit SerialBridge(WrenAgent *agent, QObject *parent = nullptr);
    ~SerialBridge() override;

    // Time-outs: register accesses, and connecting, sending and receiving on a connector.
    void setTimeouts(int accessMs, int dataMs);
    void setAccessTimeoutMs(int ms) { m_accessTimeoutMs = ms; }
    [[nodiscard]] AccessGate *gate() const;

    // The settings as last read, or as the caller changed them for the next write.
    [[nodiscard]] Rs232cConfig &config() { return m_config; }
    [[nodiscard]] const Rs232cConfig &config() const { return m_config; }
    // The running copy's port of each connector, where it is reached.
    [[nodiscard]] quint16 runningPort(Connector connector) const;
    // Takes the connectors' ports from a settings block of the running copy.
    void takeRunningPorts(const MavixSetting &block);

    // Registers: the running copy, or the EEPROM copy when `eeprom`. A write stores config() and
    // the given connector's port, then reads the settings block back.
    [[nodiscard]] bool read(bool eeprom);
    [[nodiscard]] bool write(bool eeprom, Connector connector, quint16 port);
    // Only the running copy's settings block, for the connectors' ports; quiet when it succeeds.
    [[nodiscard]] bool readRunningPorts();

    // Data
    [[nodiscard]] bool isConnected(Connector connector) const;
    [[nodiscard]] bool connectTo(Connector connector);
    void disconnectFrom(Connector connector);
    [[nodiscard]] bool send(Connector connector, const QByteArray &bytes);
    // At most maxLength bytes (up to the receive cap when 0 or less); a time-out ends the
    // connection.
    [[nodiscard]] bool receive(Connector connector, qint64 maxLength, QByteArray *data);
    // Monitoring: every piece that arrives at the connector comes out of monitored() at once, with
    // no wait and no receive, until stopped or the connection ends (connectionChanged()). Starting
    // connects first when needed. Both connectors may be monitored at once.
    [[nodiscard]] bool startMonitor(Connector connector);
    void stopMonitor(Connector connector);
    [[nodiscard]] bool isMonitored(Connector connector) const;
    // Monitors and hands each piece that arrives to `sink` until the gate's wait is given up (true)
    // or the connection ends (false, reported). Quiet periods are no failure.
    [[nodiscard]] bool monitor(Connector connector, const std::function<void(QByteArray)> &sink);

    // What the last failed operation ran into, for exit codes.
    [[nodiscard]] SerialConnectorSession::Result lastResult() const { return m_lastResult; }
    [[nodiscard]] std::optional<int> lastAccessErrorCode() const { return m_lastAccessError; }

signals:
    void targetSettingChanged(MavixSetting setting);
    void connectionChanged();
    void monitored(Rs232c::Connector connector, QByteArray data);
    // The device ended a connection that was being monitored.
    void monitorEnded(Rs232c::Connector connector);

private:
    // A monitor's wait, renewed while the connection stays quiet.
    static constexpr int kMonitorWaitMs = 3600 * 1000;

    void takePorts(const MavixSetting &block, bool running);
    void writeSequence(quint32 offset, Connector connector, quint16 port);
    void reportAccessError(const WrenError &error);
    [[nodiscard]] bool reportDataResult(SerialConnectorSession::Result result,
                                        const QString &successMessage);
    [[nodiscard]] SerialConnectorSession *session(Connector connector) const
    {
        return m_sessions[size_t(connector)];
    }

    WrenAgent *m_agent;
    std::array<SerialConnectorSession *, Rs232c::kConnectorCount> m_sessions{};
    Rs232cConfig m_config;
    MavixSetting m_running;
    int m_accessTimeoutMs;
    int m_dataTimeoutMs;
    SerialConnectorSession::Result m_lastResult = SerialConnectorSession::Result::Done;
    std::optional<int> m_lastAccessError;
};
