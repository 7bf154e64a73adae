#include "settings/mavixsetting.h"

#include "app/report.h"
#include "app/validators.h"

#include <QtEndian>

namespace {

// Offsets inside the 64-byte settings image.
constexpr int kFlagsOffset = 16;
constexpr quint8 kKeepAliveMask = 0x04;
constexpr int kMacOffset = 18;
constexpr int kIpOffset = 24;
constexpr int kTcpDataPortOffset = 28;
constexpr int kTcpCommandPortOffset = 30;
constexpr int kMaxSegmentSizeOffset = 32;
constexpr int kUdpPortOffset = 34;
constexpr int kKeepAliveBufferNotEmptyOffset = 36;
constexpr int kKeepAliveBufferEmptyOffset = 38;
constexpr int kTimeoutConnectingOffset = 40;
constexpr int kTimeoutDisconnectOffset = 42;
constexpr int kReconnectIntervalOffset = 44;
constexpr int kRetransmissionTimerOffset = 46;

quint16 readU16(const QByteArray &image, int offset)
{
    return qFromBigEndian<quint16>(image.constData() + offset);
}

void writeU16(QByteArray &image, int offset, quint16 value)
{
    qToBigEndian<quint16>(value, image.data() + offset);
}

// Queued connections by signature ("targetSettingChanged(MavixSetting)") need the name registered
// before the first emission, whoever emits first.
[[maybe_unused]] const bool g_metaTypeRegistered = [] {
    MavixSetting::registerMetaType();
    return true;
}();

} // namespace

std::optional<QString> MavixSetting::decode(const QByteArray &image)
{
    if (image.size() < kImageSize)
        return tr("Mavix Setting buffer is too small");
    const auto byteAt = [&image](int offset) { return quint8(image.at(offset)); };
    const auto octet = [&byteAt](int offset) { return uint(byteAt(offset)); };

    ipAddress = QStringLiteral("%1.%2.%3.%4")
                    .arg(octet(kIpOffset))
                    .arg(octet(kIpOffset + 1))
                    .arg(octet(kIpOffset + 2))
                    .arg(octet(kIpOffset + 3));
    tcpDataPort = readU16(image, kTcpDataPortOffset);
    udpPort = readU16(image, kUdpPortOffset);
    for (int i = 0; i < int(macAddress.size()); ++i)
        macAddress[size_t(i)] = byteAt(kMacOffset + i);
    tcpCommandPort = readU16(image, kTcpCommandPortOffset);
    tcpMaxSegmentSize = readU16(image, kMaxSegmentSizeOffset);
    tcpKeepAliveBufferNotEmptyMs = readU16(image, kKeepAliveBufferNotEmptyOffset);
    tcpKeepAliveBufferEmptyMs = readU16(image, kKeepAliveBufferEmptyOffset);
    tcpTimeoutConnectingMs = readU16(image, kTimeoutConnectingOffset);
    tcpTimeoutDisconnect256Ms = readU16(image, kTimeoutDisconnectOffset);
    tcpReconnectIntervalMs = readU16(image, kReconnectIntervalOffset);
    tcpRetransmissionTimerMs = readU16(image, kRetransmissionTimerOffset);
    tcpKeepAliveEnabled = (byteAt(kFlagsOffset) & kKeepAliveMask) != 0;
    return std::nullopt;
}

QByteArray MavixSetting::encode(const QByteArray &imageReadBefore) const
{
    QByteArray image = imageReadBefore;
    if (image.size() < kImageSize)
        image.append(QByteArray(kImageSize - image.size(), '\0'));

    quint8 flags = quint8(image.at(kFlagsOffset));
    flags = tcpKeepAliveEnabled ? quint8(flags | kKeepAliveMask) : quint8(flags & ~kKeepAliveMask);
    image[kFlagsOffset] = char(flags);

    // Only an address that reads back as typed is written; anything else leaves the bytes as read.
    if (const std::optional<quint32> ipv4 = parseDeviceAddress(ipAddress))
        qToBigEndian<quint32>(*ipv4, image.data() + kIpOffset);
    writeU16(image, kTcpDataPortOffset, tcpDataPort);
    writeU16(image, kTcpCommandPortOffset, tcpCommandPort);
    writeU16(image, kMaxSegmentSizeOffset, tcpMaxSegmentSize);
    writeU16(image, kUdpPortOffset, udpPort);
    writeU16(image, kKeepAliveBufferNotEmptyOffset, tcpKeepAliveBufferNotEmptyMs);
    writeU16(image, kKeepAliveBufferEmptyOffset, tcpKeepAliveBufferEmptyMs);
    writeU16(image, kTimeoutConnectingOffset, tcpTimeoutConnectingMs);
    writeU16(image, kTimeoutDisconnectOffset, tcpTimeoutDisconnect256Ms);
    writeU16(image, kReconnectIntervalOffset, tcpReconnectIntervalMs);
    writeU16(image, kRetransmissionTimerOffset, tcpRetransmissionTimerMs);
    // The MAC bytes are left as read: the device's MAC address is never rewritten from here.
    return image;
}

QString MavixSetting::macAddressText() const
{
    const QByteArray bytes(reinterpret_cast<const char *>(macAddress.data()),
                           qsizetype(macAddress.size()));
    return QString::fromLatin1(bytes.toHex(':').toUpper());
}

QString MavixSetting::textReport() const
{
    const QString line = QStringLiteral("%1 : %2 \r\n");
    const QString timeLine = QStringLiteral("%1 : %2 msec\r\n");
    const QString lastLine = QStringLiteral("%1 : %2 msec");

    QString report;
    report += line.arg(tr("MAC Address"), macAddressText());
    report += line.arg(tr("IP Address"), ipAddress);
    report += line.arg(tr("TCP Data Port")).arg(tcpDataPort);
    report += line.arg(tr("TCP Command Port")).arg(tcpCommandPort);
    report += line.arg(tr("UDP Port")).arg(udpPort);
    report += line.arg(tr("TCP Max Segment Size")).arg(tcpMaxSegmentSize);
    report +=
        line.arg(tr("TCP Keep Alive Enabled"), tcpKeepAliveEnabled ? tr("enable") : tr("disable"));
    report +=
        timeLine.arg(tr("TCP Keep Alive(buffer not empty)")).arg(tcpKeepAliveBufferNotEmptyMs);
    report += timeLine.arg(tr("TCP Keep Alive(buffer empty)")).arg(tcpKeepAliveBufferEmptyMs);
    report += timeLine.arg(tr("TCP Timeout(Connecting)")).arg(tcpTimeoutConnectingMs);
    report += timeLine.arg(tr("TCP Timeout(Disconnect)")).arg(tcpTimeoutDisconnectMs());
    report += timeLine.arg(tr("TCP Re-Connect Interval")).arg(tcpReconnectIntervalMs);
    report += lastLine.arg(tr("TCP Re-Transmition Timer")).arg(tcpRetransmissionTimerMs);
    return report;
}

void MavixSetting::registerMetaType()
{
    qRegisterMetaType<MavixSetting>("MavixSetting");
}

namespace {

// The five checks of a typed address and two ports, run in order; the address rule is given.
bool validateFields(AddressProblem addressProblem, const QString &tcpPort, const QString &udpPort,
                    bool reportErrors)
{
    bool valid = true;
    const auto check = [&valid, reportErrors](bool passed, const QString &message) {
        if (passed)
            return;
        valid = false;
        if (reportErrors)
            reportError(message);
    };
    check(addressProblem != AddressProblem::Malformed &&
              addressProblem != AddressProblem::Multicast,
          MavixSetting::tr("IP address is invalid"));
    check(addressProblem != AddressProblem::Unspecified, MavixSetting::tr("0.0.0.0 is invalid"));
    check(addressProblem != AddressProblem::Broadcast,
          MavixSetting::tr("255.255.255.255 is invalid"));
    check(parsePort(tcpPort).has_value(), MavixSetting::tr("TCP Port number must be 0 to 65535"));
    check(parsePort(udpPort).has_value(), MavixSetting::tr("UDP Port number must be 0 to 65535"));
    return valid;
}

template <typename T> bool store(const std::optional<T> &parsed, T *value)
{
    if (parsed && value)
        *value = *parsed;
    return parsed.has_value();
}

} // namespace

bool MavixSetting::validateTarget(const QString &ip, const QString &tcpPort, const QString &udpPort,
                                  bool reportErrors)
{
    return validateFields(checkTargetAddress(ip), tcpPort, udpPort, reportErrors);
}

bool MavixSetting::validateWriteFields(const QString &ip, const QString &tcpPort,
                                       const QString &udpPort, bool reportErrors)
{
    return validateFields(checkDeviceAddress(ip), tcpPort, udpPort, reportErrors);
}

bool MavixSetting::parsePort(const QString &text, quint16 *value)
{
    return store(::parsePort(text), value);
}

bool MavixSetting::parseByte(const QString &text, quint8 *value)
{
    return store(::parseByte(text), value);
}

bool MavixSetting::parseHex32(const QString &text, quint32 *value)
{
    return store(::parseHex32(text), value);
}
