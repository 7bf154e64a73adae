#include "python/pythonserial.h"

#include "modules/serialbridge.h"
#include "python/pythondevice.h"

#include <QCoreApplication>

namespace {

SerialBridge::Connector connectorOf(const QString &name)
{
    if (name == QLatin1String("dte"))
        return SerialBridge::Connector::Dte;
    if (name == QLatin1String("dce"))
        return SerialBridge::Connector::Dce;
    throw PythonFailure(
        PythonFailure::Kind::Refused,
        QCoreApplication::translate("PythonSerial", "The connector is dte or dce, not %1")
            .arg(name));
}

} // namespace

PythonSerial::PythonSerial(PythonDevice *device)
    : m_device(device), m_bridge(std::make_unique<SerialBridge>(device->agent()))
{
    m_bridge->setTimeouts(device->timeoutMs(), device->timeoutMs());
}

PythonSerial::~PythonSerial() = default;

void PythonSerial::fail() const
{
    const QString text = ReportSink::instance()->firstError(
        QCoreApplication::translate("PythonSerial", "The ZEL-RS232C operation failed"));
    if (const std::optional<int> code = m_bridge->lastAccessErrorCode()) {
        const PythonFailure failure = PythonFailure::of(WrenError{quint32(*code), {}}, text);
        throw PythonFailure(failure.kind(), text);
    }
    throw PythonFailure(m_bridge->lastResult() == SerialConnectorSession::Result::TimedOut ||
                                m_bridge->lastResult() == SerialConnectorSession::Result::Aborted
                            ? PythonFailure::Kind::Timeout
                            : PythonFailure::Kind::ConnectionFailed,
                        text);
}

// Inside a run(): the connector's port comes from the running copy of the settings.
void PythonSerial::connectTo(int connector)
{
    const auto which = SerialBridge::Connector(connector);
    if (m_bridge->isConnected(which))
        return;
    if (!m_bridge->readRunningPorts() || !m_bridge->connectTo(which))
        fail();
}

void PythonSerial::send(const QString &connector, const QByteArray &data)
{
    const SerialBridge::Connector which = connectorOf(connector);
    m_device->run([&] {
        connectTo(int(which));
        if (!m_bridge->send(which, data))
            fail();
    });
}

QByteArray PythonSerial::receive(const QString &connector, qint64 maxLength)
{
    const SerialBridge::Connector which = connectorOf(connector);
    return m_device->run([&] {
        connectTo(int(which));
        QByteArray data;
        if (!m_bridge->receive(which, maxLength, &data))
            fail();
        return data;
    });
}

void PythonSerial::disconnect()
{
    m_device->checkThread();
    for (const SerialBridge::Connector which :
         {SerialBridge::Connector::Dte, SerialBridge::Connector::Dce})
        if (m_bridge->isConnected(which))
            m_bridge->disconnectFrom(which);
}
