#include "python/pythongpib.h"

#include "modules/gpibbridge.h"
#include "python/pythondevice.h"

#include <QCoreApplication>

namespace {

// The delimiter names, in the order of the tab's choices.
const QStringList &delimiterNames()
{
    static const QStringList names{QStringLiteral("none"), QStringLiteral("cr"),
                                   QStringLiteral("lf"), QStringLiteral("crlf")};
    return names;
}

[[noreturn]] void refuse(const QString &fallback)
{
    throw PythonFailure(PythonFailure::Kind::Refused, ReportSink::instance()->firstError(fallback));
}

} // namespace

PythonGpib::PythonGpib(PythonDevice *device)
    : m_device(device), m_bridge(std::make_unique<GpibBridge>(device->agent()))
{
    m_bridge->setWaitTimeoutMs(device->timeoutMs());
}

PythonGpib::~PythonGpib() = default;

// The failure of the last operation, with the tab's message.
void PythonGpib::fail() const
{
    const QString text = ReportSink::instance()->firstError(
        QCoreApplication::translate("PythonGpib", "The GPIB operation failed"));
    if (const std::optional<int> code = m_bridge->lastAccessErrorCode()) {
        const PythonFailure failure = PythonFailure::of(WrenError{quint32(*code), {}}, text);
        throw PythonFailure(failure.kind(), text);
    }
    switch (m_bridge->lastFailure()) {
    case GpibBus::Failure::Timeout:
    case GpibBus::Failure::Aborted: // Ctrl+C: KeyboardInterrupt takes its place
        throw PythonFailure(PythonFailure::Kind::Timeout, text);
    case GpibBus::Failure::ErrorPacket:
        throw PythonFailure(PythonFailure::Kind::BusError, text);
    case GpibBus::Failure::BadReply:
        throw PythonFailure(PythonFailure::Kind::BadReply, text);
    case GpibBus::Failure::None:
    case GpibBus::Failure::Other:
        break;
    }
    throw PythonFailure(PythonFailure::Kind::ConnectionFailed, text);
}

GpibModuleSetting PythonGpib::settings()
{
    return m_device->run([&] {
        const std::optional<GpibModuleSetting> setting = m_bridge->readSetting();
        if (!setting)
            fail();
        return *setting;
    });
}

GpibModuleSetting PythonGpib::set(const QString &controller, const QString &timeoutMs)
{
    return m_device->run([&] {
        const std::optional<GpibModuleSetting> device = m_bridge->readSetting();
        if (!device)
            fail();
        const std::optional<GpibModuleSetting> setting = GpibBridge::parseSetting(
            controller.isNull() ? QString::number(device->controllerAddress) : controller,
            timeoutMs.isNull() ? QString::number(device->timeoutMs()) : timeoutMs);
        if (!setting)
            refuse(controller + QLatin1Char(' ') + timeoutMs);
        if (!m_bridge->writeSetting(*setting))
            fail();
        return *setting;
    });
}

QByteArray PythonGpib::delimiterBytes(const QString &name) const
{
    const int index = int(delimiterNames().indexOf(name));
    if (index < 0)
        throw PythonFailure(PythonFailure::Kind::Refused,
                            QCoreApplication::translate("PythonGpib",
                                                        "delimiter must be crlf, cr, lf or "
                                                        "none, not %1")
                                .arg(name));
    return GpibBus::delimiterBytes(index);
}

// Inside a run(): connects when the module is not connected.
void PythonGpib::connectBus()
{
    if (!m_bridge->isConnected() && !m_bridge->connectTo(m_device->host(), m_device->tcpPort()))
        fail();
}

void PythonGpib::send(int address, const QByteArray &message, const QString &delimiter)
{
    const QByteArray end = delimiterBytes(delimiter);
    if (message.isEmpty())
        throw PythonFailure(PythonFailure::Kind::Refused,
                            QCoreApplication::translate("ZELGPIBTab", "GPIB command is empty"));
    m_device->run([&] {
        // The module's own address, as the tab shows it after a read.
        const std::optional<GpibModuleSetting> setting = m_bridge->readSetting();
        if (!setting)
            fail();
        const std::optional<GpibBridge::Addresses> addresses = GpibBridge::parseAddresses(
            QString::number(setting->controllerAddress), QString::number(address));
        if (!addresses)
            refuse(QString::number(address));
        connectBus();
        if (!m_bridge->send(*addresses, message + end))
            fail();
    });
}

QByteArray PythonGpib::receive(int address, const QString &delimiter, qint64 maxLength)
{
    const QByteArray end = delimiterBytes(delimiter);
    return m_device->run([&] {
        const std::optional<GpibModuleSetting> setting = m_bridge->readSetting();
        if (!setting)
            fail();
        const std::optional<GpibBridge::Addresses> addresses = GpibBridge::parseAddresses(
            QString::number(setting->controllerAddress), QString::number(address));
        if (!addresses)
            refuse(QString::number(address));
        connectBus();
        QByteArray data;
        if (!m_bridge->receive(*addresses, end, maxLength, &data))
            fail();
        return data;
    });
}

QByteArray PythonGpib::query(int address, const QByteArray &message, const QString &delimiter,
                             qint64 maxLength)
{
    send(address, message, delimiter);
    return receive(address, delimiter, maxLength);
}

void PythonGpib::clear()
{
    m_device->run([&] {
        connectBus();
        if (!m_bridge->interfaceClear())
            fail();
    });
}

void PythonGpib::disconnect()
{
    m_device->checkThread();
    if (m_bridge->isConnected())
        m_bridge->disconnectFromModule();
}
