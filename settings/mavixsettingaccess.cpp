#include "settings/mavixsettingaccess.h"

#include "app/devicetarget.h"
#include "app/report.h"
#include "settings/eepromwritesession.h"
#include "wren/wrenagent.h"
#include "wren/wrenreport.h"

#include <QCoreApplication>

namespace {

// The image is written in two pieces that leave out bytes 17..23 (the MAC address).
constexpr int kFirstPieceSize = 17;
constexpr int kSecondPieceOffset = 0x18;

} // namespace

MavixSettingAccess::MavixSettingAccess(WrenAgent *agent, QObject *parent)
    : QObject(parent), m_agent(agent), m_accessTimeoutMs(WrenAgent::kAccessTimeoutMs)
{
}

quint32 MavixSettingAccess::imageBase() const
{
    return m_eeprom ? MavixSetting::kEepromBase : MavixSetting::kRunningBase;
}

// The messages are the General tab's, under its translation context.
void MavixSettingAccess::fail(const WrenError &error, const QString &timeoutMessage)
{
    m_lastError = error;
    reportWrenError(error, timeoutMessage);
    emit failed();
}

std::optional<QByteArray> MavixSettingAccess::readImage(quint32 address)
{
    try {
        QByteArray image = m_agent->read(address, MavixSetting::kImageSize, m_accessTimeoutMs);
        if (image.size() == MavixSetting::kImageSize)
            return image;
        const QString text =
            QCoreApplication::translate("GeneralTab", "Mavix Setting buffer is too small");
        m_lastError = WrenError{WrenError::ShortReply, text};
        reportError(text);
        emit failed();
    } catch (const WrenError &error) {
        fail(error, QCoreApplication::translate("GeneralTab",
                                                "Response to reading Mavix Setting is timeout"));
    }
    return std::nullopt;
}

bool MavixSettingAccess::writeImage(quint32 base, const QByteArray &image,
                                    const MavixSetting &record)
{
    try {
        (void)m_agent->write(base, image.left(kFirstPieceSize), m_accessTimeoutMs);
        (void)m_agent->write(base + kSecondPieceOffset, image.mid(kSecondPieceOffset),
                             m_accessTimeoutMs);
        return true;
    } catch (const WrenError &error) {
        m_lastError = error;
        reportWrenError(error, QCoreApplication::translate(
                                   "GeneralTab", "Response to writing Mavix Setting is timeout"));
        // A device whose address was just changed answers only at the new one.
        if (error.code == WrenError::Timeout && m_target)
            m_target->set(record.ipAddress, record.udpPort, m_target->tcpPort());
        emit failed();
        return false;
    }
}

// Rewriting only the running UDP port moves the device away until its next start from the
// EEPROM copy, so the user is asked first.
bool MavixSettingAccess::confirmUdpPortChange(const MavixSetting &record)
{
    const std::optional<QByteArray> running = readImage(MavixSetting::kRunningBase);
    if (!running)
        return false;
    MavixSetting runningSetting;
    if (const std::optional<QString> problem = runningSetting.decode(*running)) {
        reportError(*problem);
        return false;
    }
    if (runningSetting.udpPort == record.udpPort || !m_confirmUdpPortChange ||
        m_confirmUdpPortChange())
        return true;
    m_declined = true;
    return false;
}

bool MavixSettingAccess::write(const MavixSetting &record, const QByteArray &imageReadBefore)
{
    m_lastError.reset();
    m_declined = false;
    const quint32 base = imageBase();
    const QByteArray image = record.encode(imageReadBefore);
    bool imageFailed = false; // reported and signalled already
    const auto writeAndAnnounce = [&] {
        if (!writeImage(base, image, record)) {
            imageFailed = true;
            return false;
        }
        emit targetSettingChanged(record);
        return true;
    };
    if (m_eeprom) {
        EepromWriteSession session(m_agent, m_accessTimeoutMs);
        if (!session.run(writeAndAnnounce)) {
            if (!imageFailed) {
                m_lastError = session.lastError();
                emit failed();
            }
            return false;
        }
    } else if (!confirmUdpPortChange(record) || !writeAndAnnounce()) {
        return false;
    }

    reportResult(QCoreApplication::translate("GeneralTab", "Writing Mavix setting is successed"));
    emit succeeded();
    return true;
}
