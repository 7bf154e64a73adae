// The device's network settings, decoded from (and encoded into) its 64-byte settings image.
#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QMetaType>
#include <QString>

#include <array>
#include <optional>

class MavixSetting
{
    Q_DECLARE_TR_FUNCTIONS(MavixSetting)

public:
    static constexpr int kImageSize = 64;
    static constexpr quint32 kRunningBase = 0xFFFFFF00;
    static constexpr quint32 kEepromBase = 0xFFFFFC00;
    static constexpr quint32 kEepromPermission = 0xFFFFFCFF;

    // Image layout. decode() takes the fields from a settings image, or gives the reason why the
    // image cannot be used (the record is left as it was).
    [[nodiscard]] std::optional<QString> decode(const QByteArray &image);
    [[nodiscard]] QByteArray encode(const QByteArray &imageReadBefore) const;

    // Multi-line report shown after a read (CR LF line ends).
    [[nodiscard]] QString textReport() const;

    // Presentation helpers shared by the report and the detailed settings form.
    [[nodiscard]] QString macAddressText() const; // "02:00:C0:A8:00:10"
    [[nodiscard]] quint32 tcpTimeoutDisconnectMs() const
    {
        return quint32(tcpTimeoutDisconnect256Ms) << 8;
    }

    // Registers the type for queued connections by its name "MavixSetting"; safe to call often.
    static void registerMetaType();

    // The five checks of a typed target (IP address, TCP data port, UDP port), all run in order.
    // Each failure is reported as an error only when reportErrors is true. A target may be an IPv6
    // address; an address written into the image must be a dotted IPv4 one.
    [[nodiscard]] static bool validateTarget(const QString &ip, const QString &tcpPort,
                                             const QString &udpPort, bool reportErrors);
    [[nodiscard]] static bool validateWriteFields(const QString &ip, const QString &tcpPort,
                                                  const QString &udpPort, bool reportErrors);

    // The rules of app/validators.h in the form the tabs call them: false when the text is not
    // acceptable; the value is stored only when it is (the pointer may be null).
    static bool parsePort(const QString &text, quint16 *value);
    static bool parseByte(const QString &text, quint8 *value);
    static bool parseHex32(const QString &text, quint32 *value);

    // Fields, with the factory defaults.
    QString ipAddress = QStringLiteral("192.168.10.16");
    quint16 udpPort = 4660;
    quint16 tcpDataPort = 24;
    std::array<quint8, 6> macAddress{{0x02, 0x00, 0xC0, 0xA8, 0x00, 0x10}};
    quint16 tcpCommandPort = 23;
    quint16 tcpMaxSegmentSize = 1460;
    quint16 tcpKeepAliveBufferNotEmptyMs = 1000;
    quint16 tcpKeepAliveBufferEmptyMs = 60000;
    quint16 tcpTimeoutConnectingMs = 5000;
    quint16 tcpTimeoutDisconnect256Ms = 11250; // units of 256 ms
    quint16 tcpReconnectIntervalMs = 500;
    quint16 tcpRetransmissionTimerMs = 500;
    bool tcpKeepAliveEnabled = false;
};

Q_DECLARE_METATYPE(MavixSetting)
