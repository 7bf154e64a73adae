#include "settings/experttab.h"

#include "app/report.h"
#include "app/validators.h"
#include "ui_experttab.h"

#include <QHostAddress>

namespace {

constexpr int kKeepAliveDisabledIndex = 0;
constexpr int kKeepAliveEnabledIndex = 1;
// The device keeps the disconnect time-out in units of 256 ms.
constexpr int kDisconnectUnitShift = 8;
constexpr quint32 kDisconnectUnitMask = 0xFF;

// The image holds an IPv4 address; anything else could not be written as typed.
bool isIPv4Address(const QString &text)
{
    return checkDeviceAddress(text) == AddressProblem::None;
}

} // namespace

ExpertTab::ExpertTab(QWidget *parent)
    : GeneralTab(WithoutForm{}, parent), m_ui(std::make_unique<Ui::ExpertTab>())
{
    m_ui->setupUi(this);
    setTargetWidgets({m_ui->ExpertTargetIPAddressTextarea, m_ui->ExpertTargetTCPPortTextarea,
                      m_ui->ExpertTargetUDPPortTextarea, m_ui->ExpertEEPROMAccessCheckbox});
    connect(m_ui->ExpertReadButton, &QPushButton::clicked, this, &ExpertTab::readDeviceInformation);
    connect(m_ui->ExpertWriteButton, &QPushButton::clicked, this,
            &ExpertTab::writeDeviceInformation);
    connect(m_ui->ExpertResetButton, &QPushButton::clicked, this,
            &ExpertTab::resetDeviceInformation);
}

ExpertTab::~ExpertTab() = default;

void ExpertTab::resetDeviceInformation()
{
    if (!isReady())
        return;
    showSetting(MavixSetting());
    reportResult(tr("Please write if you reset Mavix Setting"));
}

void ExpertTab::showSetting(const MavixSetting &setting)
{
    const auto show = [](QLineEdit *edit, quint32 value) { edit->setText(QString::number(value)); };
    m_ui->ExpertIPAddressTextarea->setText(setting.ipAddress);
    show(m_ui->ExpertTCPPortTextarea, setting.tcpDataPort);
    show(m_ui->ExpertUDPPortTextarea, setting.udpPort);
    m_ui->ExpertMACAddressTextarea->setText(setting.macAddressText());
    show(m_ui->ExpertTCPCommandPortTextarea, setting.tcpCommandPort);
    show(m_ui->ExpertMaxSegmentSizeTextarea, setting.tcpMaxSegmentSize);
    m_ui->ExpertTCPKeepAliveEnabledCombobox->setCurrentIndex(
        setting.tcpKeepAliveEnabled ? kKeepAliveEnabledIndex : kKeepAliveDisabledIndex);
    show(m_ui->ExpertTCPKeepAliveBNETextArea, setting.tcpKeepAliveBufferNotEmptyMs);
    show(m_ui->ExpertTCPKeepAliveBETextarea, setting.tcpKeepAliveBufferEmptyMs);
    show(m_ui->ExpertTCPTimeoutConTextarea, setting.tcpTimeoutConnectingMs);
    show(m_ui->ExpertTCPTimeoutDicTextarea, setting.tcpTimeoutDisconnectMs());
    show(m_ui->ExpertTCPReconIntervalTextArea, setting.tcpReconnectIntervalMs);
    show(m_ui->ExpertTCPReTransTimerTextarea, setting.tcpRetransmissionTimerMs);
}

// Every field is checked, in the order of the form, so that the user sees all refusals at once;
// one refusal is enough for nothing to be written.
std::optional<MavixSetting> ExpertTab::recordFromFields(const MavixSetting &base)
{
    MavixSetting record = base;
    bool valid = true;
    const auto refuse = [&valid](const QString &message) {
        valid = false;
        reportError(message);
    };
    const auto take16 = [&refuse](const QLineEdit *edit, quint16 &value, const QString &message) {
        if (!MavixSetting::parsePort(edit->text(), &value))
            refuse(message);
    };

    const QString ip = m_ui->ExpertIPAddressTextarea->text();
    if (isIPv4Address(ip))
        record.ipAddress = QHostAddress(ip).toString();
    else
        refuse(tr("IP address is invalid"));
    take16(m_ui->ExpertTCPPortTextarea, record.tcpDataPort,
           tr("TCP Port number must be 0 to 65535"));
    take16(m_ui->ExpertUDPPortTextarea, record.udpPort, tr("UDP Port number must be 0 to 65535"));
    // Checked only: the write never reaches the MAC bytes, so the record keeps the device's MAC
    // and the field shows it again after a write.
    if (!parseMACAddress(m_ui->ExpertMACAddressTextarea->text()))
        refuse(tr("Set mac address in format FF:FF:FF:FF:FF:FF"));
    take16(m_ui->ExpertTCPCommandPortTextarea, record.tcpCommandPort,
           tr("TCP Port number must be 0 to 65535"));
    take16(m_ui->ExpertMaxSegmentSizeTextarea, record.tcpMaxSegmentSize,
           tr("MaxSegmentSize must be 0 to 65535"));
    take16(m_ui->ExpertTCPKeepAliveBNETextArea, record.tcpKeepAliveBufferNotEmptyMs,
           tr("KeepAlive must be 0 to 65535"));
    take16(m_ui->ExpertTCPKeepAliveBETextarea, record.tcpKeepAliveBufferEmptyMs,
           tr("KeepAlive must be 0 to 65535"));
    take16(m_ui->ExpertTCPTimeoutConTextarea, record.tcpTimeoutConnectingMs,
           tr("TimeOut(Connecting) must be 0 to 65535"));

    const std::optional<quint32> disconnect =
        parseDisconnectTimeoutMs(m_ui->ExpertTCPTimeoutDicTextarea->text());
    const quint32 disconnectMs = disconnect.value_or(0);
    if (!disconnect) {
        refuse(tr("TimeOut(Disconnecting) must be 0 to 16677125"));
    } else {
        if (disconnectMs & kDisconnectUnitMask)
            reportResult(tr("Info: Reading TimeOut(Disconnecting) value will change because the "
                            "lower 8 bits are ignored"));
        record.tcpTimeoutDisconnect256Ms = quint16(disconnectMs >> kDisconnectUnitShift);
    }

    take16(m_ui->ExpertTCPReconIntervalTextArea, record.tcpReconnectIntervalMs,
           tr("Reconnect Interval must be 0 to 65535"));
    take16(m_ui->ExpertTCPReTransTimerTextarea, record.tcpRetransmissionTimerMs,
           tr("ReTransmission Timer must be 0 to 65535"));
    record.tcpKeepAliveEnabled =
        m_ui->ExpertTCPKeepAliveEnabledCombobox->currentIndex() == kKeepAliveEnabledIndex;

    if (!valid)
        return std::nullopt;
    return record;
}
