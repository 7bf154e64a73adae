#include "modules/zelgpibtab.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "modules/gpibmodulesetting.h"
#include "ui_zelgpibtab.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

#include <QFontDatabase>
#include <QHostAddress>
#include <QTcpSocket>
#include <QTextCursor>
#include <QTextEdit>

namespace {

// QTextEdit::append() renders text that looks like markup as markup; received bytes are text.
void appendPlainText(QTextEdit *edit, const QString &text)
{
    QTextCursor cursor(edit->document());
    cursor.movePosition(QTextCursor::End);
    if (!edit->document()->isEmpty())
        cursor.insertBlock();
    cursor.insertText(text);
}
constexpr quint8 kObtainPermission = 0x00;
constexpr quint8 kReleasePermission = 0xFF;
} // namespace

ZELGPIBTab::ZELGPIBTab(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::ZELGPIBTab>()), m_socket(new QTcpSocket(this))
{
    MavixSetting::registerMetaType();
    m_ui->setupUi(this);
    m_ui->ZELGPIBReceivedData->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
}

ZELGPIBTab::~ZELGPIBTab()
{
    if (m_socket->state() != QAbstractSocket::UnconnectedState)
        m_socket->abort();
}

void ZELGPIBTab::setAgent(WrenAgent *agent)
{
    m_agent = agent;
    delete m_bus;
    m_bus = agent ? new GpibBus(m_socket, agent->gate(), this) : nullptr;
    if (m_bus)
        m_bus->setWaitTimeoutMs(m_waitTimeoutMs);
}

void ZELGPIBTab::setWaitTimeoutMs(int ms)
{
    m_waitTimeoutMs = ms;
    if (m_bus)
        m_bus->setWaitTimeoutMs(ms);
}

QString ZELGPIBTab::hexText(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' '));
}

void ZELGPIBTab::applyTargetSettingChange(MavixSetting setting)
{
    m_target = setting;
}

// Buttons stay live while another operation waits (the window keeps running): a click then must
// not start a second device operation inside the first one's wait.
bool ZELGPIBTab::canBeginOperation() const
{
    return m_agent && m_bus && !m_agent->gate()->isBusy();
}

void ZELGPIBTab::reportAccessFailure(const WrenError &error, const QString &timeoutMessage)
{
    reportWrenError(error, timeoutMessage);
    emit transmissionFailed();
}

void ZELGPIBTab::readSetting()
{
    if (!canBeginOperation())
        return;
    AccessGate::Hold hold(m_agent->gate());
    QByteArray block;
    try {
        block =
            m_agent->read(GpibModuleSetting::kAddress, GpibModuleSetting::kSize, m_waitTimeoutMs);
    } catch (const WrenError &error) {
        reportAccessFailure(error, tr("UDP read is timeout"));
        return;
    }
    const std::optional<GpibModuleSetting> setting = GpibModuleSetting::decode(block);
    if (!setting) {
        reportError(tr("Read ZEL-GPIB setting is invalid"));
        emit transmissionFailed();
        return;
    }
    m_ui->ZELGPIBControllerAddress->setText(QString::number(setting->controllerAddress));
    m_ui->ZELGPIBTimeout->setText(QString::number(setting->timeoutMs()));
    reportResult(tr("Reading ZEL-GPIB setting successed"));
    emit transmissionSuccessed();
}

bool ZELGPIBTab::writeRegisters(quint32 address, const QByteArray &bytes,
                                const QString &timeoutMessage)
{
    try {
        (void)m_agent->write(address, bytes, m_waitTimeoutMs);
        return true;
    } catch (const WrenError &error) {
        reportAccessFailure(error, timeoutMessage);
        return false;
    }
}

void ZELGPIBTab::writeSetting()
{
    if (!canBeginOperation())
        return;
    const std::optional<quint32> controller = GpibModuleSetting::parseDecimal(
        m_ui->ZELGPIBControllerAddress->text(), GpibUnit::kMaxAddress);
    if (!controller) {
        reportError(tr("Controller GPIB address must be 0 to 30"));
        return;
    }
    const std::optional<quint32> timeoutMs = GpibModuleSetting::parseDecimal(
        m_ui->ZELGPIBTimeout->text(), GpibModuleSetting::kMaxTimeoutMs);
    if (!timeoutMs) {
        reportError(tr("Timeout must be 0 to 655350"));
        return;
    }
    GpibModuleSetting setting;
    setting.controllerAddress = quint8(*controller);
    setting.setTimeoutMs(*timeoutMs);

    // The module takes its settings only with the EEPROM write permission, whatever the General
    // tab's EEPROM Access says.
    AccessGate::Hold hold(m_agent->gate());
    if (!writeRegisters(MavixSetting::kEepromPermission, QByteArray(1, char(kObtainPermission)),
                        tr("Response to obtaining permisssion to write in EEPROM is timeout")) ||
        !writeRegisters(GpibModuleSetting::kAddress, setting.encode(),
                        tr("UDP write is timeout")) ||
        !writeRegisters(MavixSetting::kEepromPermission, QByteArray(1, char(kReleasePermission)),
                        tr("Response to permisssion release to write in EEPROM is timeout")))
        return;
    reportResult(tr("Writing ZEL-GPIB setting successed"));
    emit transmissionSuccessed();
}

void ZELGPIBTab::toggleConnection()
{
    if (!canBeginOperation())
        return;
    if (m_ui->ZELGPIBConnectButton->text() == tr("Connect"))
        connectToModule();
    else
        disconnectFromModule();
}

void ZELGPIBTab::connectToModule()
{
    AccessGate::Hold hold(m_agent->gate());
    m_socket->abort();
    m_socket->connectToHost(m_target.ipAddress, m_target.tcpDataPort, QIODevice::ReadWrite,
                            QAbstractSocket::AnyIPProtocol);
    // A refused connection ends at once; only a silent one takes the whole time-out.
    (void)m_agent->gate()->waitFor(m_socket, &QTcpSocket::stateChanged, m_waitTimeoutMs, [this] {
        const QAbstractSocket::SocketState state = m_socket->state();
        return state == QAbstractSocket::ConnectedState ||
               state == QAbstractSocket::UnconnectedState;
    });
    if (m_socket->state() != QAbstractSocket::ConnectedState) {
        m_socket->abort();
        reportError(tr("Fail to connect to device"));
        emit transmissionFailed();
        return;
    }
    m_ui->ZELGPIBConnectButton->setText(tr("Disconnect"));
    setTransactionControlsEnabled(true);
    reportResult(tr("ZEL-GPIB connect successed"));
    emit transmissionSuccessed();
}

void ZELGPIBTab::disconnectFromModule()
{
    AccessGate::Hold hold(m_agent->gate());
    m_socket->disconnectFromHost();
    if (m_socket->state() == QAbstractSocket::ConnectingState)
        (void)m_agent->gate()->waitFor(m_socket, &QTcpSocket::disconnected, m_waitTimeoutMs);
    m_socket->close();
    m_ui->ZELGPIBConnectButton->setText(tr("Connect"));
    setTransactionControlsEnabled(false);
    m_bus->resetBusState();
    reportResult(tr("ZEL-GPIB disconnect successed"));
}

void ZELGPIBTab::setTransactionControlsEnabled(bool enabled)
{
    m_ui->ZELGPIBSendButton->setEnabled(enabled);
    m_ui->ZELGPIBReceiveButton->setEnabled(enabled);
    m_ui->ZELGPIBIFCButton->setEnabled(enabled);
}

void ZELGPIBTab::maxReceiveLengthCheck()
{
    bool ok = false;
    const quint32 length = m_ui->ZELGPIBMaxReceiveLength->text().toUInt(&ok, 10);
    if (!ok || length == 0)
        m_ui->ZELGPIBMaxReceiveLength->setText(tr("(Ignore)"));
}

std::optional<ZELGPIBTab::Addresses> ZELGPIBTab::addressFields()
{
    const std::optional<quint32> target =
        GpibModuleSetting::parseDecimal(m_ui->ZELGPIBTargetAddress->text(), GpibUnit::kMaxAddress);
    if (!target) {
        reportError(tr("Target GPIB address must be 0 to 30"));
        return std::nullopt;
    }
    const std::optional<quint32> controller = GpibModuleSetting::parseDecimal(
        m_ui->ZELGPIBControllerAddress->text(), GpibUnit::kMaxAddress);
    if (!controller) {
        reportError(tr("Controller GPIB address must be 0 to 30"));
        return std::nullopt;
    }
    return Addresses{*controller, *target};
}

void ZELGPIBTab::sendCommand()
{
    if (!canBeginOperation())
        return;
    const std::optional<Addresses> addresses = addressFields();
    if (!addresses)
        return;
    const QString command = m_ui->ZELGPIBCommand->text();
    if (command.isEmpty()) {
        reportError(tr("GPIB command is empty"));
        return;
    }
    const QByteArray message =
        command.toUtf8() + GpibBus::delimiterBytes(m_ui->ZELGPIBDelimiterComboBox->currentIndex());
    AccessGate::Hold hold(m_agent->gate());
    finishTransaction(m_bus->send(addresses->controller, addresses->target, message),
                      tr("GPIB sending successed"));
}

void ZELGPIBTab::receive()
{
    if (!canBeginOperation())
        return;
    const std::optional<Addresses> addresses = addressFields();
    if (!addresses)
        return;
    bool limited = false;
    const qint64 maxLength = m_ui->ZELGPIBMaxReceiveLength->text().toUInt(&limited, 10);
    AccessGate::Hold hold(m_agent->gate());
    QByteArray received;
    const GpibBus::Failure failure =
        m_bus->receive(addresses->controller, addresses->target,
                       GpibBus::delimiterBytes(m_ui->ZELGPIBDelimiterComboBox->currentIndex()),
                       limited ? maxLength : 0, &received);
    // Bytes that arrived before a failure are shown too: they are what the instrument said.
    if (failure == GpibBus::Failure::None || !received.isEmpty())
        appendPlainText(m_ui->ZELGPIBReceivedData, m_ui->ZELGPIBShowAsHexCheckBox->isChecked()
                                                       ? hexText(received)
                                                       : QString::fromUtf8(received));
    finishTransaction(failure, tr("GPIB receiving successed"));
}

void ZELGPIBTab::IFC()
{
    if (!canBeginOperation())
        return;
    AccessGate::Hold hold(m_agent->gate());
    finishTransaction(m_bus->interfaceClear(), tr("GPIB Interface Clear successed"));
}

void ZELGPIBTab::finishTransaction(GpibBus::Failure failure, const QString &successMessage)
{
    switch (failure) {
    case GpibBus::Failure::None:
        reportResult(successMessage);
        emit transmissionSuccessed();
        return;
    case GpibBus::Failure::Timeout:
        reportError(tr("GPIB timeout"));
        break;
    case GpibBus::Failure::ErrorPacket:
        reportError(tr("GPIB error packet"));
        reportError(tr("GPIB undefined error"));
        break;
    case GpibBus::Failure::Other:
        reportError(tr("GPIB undefined error"));
        break;
    case GpibBus::Failure::Aborted: // the user gave up the wait, as in the register tabs
        reportWrenError(WrenError{WrenError::Timeout, givenUpText()}, tr("GPIB timeout"));
        break;
    }
    emit transmissionFailed();
    disconnectFromModule(); // the module must be connected again
}
