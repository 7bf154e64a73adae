#include "settings/experttab.h"

#include "app/report.h"
#include "settings/mavixsettingfields.h"
#include "ui_experttab.h"

namespace {

constexpr int kKeepAliveDisabledIndex = 0;
constexpr int kKeepAliveEnabledIndex = 1;

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
    // Until a read the fields are empty: a write then needs every value typed, and never sends
    // values that nobody read or typed.
    for (QLineEdit *field : settingFields())
        field->clear();
}

ExpertTab::~ExpertTab() = default;

void ExpertTab::resetDeviceInformation()
{
    if (!isReady())
        return;
    showSetting(MavixSetting());
    reportResult(tr("Please write if you reset Mavix Setting"));
}

// The General tab's read (and the ZEL-RS232C tab's) shows here too: the fields always hold what
// was last read from the device.
void ExpertTab::applyTargetSettingChange(MavixSetting setting)
{
    GeneralTab::applyTargetSettingChange(setting);
    if (isReady())
        showSetting(setting);
}

QList<QLineEdit *> ExpertTab::settingFields() const
{
    return {m_ui->ExpertIPAddressTextarea,        m_ui->ExpertTCPPortTextarea,
            m_ui->ExpertUDPPortTextarea,          m_ui->ExpertMACAddressTextarea,
            m_ui->ExpertTCPCommandPortTextarea,   m_ui->ExpertMaxSegmentSizeTextarea,
            m_ui->ExpertTCPKeepAliveBNETextArea,  m_ui->ExpertTCPKeepAliveBETextarea,
            m_ui->ExpertTCPTimeoutConTextarea,    m_ui->ExpertTCPTimeoutDicTextarea,
            m_ui->ExpertTCPReconIntervalTextArea, m_ui->ExpertTCPReTransTimerTextarea};
}

void ExpertTab::showSetting(const MavixSetting &setting)
{
    const MavixSettingFields fields = MavixSettingFields::from(setting);
    m_ui->ExpertIPAddressTextarea->setText(fields.ipAddress);
    m_ui->ExpertTCPPortTextarea->setText(fields.tcpDataPort);
    m_ui->ExpertUDPPortTextarea->setText(fields.udpPort);
    m_ui->ExpertMACAddressTextarea->setText(fields.macAddress);
    m_ui->ExpertTCPCommandPortTextarea->setText(fields.tcpCommandPort);
    m_ui->ExpertMaxSegmentSizeTextarea->setText(fields.tcpMaxSegmentSize);
    m_ui->ExpertTCPKeepAliveEnabledCombobox->setCurrentIndex(
        fields.tcpKeepAliveEnabled ? kKeepAliveEnabledIndex : kKeepAliveDisabledIndex);
    m_ui->ExpertTCPKeepAliveBNETextArea->setText(fields.tcpKeepAliveBufferNotEmptyMs);
    m_ui->ExpertTCPKeepAliveBETextarea->setText(fields.tcpKeepAliveBufferEmptyMs);
    m_ui->ExpertTCPTimeoutConTextarea->setText(fields.tcpTimeoutConnectingMs);
    m_ui->ExpertTCPTimeoutDicTextarea->setText(fields.tcpTimeoutDisconnectMs);
    m_ui->ExpertTCPReconIntervalTextArea->setText(fields.tcpReconnectIntervalMs);
    m_ui->ExpertTCPReTransTimerTextarea->setText(fields.tcpRetransmissionTimerMs);
}

// The rules live with the fields (core); the form only hands over its texts.
std::optional<MavixSetting> ExpertTab::recordFromFields(const MavixSetting &base)
{
    MavixSettingFields fields;
    fields.ipAddress = m_ui->ExpertIPAddressTextarea->text();
    fields.tcpDataPort = m_ui->ExpertTCPPortTextarea->text();
    fields.udpPort = m_ui->ExpertUDPPortTextarea->text();
    fields.macAddress = m_ui->ExpertMACAddressTextarea->text();
    fields.tcpCommandPort = m_ui->ExpertTCPCommandPortTextarea->text();
    fields.tcpMaxSegmentSize = m_ui->ExpertMaxSegmentSizeTextarea->text();
    fields.tcpKeepAliveEnabled =
        m_ui->ExpertTCPKeepAliveEnabledCombobox->currentIndex() == kKeepAliveEnabledIndex;
    fields.tcpKeepAliveBufferNotEmptyMs = m_ui->ExpertTCPKeepAliveBNETextArea->text();
    fields.tcpKeepAliveBufferEmptyMs = m_ui->ExpertTCPKeepAliveBETextarea->text();
    fields.tcpTimeoutConnectingMs = m_ui->ExpertTCPTimeoutConTextarea->text();
    fields.tcpTimeoutDisconnectMs = m_ui->ExpertTCPTimeoutDicTextarea->text();
    fields.tcpReconnectIntervalMs = m_ui->ExpertTCPReconIntervalTextArea->text();
    fields.tcpRetransmissionTimerMs = m_ui->ExpertTCPReTransTimerTextarea->text();
    return fields.toRecord(base);
}
