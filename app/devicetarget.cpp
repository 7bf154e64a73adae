#include "app/devicetarget.h"

DeviceTarget::DeviceTarget(QObject *parent) : QObject(parent) {}

void DeviceTarget::set(const QString &host, quint16 udpPort, quint16 tcpPort)
{
    if (m_pinned || (host == m_host && udpPort == m_udpPort && tcpPort == m_tcpPort))
        return;
    m_host = host;
    m_udpPort = udpPort;
    m_tcpPort = tcpPort;
    emit changed();
}

DeviceTarget::Pin::Pin(DeviceTarget *target, bool active)
{
    if (!active || !target || target->m_pinned)
        return;
    m_target = target;
    m_target->m_pinned = true;
}

DeviceTarget::Pin::~Pin()
{
    if (m_target)
        m_target->m_pinned = false;
}
