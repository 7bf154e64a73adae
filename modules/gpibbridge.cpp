#include "modules/gpibbridge.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "modules/receivecap.h"
#include "settings/eepromwritesession.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

#include <QTcpSocket>

GpibBridge::GpibBridge(WrenAgent *agent, QObject *parent)
    : QObject(parent), m_agent(agent), m_socket(new QTcpSocket(this)),
      m_bus(new GpibBus(m_socket, agent->gate(), this))
{
}

GpibBridge::~GpibBridge()
{
    if (m_socket->state() != QAbstractSocket::UnconnectedState)
        m_socket->abort();
}

void GpibBridge::setWaitTimeoutMs(int ms)
{
    m_waitTimeoutMs = ms;
    m_bus->setWaitTimeoutMs(ms);
}

AccessGate *GpibBridge::gate() const
{
    return m_agent->gate();
}

std::optional<GpibBridge::Addresses> GpibBridge::parseAddresses(const QString &controller,
                                                                const QString &target)
{
    const std::optional<quint32> targetAddress =
        GpibModuleSetting::parseDecimal(target, GpibUnit::kMaxAddress);
    if (!targetAddress) {
        reportError(tr("Target GPIB address must be 0 to 30"));
        return std::nullopt;
    }
    const std::optional<quint32> controllerAddress =
        GpibModuleSetting::parseDecimal(controller, GpibUnit::kMaxAddress);
    if (!controllerAddress) {
        reportError(tr("Controller GPIB address must be 0 to 30"));
        return std::nullopt;
    }
    return Addresses{*controllerAddress, *targetAddress};
}

std::optional<GpibModuleSetting> GpibBridge::parseSetting(const QString &controller,
                                                          const QString &timeoutMs)
{
    const std::optional<quint32> address =
        GpibModuleSetting::parseDecimal(controller, GpibUnit::kMaxAddress);
    if (!address) {
        reportError(tr("Controller GPIB address must be 0 to 30"));
        return std::nullopt;
    }
    const std::optional<quint32> timeout =
        GpibModuleSetting::parseDecimal(timeoutMs, GpibModuleSetting::kMaxTimeoutMs);
    if (!timeout) {
        reportError(tr("Timeout must be 0 to 655350"));
        return std::nullopt;
    }
    GpibModuleSetting setting;
    setting.controllerAddress = quint8(*address);
    setting.setTimeoutMs(*timeout);
    return setting;
}

// ---- Module settings ----

std::optional<GpibModuleSetting> GpibBridge::readSetting()
{
    AccessGate::Hold hold(gate());
    m_lastAccessError.reset();
    QByteArray block;
    try {
        block =
            m_agent->read(GpibModuleSetting::kAddress, GpibModuleSetting::kSize, m_waitTimeoutMs);
    } catch (const WrenError &error) {
        m_lastAccessError = int(error.code);
        reportWrenError(error, tr("UDP read is timeout"));
        return std::nullopt;
    }
    std::optional<GpibModuleSetting> setting = GpibModuleSetting::decode(block);
    if (!setting) {
        m_lastAccessError = int(WrenError::BadReply);
        reportError(tr("Read ZEL-GPIB setting is invalid"));
        return std::nullopt;
    }
    reportResult(tr("Reading ZEL-GPIB setting successed"));
    return setting;
}

bool GpibBridge::writeRegisters(quint32 address, const QByteArray &bytes,
                                const QString &timeoutMessage)
{
    try {
        (void)m_agent->write(address, bytes, m_waitTimeoutMs);
        return true;
    } catch (const WrenError &error) {
        m_lastAccessError = int(error.code);
        reportWrenError(error, timeoutMessage);
        return false;
    }
}

// The module takes its settings only with the EEPROM write permission, whatever the General tab's
// EEPROM Access says.
bool GpibBridge::writeSetting(const GpibModuleSetting &setting)
{
    AccessGate::Hold hold(gate());
    m_lastAccessError.reset();
    EepromWriteSession session(m_agent, m_waitTimeoutMs);
    const bool written = session.run([&] {
        return writeRegisters(GpibModuleSetting::kAddress, setting.encode(),
                              tr("UDP write is timeout"));
    });
    if (!written) {
        if (session.lastError() && !m_lastAccessError)
            m_lastAccessError = int(session.lastError()->code);
        return false;
    }
    reportResult(tr("Writing ZEL-GPIB setting successed"));
    return true;
}

// ---- Connection ----

bool GpibBridge::isConnected() const
{
    return m_socket->state() == QAbstractSocket::ConnectedState;
}

bool GpibBridge::connectTo(const QString &host, quint16 port)
{
    AccessGate::Hold hold(gate());
    m_lastFailure = GpibBus::Failure::None;
    m_socket->abort();
    m_bus->resetBusState();
    m_socket->connectToHost(host, port, QIODevice::ReadWrite, QAbstractSocket::AnyIPProtocol);
    // A refused connection ends at once; only a silent one takes the whole time-out.
    (void)gate()->waitFor(m_socket, &QTcpSocket::stateChanged, m_waitTimeoutMs, [this] {
        const QAbstractSocket::SocketState state = m_socket->state();
        return state == QAbstractSocket::ConnectedState ||
               state == QAbstractSocket::UnconnectedState;
    });
    if (!isConnected()) {
        m_socket->abort();
        m_lastFailure = GpibBus::Failure::Other;
        reportError(tr("Fail to connect to device"));
        return false;
    }
    reportResult(tr("ZEL-GPIB connect successed"));
    emit connectionChanged(true);
    return true;
}

void GpibBridge::disconnectFromModule()
{
    AccessGate::Hold hold(gate());
    m_socket->disconnectFromHost();
    if (m_socket->state() == QAbstractSocket::ConnectingState)
        (void)gate()->waitFor(m_socket, &QTcpSocket::disconnected, m_waitTimeoutMs);
    m_socket->close();
    m_bus->resetBusState();
    reportResult(tr("ZEL-GPIB disconnect successed"));
    emit connectionChanged(false);
}

// ---- Transactions ----

bool GpibBridge::send(const Addresses &addresses, const QByteArray &message)
{
    AccessGate::Hold hold(gate());
    return finish(m_bus->send(addresses.controller, addresses.target, message),
                  tr("GPIB sending successed"));
}

bool GpibBridge::receive(const Addresses &addresses, const QByteArray &delimiter, qint64 maxLength,
                         QByteArray *data)
{
    AccessGate::Hold hold(gate());
    const GpibBus::Failure failure =
        m_bus->receive(addresses.controller, addresses.target, delimiter, maxLength, data);
    if (failure == GpibBus::Failure::None && maxLength <= 0 &&
        data->size() >= ModuleLimits::kReceiveCapBytes)
        reportResult(
            tr("Receiving stopped at %1 bytes; the rest stays with the talker").arg(data->size()));
    return finish(failure, tr("GPIB receiving successed"));
}

bool GpibBridge::interfaceClear()
{
    AccessGate::Hold hold(gate());
    return finish(m_bus->interfaceClear(), tr("GPIB Interface Clear successed"));
}

bool GpibBridge::query(const Addresses &addresses, const QByteArray &message,
                       const QByteArray &delimiter, qint64 maxLength, QByteArray *data)
{
    AccessGate::Hold hold(gate());
    return send(addresses, message) && receive(addresses, delimiter, maxLength, data);
}

bool GpibBridge::finish(GpibBus::Failure failure, const QString &successMessage)
{
    m_lastFailure = failure;
    switch (failure) {
    case GpibBus::Failure::None:
        reportResult(successMessage);
        return true;
    case GpibBus::Failure::Timeout:
        reportError(tr("GPIB timeout"));
        break;
    case GpibBus::Failure::ErrorPacket:
        reportError(tr("GPIB error packet"));
        reportError(tr("GPIB undefined error"));
        break;
    case GpibBus::Failure::BadReply:
        reportError(tr("GPIB reply does not belong to the request"));
        break;
    case GpibBus::Failure::Other:
        reportError(tr("GPIB undefined error"));
        break;
    case GpibBus::Failure::Aborted: // the user gave up the wait (Esc), as in the register tabs
        reportWrenError(WrenError{WrenError::Timeout, givenUpText()}, tr("GPIB timeout"));
        break;
    }
    disconnectFromModule(); // the module must be connected again
    return false;
}
