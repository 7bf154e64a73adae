#include "settings/generaltab.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "ui_generaltab.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

#include <QFontDatabase>
#include <QHostAddress>
#include <QMessageBox>

namespace {

constexpr quint8 kObtainPermission = 0x00;
constexpr quint8 kReleasePermission = 0xFF;
// The image is written in two pieces that leave out bytes 17..23 (the MAC address).
constexpr int kFirstPieceSize = 17;
constexpr int kSecondPieceOffset = 0x18;

} // namespace

GeneralTab::GeneralTab(QWidget *parent) : GeneralTab(WithoutForm{}, parent)
{
    m_ui = std::make_unique<Ui::GeneralTab>();
    m_ui->setupUi(this);
    m_ui->GenSettingDataTextarea->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setTargetWidgets({m_ui->GenTargetIPAddressTextarea, m_ui->GenTargetTCPPortTextarea,
                      m_ui->GenTargetUDPPortTextarea, m_ui->GenEEPROMAccessCheckbox});
    connectForm();
}

GeneralTab::GeneralTab(WithoutForm, QWidget *parent) : QWidget(parent)
{
    MavixSetting::registerMetaType();
}

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
    const std::optional<QByteArray> image = readImage(imageBase());
    if (!image)
        return;

    MavixSetting setting;
    setting.decode(*image);
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
    const std::optional<QByteArray> image = readImage(imageBase());
    if (!image)
        return;

    MavixSetting base;
    base.decode(*image);
    const std::optional<MavixSetting> record = recordFromFields(base);
    if (!record || !runWriteSequence(*record, *image))
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

quint32 GeneralTab::imageBase() const
{
    return isEEPROMAccessChecked() ? MavixSetting::kEepromBase : MavixSetting::kRunningBase;
}

std::optional<QByteArray> GeneralTab::readImage(quint32 address)
{
    try {
        QByteArray image = m_agent->read(address, MavixSetting::kImageSize, m_accessTimeoutMs);
        if (image.size() == MavixSetting::kImageSize)
            return image;
        reportError(tr("Mavix Setting buffer is too small"));
    } catch (const WrenError &error) {
        reportWrenError(error, tr("Response to reading Mavix Setting is timeout"));
    }
    emit transmissionFailed();
    return std::nullopt;
}

bool GeneralTab::writePermissionByte(quint8 value, const QString &timeoutMessage)
{
    try {
        (void)m_agent->write(MavixSetting::kEepromPermission, QByteArray(1, char(value)),
                             m_accessTimeoutMs);
        return true;
    } catch (const WrenError &error) {
        reportWrenError(error, timeoutMessage);
        emit transmissionFailed();
        return false;
    }
}

bool GeneralTab::writeImage(quint32 base, const QByteArray &image, const MavixSetting &record)
{
    try {
        (void)m_agent->write(base, image.left(kFirstPieceSize), m_accessTimeoutMs);
        (void)m_agent->write(base + kSecondPieceOffset, image.mid(kSecondPieceOffset),
                             m_accessTimeoutMs);
        return true;
    } catch (const WrenError &error) {
        reportWrenError(error, tr("Response to writing Mavix Setting is timeout"));
        if (error.code == WrenError::Timeout) {
            // A device whose address was just changed answers only at the new one.
            m_agent->setTarget(QHostAddress(record.ipAddress), record.udpPort);
        }
        emit transmissionFailed();
        return false;
    }
}

// Rewriting only the running UDP port moves the device away until its next start from the
// EEPROM copy, so the user confirms it; No is the default.
bool GeneralTab::confirmUdpPortChange(const MavixSetting &record)
{
    const std::optional<QByteArray> running = readImage(MavixSetting::kRunningBase);
    if (!running)
        return false;
    MavixSetting runningSetting;
    runningSetting.decode(*running);
    if (runningSetting.udpPort == record.udpPort)
        return true;

    QMessageBox box(QMessageBox::Warning, tr("warning"),
                    tr("It is recommended to enable EEPROM Access and rewrite UDP port. If you "
                       "want to continue, please select yes as it is."),
                    QMessageBox::Yes | QMessageBox::No, this);
    box.setDefaultButton(QMessageBox::No);
    return box.exec() != QMessageBox::No;
}

bool GeneralTab::runWriteSequence(const MavixSetting &record, const QByteArray &imageReadBefore)
{
    const bool eeprom = isEEPROMAccessChecked();
    if (eeprom &&
        !writePermissionByte(kObtainPermission,
                             tr("Response to obtaining permisssion to write in EEPROM is timeout")))
        return false;
    const quint32 base = eeprom ? MavixSetting::kEepromBase : MavixSetting::kRunningBase;

    const QByteArray image = record.encode(imageReadBefore);
    if (!eeprom && !confirmUdpPortChange(record))
        return false;
    if (!writeImage(base, image, record))
        return false;
    emit targetSettingChanged(record);

    if (eeprom &&
        !writePermissionByte(kReleasePermission,
                             tr("Response to permisssion release to write in EEPROM is timeout")))
        return false;

    reportResult(tr("Writing Mavix setting is successed"));
    emit transmissionSuccessed();
    return true;
}

// After the running copy was rewritten the device answers at its new address and port; the
// target fields follow it so that the next access reaches it.
void GeneralTab::followWrittenTarget(const MavixSetting &record)
{
    applyTargetSettingChange(record);
    (void)applyTargetFields(false);
}
