#include "python/pythondevice.h"

#include "app/accessgate.h"
#include "app/hostlookup.h"
#include "app/report.h"
#include "app/startupoptions.h"
#include "python/pythongpib.h"
#include "python/pythonregisters.h"
#include "python/pythonruntime.h"
#include "python/pythonserial.h"
#include "settings/mavixsettingaccess.h"
#include "settings/mavixsettingfields.h"
#include "settings/registerrange.h"
#include "tcp/transferrunner.h"

#include <QCoreApplication>
#include <QHostAddress>

#include "python/pybind.h"

#include <algorithm>

namespace {

// The keys of set() and the Detail tab's fields they fill; keep_alive is a truth value. The MAC
// address has none: the write sequence never reaches it.
struct Key
{
    const char *name;
    QString MavixSettingFields::*field;
};
constexpr Key kKeys[] = {
    {"ip_address", &MavixSettingFields::ipAddress},
    {"tcp_data_port", &MavixSettingFields::tcpDataPort},
    {"udp_port", &MavixSettingFields::udpPort},
    {"tcp_command_port", &MavixSettingFields::tcpCommandPort},
    {"tcp_max_segment_size", &MavixSettingFields::tcpMaxSegmentSize},
    {"tcp_keep_alive_enabled", nullptr},
    {"tcp_keep_alive_buffer_not_empty_ms", &MavixSettingFields::tcpKeepAliveBufferNotEmptyMs},
    {"tcp_keep_alive_buffer_empty_ms", &MavixSettingFields::tcpKeepAliveBufferEmptyMs},
    {"tcp_timeout_connecting_ms", &MavixSettingFields::tcpTimeoutConnectingMs},
    {"tcp_timeout_disconnect_ms", &MavixSettingFields::tcpTimeoutDisconnectMs},
    {"tcp_reconnect_interval_ms", &MavixSettingFields::tcpReconnectIntervalMs},
    {"tcp_retransmission_timer_ms", &MavixSettingFields::tcpRetransmissionTimerMs},
};

[[noreturn]] void refuse(const QString &text)
{
    throw PythonFailure(PythonFailure::Kind::Refused, text);
}

// A host name becomes the address it resolves to; one that does not resolve is refused.
QString resolveHost(const QString &host)
{
    QString error;
    const QString address = lookUpHost(host, &error);
    if (!error.isEmpty())
        refuse(error);
    return address;
}

// The failure of a settings sequence: the failed access's, or refused input.
[[noreturn]] void failSequence(const MavixSettingAccess &access, const QString &fallback)
{
    const QString text = ReportSink::instance()->firstError(fallback);
    const std::optional<WrenError> error = access.lastError();
    if (!error)
        refuse(text);
    PythonFailure failure = PythonFailure::of(*error, QString());
    throw PythonFailure(failure.kind(), text);
}

} // namespace

PythonDevice::PythonDevice(const QString &target, int timeoutMs, bool expert)
    : m_timeoutMs(timeoutMs), m_expert(expert)
{
    PythonRuntime::ensureApplication();
    (void)ReportSink::instance();
    if (timeoutMs < 1)
        refuse(QCoreApplication::translate("PythonDevice",
                                           "timeout_ms must be a whole number from 1, not %1")
                   .arg(timeoutMs));
    m_thread = QThread::currentThread();
    m_mainThread = pybind11::module_::import("threading")
                       .attr("current_thread")()
                       .is(pybind11::module_::import("threading").attr("main_thread")());
    m_agent = std::make_unique<WrenAgent>();
    setTarget(target);
}

PythonDevice::~PythonDevice()
{
    m_gpib.reset();
    m_serial.reset();
    m_regs.reset();
    // The agent's socket belongs to the device's thread; from another one it is left to that
    // thread's event loop.
    if (QThread::currentThread() != m_thread)
        m_agent.release()->deleteLater();
}

// HOST[:UDP[:TCP]] as the window's -target: takes it; a part left out keeps the window's default.
// The General tab's checks decide, with its messages.
void PythonDevice::setTarget(const QString &target)
{
    const MavixSetting defaults;
    const TargetParts parts = splitTarget(target);
    ReportSink::instance()->clear();
    const QString ip = parts.host.isEmpty() ? defaults.ipAddress : resolveHost(parts.host);
    const QString udpPort =
        parts.udpPort.isEmpty() ? QString::number(defaults.udpPort) : parts.udpPort;
    const QString tcpPort =
        parts.tcpPort.isEmpty() ? QString::number(defaults.tcpDataPort) : parts.tcpPort;
    if (!MavixSetting::validateTarget(ip, tcpPort, udpPort, true))
        refuse(ReportSink::instance()->firstError(target));
    quint16 udp = 0;
    (void)MavixSetting::parsePort(udpPort, &udp);
    (void)MavixSetting::parsePort(tcpPort, &m_tcpPort);
    m_host = ip;
    m_agent->setTarget(QHostAddress(ip), udp);
}

QString PythonDevice::targetText() const
{
    const QString host =
        m_host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]").arg(m_host) : m_host;
    return QStringLiteral("%1:%2:%3").arg(host).arg(udpPort()).arg(m_tcpPort);
}

void PythonDevice::checkThread() const
{
    if (QThread::currentThread() != m_thread)
        throw std::runtime_error(
            "mavix.Device is used from another thread than the one that made it; make a Device "
            "in each thread that talks to the device");
}

QByteArray PythonDevice::read(quint32 address, int length)
{
    quint32 checkedLength = 0;
    QString error = RegisterRange::parseLength(QString::number(length), &checkedLength);
    if (error.isEmpty())
        error = RegisterRange::checkLastByte(address, checkedLength);
    if (!error.isEmpty())
        refuse(error);
    return run([&] {
        AccessGate::Hold hold(m_agent->gate());
        try {
            return m_agent->read(address, quint8(checkedLength), m_timeoutMs);
        } catch (const WrenError &failure) {
            throw PythonFailure::of(failure, RegisterRange::readTimeoutText());
        }
    });
}

void PythonDevice::write(quint32 address, const QByteArray &data)
{
    quint32 length = 0;
    QString error = RegisterRange::parseLength(QString::number(data.size()), &length);
    if (error.isEmpty())
        error = RegisterRange::checkWrite(address, length, m_expert);
    if (!error.isEmpty())
        refuse(error);
    run([&] {
        AccessGate::Hold hold(m_agent->gate());
        try {
            (void)m_agent->write(address, data, m_timeoutMs);
        } catch (const WrenError &failure) {
            throw PythonFailure::of(failure, RegisterRange::writeTimeoutText());
        }
    });
}

MavixSetting PythonDevice::settings(bool eeprom)
{
    return run([&] {
        AccessGate::Hold hold(m_agent->gate());
        MavixSettingAccess access(m_agent.get());
        access.setAccessTimeoutMs(m_timeoutMs);
        access.setEEPROMAccess(eeprom);
        const std::optional<QByteArray> image = access.readImage(access.imageBase());
        if (!image)
            failSequence(access, RegisterRange::readTimeoutText());
        MavixSetting setting;
        if (const std::optional<QString> problem = setting.decode(*image))
            throw PythonFailure(PythonFailure::Kind::BadReply, *problem);
        return setting;
    });
}

QStringList PythonDevice::settingKeys()
{
    QStringList names;
    for (const Key &key : kKeys)
        names << QLatin1String(key.name);
    return names;
}

// The fields start from the device's values: a key left out keeps the device's value. The address
// and ports pass the General tab's checks, then every field the Detail tab's, with their messages.
MavixSetting PythonDevice::set(bool eeprom, bool yes,
                               const QList<std::pair<QString, QString>> &fields)
{
    for (const auto &[name, value] : fields)
        if (!settingKeys().contains(name))
            refuse(QCoreApplication::translate("PythonDevice",
                                               "Unknown setting %1; the settings are %2")
                       .arg(name, settingKeys().join(QStringLiteral(", "))));
    const MavixSetting record = run([&] {
        // The whole sequence is one device operation, as in the General tab.
        AccessGate::Hold hold(m_agent->gate());
        MavixSettingAccess access(m_agent.get());
        access.setAccessTimeoutMs(m_timeoutMs);
        access.setEEPROMAccess(eeprom);
        // The window asks, with No as the default; a script says yes beforehand or is refused.
        access.setUdpPortChangeQuestion([yes] {
            if (!yes)
                reportError(QCoreApplication::translate(
                    "GeneralTab",
                    "It is recommended to enable EEPROM Access and rewrite UDP port. If "
                    "you want to continue, please select yes as it is."));
            return yes;
        });
        const std::optional<QByteArray> image = access.readImage(access.imageBase());
        if (!image)
            failSequence(access, RegisterRange::readTimeoutText());
        MavixSetting device;
        if (const std::optional<QString> problem = device.decode(*image))
            throw PythonFailure(PythonFailure::Kind::BadReply, *problem);
        MavixSettingFields typed = MavixSettingFields::from(device);
        for (const auto &field : fields) {
            const Key *key = std::find_if(std::begin(kKeys), std::end(kKeys), [&](const Key &k) {
                return field.first == QLatin1String(k.name);
            });
            if (key->field)
                typed.*(key->field) = field.second;
            else
                typed.tcpKeepAliveEnabled = field.second == QLatin1String("1");
        }
        std::optional<MavixSetting> wanted;
        if (MavixSetting::validateWriteFields(typed.ipAddress, typed.tcpDataPort, typed.udpPort,
                                              true))
            wanted = typed.toRecord(device);
        if (!wanted)
            refuse(ReportSink::instance()->firstError());
        if (!access.write(*wanted, *image))
            failSequence(access, RegisterRange::writeTimeoutText());
        return *wanted;
    });
    // After a write of the running copy the device answers at its new address and ports.
    if (!eeprom) {
        m_agent->setTarget(QHostAddress(m_host), record.udpPort);
        m_tcpPort = record.tcpDataPort;
    }
    return record;
}

TransferResult PythonDevice::receive(const QString &path, qint64 bytes, qint64 ms)
{
    const TransferResult result = transfer(TransferRunner::Direction::Receive, path, bytes, ms);
    if (bytes > 0 && result.bytes < bytes)
        throw PythonFailure(
            PythonFailure::Kind::ConnectionFailed,
            QCoreApplication::translate("TransferCommand", "Only %1 of %2 bytes received")
                .arg(result.bytes)
                .arg(bytes));
    return result;
}

TransferResult PythonDevice::send(const QString &path)
{
    return transfer(TransferRunner::Direction::Send, path, -1, -1);
}

TransferResult PythonDevice::transfer(TransferRunner::Direction direction, const QString &path,
                                      qint64 bytes, qint64 ms)
{
    checkThread();
    ReportSink::instance()->clear();
    TransferRunner runner(direction, m_host, m_tcpPort, m_timeoutMs);
    runner.setLimits(bytes, ms);
    if (!runner.prepare(path))
        refuse(ReportSink::instance()->firstError(path));
    const TransferResult result =
        run([&] { return runner.run(); }, [&runner] { runner.interrupt(); });
    if (ReportSink::instance()->hasErrors())
        throw PythonFailure(PythonFailure::Kind::ConnectionFailed,
                            ReportSink::instance()->firstError());
    return result;
}

PythonGpib &PythonDevice::gpib()
{
    checkThread();
    if (!m_gpib)
        m_gpib = std::make_unique<PythonGpib>(this);
    return *m_gpib;
}

PythonSerial &PythonDevice::serial()
{
    checkThread();
    if (!m_serial)
        m_serial = std::make_unique<PythonSerial>(this);
    return *m_serial;
}

PythonRegisters &PythonDevice::regs()
{
    checkThread();
    if (!m_regs)
        m_regs = std::make_unique<PythonRegisters>(this);
    return *m_regs;
}
