// The device the program talks to: its host (an address, or text that the target checks refused),
// its UDP register port and its TCP data port. One object is owned at the top (the window's
// context, or the command-line tool) and handed to whoever talks to the device; the register agent
// follows it, and a transfer run takes a copy of it when it starts.
#pragma once

#include <QHostAddress>
#include <QObject>
#include <QString>

class DeviceTarget : public QObject
{
    Q_OBJECT

public:
    // The factory address and ports of a device.
    static constexpr quint16 kDefaultUdpPort = 4660;
    static constexpr quint16 kDefaultTcpPort = 24;
    [[nodiscard]] static QString defaultHost() { return QStringLiteral("192.168.10.16"); }

    explicit DeviceTarget(QObject *parent = nullptr);

    [[nodiscard]] QString host() const { return m_host; }
    [[nodiscard]] QHostAddress address() const { return QHostAddress(m_host); }
    [[nodiscard]] quint16 udpPort() const { return m_udpPort; }
    [[nodiscard]] quint16 tcpPort() const { return m_tcpPort; }

    // Announces changed() when anything differs. Changes nothing while pinned.
    void set(const QString &host, quint16 udpPort, quint16 tcpPort);
    void setHost(const QString &host) { set(host, m_udpPort, m_tcpPort); }

    // Keeps the target where it is for the life of the object (when `active`): while the EEPROM
    // copy is rewritten the device goes on answering at its address, whatever record is announced
    // meanwhile, and the permission release that ends the write must reach it there.
    class Pin
    {
    public:
        Pin(DeviceTarget *target, bool active);
        ~Pin();
        Pin(const Pin &) = delete;
        Pin &operator=(const Pin &) = delete;

    private:
        DeviceTarget *m_target = nullptr;
    };
    [[nodiscard]] bool isPinned() const { return m_pinned; }

signals:
    void changed();

private:
    QString m_host = defaultHost();
    quint16 m_udpPort = kDefaultUdpPort;
    quint16 m_tcpPort = kDefaultTcpPort;
    bool m_pinned = false;
};
