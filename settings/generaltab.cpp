#include "settings/generaltab.h"

#include "app/accessgate.h"
#include "app/devicetarget.h"
#include "app/report.h"
#include "app/validators.h"
#include "settings/mavixsettingaccess.h"
#include "ui_generaltab.h"
#include "wren/wrenagent.h"

#include <QFontDatabase>
#include <QMessageBox>

GeneralTab::GeneralTab(QWidget *parent) : GeneralTab(WithoutForm{}, parent)
{
    m_ui = std::make_unique<Ui::GeneralTab>();
    m_ui->setupUi(this);
    m_ui->GenSettingDataTextarea->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setTargetWidgets({m_ui->GenTargetIPAddressTextarea, m_ui->GenTargetTCPPortTextarea,
                      m_ui->GenTargetUDPPortTextarea, m_ui->GenEEPROMAccessCheckbox});
    connectForm();
}

GeneralTab::GeneralTab(WithoutForm, QWidget *parent) : QWidget(parent) {}

GeneralTab::~GeneralTab() = default;

void GeneralTab::connectForm()
{
    connect(m_ui->GenReadButton, &QPushButton::clicked, this, &GeneralTab::readDeviceInformation);
    connect(m_ui->GenWriteButton, &QPushButton::clicked, this, &GeneralTab::writeDeviceInformation);
}

void GeneralTab::setTargetWidgets(const TargetWidgets &widgets)
{
    m_targetIPAddress = widgets.ipAddress;
    m_targetTCPPort = widgets.tcpPort;
    m_targetUDPPort = widgets.udpPort;
    m_eepromAccess = widgets.eepromAccess;
}

void GeneralTab::setAgent(WrenAgent *agent)
{
    m_agent = agent;
    delete m_access;
    m_access = new MavixSettingAccess(agent, this);
    connect(m_access, &MavixSettingAccess::targetSettingChanged, this,
            &GeneralTab::targetSettingChanged);
    connect(m_access, &MavixSettingAccess::failed, this, &GeneralTab::transmissionFailed);
    connect(m_access, &MavixSettingAccess::succeeded, this, &GeneralTab::transmissionSuccessed);
    m_access->setUdpPortChangeQuestion([this] { return confirmUdpPortChange(); });
    m_access->setTarget(m_target);
}

void GeneralTab::setDeviceTarget(DeviceTarget *target)
{
    if (m_target)
        disconnect(m_target, nullptr, this, nullptr);
    m_target = target;
    if (m_access)
        m_access->setTarget(target);
    if (!target)
        return;
    connect(target, &DeviceTarget::changed, this, &GeneralTab::showTarget);
    showTarget();
}

bool GeneralTab::isReady() const
{
    return m_agent && m_target && m_targetIPAddress && m_targetTCPPort && m_targetUDPPort &&
           m_eepromAccess;
}

void GeneralTab::showTarget()
{
    if (!m_target || !m_targetIPAddress)
        return;
    m_targetIPAddress->setText(m_target->host());
    m_targetTCPPort->setText(QString::number(m_target->tcpPort()));
    m_targetUDPPort->setText(QString::number(m_target->udpPort()));
}

bool GeneralTab::applyTargetFields(bool reportErrors)
{
    if (!isReady())
        return false;
    const QString ip = m_targetIPAddress->text();
    const QString tcpPort = m_targetTCPPort->text();
    const QString udpPort = m_targetUDPPort->text();
    if (!MavixSetting::validateTarget(ip, tcpPort, udpPort, reportErrors))
        return false;

    quint16 tcp = 0;
    quint16 udp = 0;
    (void)MavixSetting::parsePort(tcpPort, &tcp);
    (void)MavixSetting::parsePort(udpPort, &udp);
    m_target->set(ip, udp, tcp);
    return true;
}

void GeneralTab::setTargetFields(const QString &ip, const QString &tcpPort, const QString &udpPort)
{
    if (!m_targetIPAddress)
        return;
    m_targetIPAddress->setText(ip);
    m_targetTCPPort->setText(tcpPort);
    m_targetUDPPort->setText(udpPort);
}

void GeneralTab::fillUntouchedWriteFields(const QString &ip, const QString &tcpPort,
                                          const QString &udpPort)
{
    if (!m_ui)
        return;
    const auto fill = [](QLineEdit *edit, const QString &text) {
        if (!edit->isModified() && !text.isEmpty())
            edit->setText(text);
    };
    fill(m_ui->GenWriteIPAddressTextarea, ip);
    fill(m_ui->GenWriteTCPPortTextarea, tcpPort);
    fill(m_ui->GenWriteUDPPortTextarea, udpPort);
}

QString GeneralTab::targetIPAddressText() const
{
    return m_targetIPAddress ? m_targetIPAddress->text() : QString();
}

QString GeneralTab::targetTCPPortText() const
{
    return m_targetTCPPort ? m_targetTCPPort->text() : QString();
}

QString GeneralTab::targetUDPPortText() const
{
    return m_targetUDPPort ? m_targetUDPPort->text() : QString();
}

bool GeneralTab::isEEPROMAccessChecked() const
{
    return m_eepromAccess && m_eepromAccess->isChecked();
}

void GeneralTab::setEEPROMAccessChecked(bool checked)
{
    if (m_eepromAccess)
        m_eepromAccess->setChecked(checked);
}

void GeneralTab::applyTargetSettingChange(MavixSetting setting)
{
    if (!isReady())
        return;
    // An address nobody can talk to (the image of a device reached over IPv6 shows 0.0.0.0) keeps
    // the host the device was reached at.
    const bool usable = checkTargetAddress(setting.ipAddress) == AddressProblem::None;
    m_target->set(usable ? setting.ipAddress : m_target->host(), setting.udpPort,
                  setting.tcpDataPort);
    showTarget(); // typed text that was never applied gives way too
}

void GeneralTab::readDeviceInformation()
{
    if (!isReady() || !applyTargetFields(true))
        return;
    AccessGate::Hold hold(m_agent->gate());
    prepareAccess();
    const std::optional<QByteArray> image = m_access->readImage(m_access->imageBase());
    if (!image)
        return;

    MavixSetting setting;
    if (const std::optional<QString> problem = setting.decode(*image)) {
        reportError(*problem);
        return;
    }
    if (!isEEPROMAccessChecked()) {
        applyTargetSettingChange(setting);
        emit targetSettingChanged(setting);
    }
    showSetting(setting);
    reportResult(tr("Reading Mavix setting is successed"));
    emit transmissionSuccessed();
}

void GeneralTab::writeDeviceInformation()
{
    if (!isReady() || !applyTargetFields(true))
        return;
    // The whole sequence is one device operation: nothing else may run between its steps.
    AccessGate::Hold hold(m_agent->gate());
    const DeviceTarget::Pin pin(m_target, isEEPROMAccessChecked());
    prepareAccess();
    const std::optional<QByteArray> image = m_access->readImage(m_access->imageBase());
    if (!image)
        return;

    MavixSetting base;
    if (const std::optional<QString> problem = base.decode(*image)) {
        reportError(*problem);
        return;
    }
    const std::optional<MavixSetting> record = recordFromFields(base);
    if (!record || !m_access->write(*record, *image))
        return;

    showSetting(*record);
    // After the running copy was rewritten the device answers at its new address and ports.
    if (!isEEPROMAccessChecked())
        applyTargetSettingChange(*record);
}

void GeneralTab::resetDeviceInformation() {}

void GeneralTab::showSetting(const MavixSetting &setting)
{
    if (isReady() && m_ui)
        m_ui->GenSettingDataTextarea->setPlainText(setting.textReport());
}

std::optional<MavixSetting> GeneralTab::recordFromFields(const MavixSetting &base)
{
    if (!m_ui)
        return std::nullopt;
    const QString ip = m_ui->GenWriteIPAddressTextarea->text();
    const QString tcpPort = m_ui->GenWriteTCPPortTextarea->text();
    const QString udpPort = m_ui->GenWriteUDPPortTextarea->text();
    if (!MavixSetting::validateWriteFields(ip, tcpPort, udpPort, true))
        return std::nullopt;

    MavixSetting record = base;
    record.ipAddress = ip;
    (void)MavixSetting::parsePort(tcpPort, &record.tcpDataPort);
    (void)MavixSetting::parsePort(udpPort, &record.udpPort);
    return record;
}

// The copy and the time-out the sequences use are the tab's at the moment of the access.
void GeneralTab::prepareAccess()
{
    m_access->setEEPROMAccess(isEEPROMAccessChecked());
    m_access->setAccessTimeoutMs(m_accessTimeoutMs);
}

// Rewriting only the running UDP port moves the device away until its next start from the
// EEPROM copy, so the user confirms it; No is the default.
bool GeneralTab::confirmUdpPortChange()
{
    QMessageBox box(QMessageBox::Warning, tr("warning"),
                    tr("It is recommended to enable EEPROM Access and rewrite UDP port. If you "
                       "want to continue, please select yes as it is."),
                    QMessageBox::Yes | QMessageBox::No, this);
    box.setDefaultButton(QMessageBox::No);
    return box.exec() != QMessageBox::No;
}
