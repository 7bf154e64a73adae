#include "settings/generaltab.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "settings/mavixsettingaccess.h"
#include "ui_generaltab.h"
#include "wren/wrenagent.h"

#include <QFontDatabase>
#include <QHostAddress>
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
}

bool GeneralTab::isReady() const
{
    return m_agent && m_targetIPAddress && m_targetTCPPort && m_targetUDPPort && m_eepromAccess;
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

    MavixSetting target = MavixSetting::current();
    target.ipAddress = ip;
    (void)MavixSetting::parsePort(tcpPort, &target.tcpDataPort);
    (void)MavixSetting::parsePort(udpPort, &target.udpPort);
    MavixSetting::setCurrent(target);
    m_agent->setTarget(QHostAddress(target.ipAddress), target.udpPort);
    return true;
}

void GeneralTab::setTargetFields(const QString &ip, const QString &tcpPort, const QString &udpPort)
{
    const auto fill = [](QLineEdit *edit, const QString &text) {
        if (edit && !text.isEmpty())
            edit->setText(text);
    };
    fill(m_targetIPAddress, ip);
    fill(m_targetTCPPort, tcpPort);
    fill(m_targetUDPPort, udpPort);

    // Write fields the user has not edited start from the device the tool is pointed at, so that
    // changing one port and writing does not also move the device to the factory address.
    if (!m_ui)
        return;
    const auto fillUntouched = [&fill](QLineEdit *edit, const QString &text) {
        if (!edit->isModified())
            fill(edit, text);
    };
    fillUntouched(m_ui->GenWriteIPAddressTextarea, ip);
    fillUntouched(m_ui->GenWriteTCPPortTextarea, tcpPort);
    fillUntouched(m_ui->GenWriteUDPPortTextarea, udpPort);
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
    MavixSetting::setCurrent(setting);
    m_targetIPAddress->setText(setting.ipAddress);
    m_targetTCPPort->setText(QString::number(setting.tcpDataPort));
    m_targetUDPPort->setText(QString::number(setting.udpPort));
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
        MavixSetting::setCurrent(setting);
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
    if (!isEEPROMAccessChecked())
        followWrittenTarget(*record);
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

// After the running copy was rewritten the device answers at its new address and port; the
// target fields follow it so that the next access reaches it.
void GeneralTab::followWrittenTarget(const MavixSetting &record)
{
    applyTargetSettingChange(record);
    (void)applyTargetFields(false);
}
