#include "app/devicetarget.h"

DeviceTarget::DeviceTarget(QObject *parent) : QObject(parent) {}

void DeviceTarget::set(const QString &host, quint16 udpPort, quint16 tcpPort)
{
    if (host == m_host && udpPort == m_udpPort && tcpPort == m_tcpPort)
        return;
    m_host = host;
    m_udpPort = udpPort;
    m_tcpPort = tcpPort;
    emit changed();
}
