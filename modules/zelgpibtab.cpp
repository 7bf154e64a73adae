#include "modules/zelgpibtab.h"

#include "app/accessgate.h"
#include "app/devicetarget.h"
#include "app/report.h"
#include "modules/commandhistory.h"
#include "modules/textareafeed.h"
#include "ui_zelgpibtab.h"
#include "wren/wrenagent.h"

#include <QFontDatabase>

ZELGPIBTab::ZELGPIBTab(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::ZELGPIBTab>())
{
    m_ui->setupUi(this);
    m_history = new CommandHistory(m_ui->ZELGPIBCommand);
    connect(m_ui->ZELGPIBQueryButton, &QPushButton::clicked, this, &ZELGPIBTab::query);
    m_ui->ZELGPIBReceivedData->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    TextAreaFeed::limit(m_ui->ZELGPIBReceivedData->document());
}

ZELGPIBTab::~ZELGPIBTab() = default;

void ZELGPIBTab::setAgent(WrenAgent *agent)
{
    delete m_bridge;
    m_bridge = agent ? new GpibBridge(agent, this) : nullptr;
    if (!m_bridge)
        return;
    m_bridge->setWaitTimeoutMs(m_waitTimeoutMs);
    connect(m_bridge, &GpibBridge::connectionChanged, this, &ZELGPIBTab::showConnection);
}

void ZELGPIBTab::setWaitTimeoutMs(int ms)
{
    m_waitTimeoutMs = ms;
    if (m_bridge)
        m_bridge->setWaitTimeoutMs(ms);
}

// Buttons stay live while another operation waits (the window keeps running): a click then must
// not start a second device operation inside the first one's wait.
bool ZELGPIBTab::canBeginOperation() const
{
    return m_bridge && !m_bridge->gate()->isBusy();
}

void ZELGPIBTab::announce(bool succeeded)
{
    if (succeeded)
        emit transmissionSuccessed();
    else
        emit transmissionFailed();
}

void ZELGPIBTab::readSetting()
{
    if (!canBeginOperation())
        return;
    const std::optional<GpibModuleSetting> setting = m_bridge->readSetting();
    if (setting) {
        m_ui->ZELGPIBControllerAddress->setText(QString::number(setting->controllerAddress));
        m_ui->ZELGPIBTimeout->setText(QString::number(setting->timeoutMs()));
    }
    announce(setting.has_value());
}

void ZELGPIBTab::writeSetting()
{
    if (!canBeginOperation())
        return;
    const std::optional<GpibModuleSetting> setting = GpibBridge::parseSetting(
        m_ui->ZELGPIBControllerAddress->text(), m_ui->ZELGPIBTimeout->text());
    if (setting)
        announce(m_bridge->writeSetting(*setting));
}

void ZELGPIBTab::toggleConnection()
{
    if (!canBeginOperation() || !m_target)
        return;
    if (m_ui->ZELGPIBConnectButton->text() == tr("Connect"))
        announce(m_bridge->connectTo(m_target->host(), m_target->tcpPort()));
    else
        m_bridge->disconnectFromModule();
}

void ZELGPIBTab::showConnection(bool connected)
{
    m_ui->ZELGPIBConnectButton->setText(connected ? tr("Disconnect") : tr("Connect"));
    m_ui->ZELGPIBSendButton->setEnabled(connected);
    m_ui->ZELGPIBReceiveButton->setEnabled(connected);
    m_ui->ZELGPIBIFCButton->setEnabled(connected);
    m_ui->ZELGPIBQueryButton->setEnabled(connected);
}

void ZELGPIBTab::maxReceiveLengthCheck()
{
    bool ok = false;
    const quint32 length = m_ui->ZELGPIBMaxReceiveLength->text().toUInt(&ok, 10);
    if (!ok || length == 0)
        m_ui->ZELGPIBMaxReceiveLength->setText(tr("(Ignore)"));
}

std::optional<GpibBridge::Addresses> ZELGPIBTab::addressFields() const
{
    return GpibBridge::parseAddresses(m_ui->ZELGPIBControllerAddress->text(),
                                      m_ui->ZELGPIBTargetAddress->text());
}

QByteArray ZELGPIBTab::delimiter() const
{
    return GpibBus::delimiterBytes(m_ui->ZELGPIBDelimiterComboBox->currentIndex());
}

std::optional<QByteArray> ZELGPIBTab::commandMessage() const
{
    const QString command = m_ui->ZELGPIBCommand->text();
    if (command.isEmpty()) {
        reportError(tr("GPIB command is empty"));
        return std::nullopt;
    }
    return command.toUtf8() + delimiter();
}

qint64 ZELGPIBTab::maxReceiveLength() const
{
    bool limited = false;
    const qint64 maxLength = m_ui->ZELGPIBMaxReceiveLength->text().toUInt(&limited, 10);
    return limited ? maxLength : 0;
}

void ZELGPIBTab::showReceived(const QByteArray &received)
{
    TextAreaFeed::append(m_ui->ZELGPIBReceivedData, received,
                         m_ui->ZELGPIBShowAsHexCheckBox->isChecked() ? TextAreaFeed::Form::SpacedHex
                                                                     : TextAreaFeed::Form::Text);
}

void ZELGPIBTab::sendCommand()
{
    if (!canBeginOperation())
        return;
    const std::optional<GpibBridge::Addresses> addresses = addressFields();
    if (!addresses)
        return;
    const std::optional<QByteArray> message = commandMessage();
    if (!message)
        return;
    m_history->add(m_ui->ZELGPIBCommand->text());
    announce(m_bridge->send(*addresses, *message));
}

void ZELGPIBTab::receive()
{
    if (!canBeginOperation())
        return;
    const std::optional<GpibBridge::Addresses> addresses = addressFields();
    if (!addresses)
        return;
    QByteArray received;
    const bool succeeded =
        m_bridge->receive(*addresses, delimiter(), maxReceiveLength(), &received);
    // Bytes that arrived before a failure are shown too: they are what the instrument said.
    if (succeeded || !received.isEmpty())
        showReceived(received);
    announce(succeeded);
}

void ZELGPIBTab::query()
{
    if (!canBeginOperation())
        return;
    const std::optional<GpibBridge::Addresses> addresses = addressFields();
    if (!addresses)
        return;
    const std::optional<QByteArray> message = commandMessage();
    if (!message)
        return;
    m_history->add(m_ui->ZELGPIBCommand->text());
    QByteArray received;
    const bool succeeded =
        m_bridge->query(*addresses, *message, delimiter(), maxReceiveLength(), &received);
    if (succeeded || !received.isEmpty())
        showReceived(received);
    announce(succeeded);
}

void ZELGPIBTab::IFC()
{
    if (!canBeginOperation())
        return;
    announce(m_bridge->interfaceClear());
}
