#include "modules/zelrs232ctab.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "modules/serialconnectorsession.h"
#include "ui_zelrs232ctab.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

#include <QFontDatabase>
#include <QKeySequence>
#include <QShortcut>
#include <QtEndian>

namespace {

using namespace Rs232c;

constexpr quint8 kObtainPermission = 0x00;
constexpr quint8 kReleasePermission = 0xFF;

} // namespace

ZELRS232CTab::ZELRS232CTab(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::ZELRS232CTab>()),
      m_accessTimeoutMs(WrenAgent::kAccessTimeoutMs), m_dataTimeoutMs(WrenAgent::kAccessTimeoutMs)
{
    MavixSetting::registerMetaType();
    m_ui->setupUi(this);
    m_ui->ZELRS232cReceivedDataTextarea->setFont(
        QFontDatabase::systemFont(QFontDatabase::FixedFont));
    fillFlowItems();
    connectForm();
    showFormat();
    showConnector();
}

ZELRS232CTab::~ZELRS232CTab() = default;

void ZELRS232CTab::connectForm()
{
    connect(m_ui->ZELRS232cRead, &QPushButton::clicked, this, &ZELRS232CTab::readParameters);
    connect(m_ui->ZELRS232cWrite, &QPushButton::clicked, this, &ZELRS232CTab::writeParameters);
    connect(m_ui->ZELRS232cConnectButton, &QPushButton::clicked, this,
            &ZELRS232CTab::toggleConnection);
    connect(m_ui->ZELRS232cReceiveButton, &QPushButton::clicked, this, &ZELRS232CTab::receive);
    connect(m_ui->ZELRS232cSendButton, &QPushButton::clicked, this, &ZELRS232CTab::sendData);
    connect(m_ui->ZELRS232cSendDataLineEdit, &QLineEdit::returnPressed, this,
            &ZELRS232CTab::sendData);
    connect(m_ui->ZELRS232cMaxReceiveLengthLineEdit, &QLineEdit::editingFinished, this,
            &ZELRS232CTab::maxReceiveLengthCheck);
    connect(m_ui->ZELRS232cConnectorComboBox, &QComboBox::currentIndexChanged, this,
            &ZELRS232CTab::toggleDceDte);

    // A shortcut of a hidden tab does not fire, so other tabs may use the same keys.
    connect(new QShortcut(QKeySequence(QStringLiteral("Ctrl+R")), this), &QShortcut::activated,
            this, &ZELRS232CTab::readParameters);
    connect(new QShortcut(QKeySequence(QStringLiteral("Ctrl+W")), this), &QShortcut::activated,
            this, &ZELRS232CTab::writeParameters);
    m_sendShortcut = new QShortcut(QKeySequence(QStringLiteral("Ctrl+S")), this);
    connect(m_sendShortcut, &QShortcut::activated, this, &ZELRS232CTab::sendData);
}

void ZELRS232CTab::setAgent(WrenAgent *agent)
{
    m_agent = agent;
    for (SerialConnectorSession *&session : m_sessions) {
        delete session;
        session = new SerialConnectorSession(agent->gate(), this);
        connect(session, &SerialConnectorSession::closedByPeer, this,
                &ZELRS232CTab::updateConnectionState);
    }
    updateConnectionState();
}

void ZELRS232CTab::setTimeouts(int accessMs, int dataMs)
{
    m_accessTimeoutMs = accessMs;
    m_dataTimeoutMs = dataMs;
}

// One device operation at a time: a click that arrives while another waits is ignored.
bool ZELRS232CTab::mayStart() const
{
    return isReady() && !m_agent->gate()->isBusy();
}

SerialConnectorSession *ZELRS232CTab::shownSession() const
{
    return m_sessions[size_t(m_shown)];
}

quint32 ZELRS232CTab::eepromOffset() const
{
    return m_ui->ZELRS232cEEPROMAccessCheckBox->isChecked() ? kEepromOffset : 0;
}

QCheckBox *ZELRS232CTab::lineBox(Line line) const
{
    const std::array<QCheckBox *, kLineCount> boxes{
        {m_ui->ZELRS232cRTSCheckBox, m_ui->ZELRS232cCTSCheckBox, m_ui->ZELRS232cDTRCheckBox,
         m_ui->ZELRS232cRICheckBox, m_ui->ZELRS232cDSRCheckBox, m_ui->ZELRS232cTxDCheckBox,
         m_ui->ZELRS232cRxDCheckBox, m_ui->ZELRS232cCDCheckBox}};
    return boxes[size_t(line)];
}

// Registers

void ZELRS232CTab::readParameters()
{
    if (!mayStart())
        return;
    AccessGate::Hold hold(m_agent->gate());
    try {
        readAndShow(eepromOffset());
    } catch (const WrenError &error) {
        reportAccessError(error);
        emit transmissionFailed();
    }
}

void ZELRS232CTab::readAndShow(quint32 offset)
{
    const QByteArray config =
        m_agent->read(kConfigAddress - offset, kConfigSize, m_accessTimeoutMs);
    Rs232cConfig decoded = m_config;
    const bool configValid = decoded.decode(config);
    const QByteArray block = configValid
                                 ? m_agent->read(kSettingsBlockAddress - offset,
                                                 MavixSetting::kImageSize, m_accessTimeoutMs)
                                 : QByteArray();
    const bool blockValid = block.size() >= MavixSetting::kImageSize;
    const QByteArray states =
        blockValid ? m_agent->read(kLineStateAddress, kLineStateSize, m_accessTimeoutMs)
                   : QByteArray();
    if (!configValid || !blockValid || !decoded.decodeLineStates(states)) {
        reportError(tr("Read ZEL-RS232C setting is invalid"));
        emit transmissionFailed();
        return;
    }

    m_config = decoded;
    MavixSetting setting;
    setting.decode(block);
    takePorts(setting, offset == 0);
    showFormat();
    showConnector();
    if (offset == 0)
        emit targetSettingChanged(setting);
    reportResult(tr("Reading ZEL-RS232C setting is successed"));
    emit transmissionSuccessed();
}

void ZELRS232CTab::writeParameters()
{
    if (!mayStart())
        return;
    // Checked before anything is written, so that a refused port leaves the device untouched.
    quint16 port = 0;
    if (!MavixSetting::parsePort(m_ui->ZELRS232cPortLineEdit->text(), &port)) {
        reportError(tr("TCP Port number must be 0 to 65535"));
        return;
    }
    storeShownConnector();
    m_config.baudIndex = m_ui->ZELRS232cBaudRateCombobox->currentIndex();
    m_config.dataWidthIndex = m_ui->ZELRS232cDataWidthCombobox->currentIndex();
    m_config.stopBitIndex = m_ui->ZELRS232cStopBitCombobox->currentIndex();
    m_config.parityIndex = m_ui->ZELRS232cParityComboBox->currentIndex();

    AccessGate::Hold hold(m_agent->gate());
    const quint32 offset = eepromOffset();
    bool permissionObtained = false;
    try {
        if (offset != 0) {
            (void)m_agent->write(MavixSetting::kEepromPermission,
                                 QByteArray(1, char(kObtainPermission)), m_accessTimeoutMs);
            permissionObtained = true;
        }
        writeSequence(offset, port);
        if (permissionObtained) {
            permissionObtained = false;
            (void)m_agent->write(MavixSetting::kEepromPermission,
                                 QByteArray(1, char(kReleasePermission)), m_accessTimeoutMs);
        }
        reportResult(tr("Writing ZEL-RS232C setting is successed"));
        emit transmissionSuccessed();
    } catch (const WrenError &error) {
        reportAccessError(error);
        // A device that still answers is not left with its EEPROM open.
        if (permissionObtained && error.code != WrenError::Timeout) {
            try {
                (void)m_agent->write(MavixSetting::kEepromPermission,
                                     QByteArray(1, char(kReleasePermission)), m_accessTimeoutMs);
            } catch (const WrenError &) {
            }
        }
        emit transmissionFailed();
    }
}

void ZELRS232CTab::writeSequence(quint32 offset, quint16 port)
{
    (void)m_agent->write(kConfigAddress - offset, m_config.encode(), m_accessTimeoutMs);
    QByteArray portBytes(2, '\0');
    qToBigEndian<quint16>(port, portBytes.data());
    (void)m_agent->write(kSettingsBlockAddress - offset + quint32(kPortOffset[size_t(m_shown)]),
                         portBytes, m_accessTimeoutMs);

    const QByteArray block =
        m_agent->read(kSettingsBlockAddress - offset, MavixSetting::kImageSize, m_accessTimeoutMs);
    MavixSetting setting;
    setting.decode(block);
    if (block.size() < MavixSetting::kImageSize)
        return;
    takePorts(setting, offset == 0);
    showConnector();
    if (offset == 0)
        emit targetSettingChanged(setting);
}

void ZELRS232CTab::reportAccessError(const WrenError &error)
{
    if (!error.reason.isEmpty())
        reportError(error.reason);
    else if (error.code == WrenError::Timeout)
        reportError(tr("ZEL-RS232C timeout"));
    else
        reportError(tr("ZEL-RS232C undefined error"));
}

// Settings block: DTE port at 0x1C (the TCP data port), DCE port at 0x1E.
void ZELRS232CTab::takePorts(const MavixSetting &block, bool running)
{
    m_config.connector(Connector::Dte).tcpPort = block.tcpDataPort;
    m_config.connector(Connector::Dce).tcpPort = block.tcpCommandPort;
    if (running)
        m_running = block;
}

void ZELRS232CTab::applyTargetSettingChange(MavixSetting setting)
{
    if (!isReady())
        return;
    takePorts(setting, true);
    // A port the user is typing is left alone.
    if (!m_ui->ZELRS232cPortLineEdit->isModified())
        m_ui->ZELRS232cPortLineEdit->setText(QString::number(m_config.connector(m_shown).tcpPort));
}

// Form

void ZELRS232CTab::showFormat()
{
    const auto select = [](QComboBox *box, int index) {
        if (index >= 0 && index < box->count())
            box->setCurrentIndex(index);
    };
    select(m_ui->ZELRS232cBaudRateCombobox, m_config.baudIndex);
    select(m_ui->ZELRS232cDataWidthCombobox, m_config.dataWidthIndex);
    select(m_ui->ZELRS232cStopBitCombobox, m_config.stopBitIndex);
    select(m_ui->ZELRS232cParityComboBox, m_config.parityIndex);
}

void ZELRS232CTab::showConnector()
{
    const Rs232cConnectorSetting &setting = m_config.connector(m_shown);
    m_ui->ZELRS232cAutoFlowCtrlComboBox->setCurrentIndex(setting.flowType);
    m_ui->ZELRS232cWaitCheckBox->setChecked(setting.wait);
    for (const LineBits &bits : kLineTable) {
        QCheckBox *box = lineBox(bits.line);
        box->setChecked(setting.lines[size_t(bits.line)]);
        // Only the connector's own outputs can be switched; its inputs are shown as read.
        box->setEnabled(isOutput(bits.line, m_shown));
    }
    m_ui->ZELRS232cPortLineEdit->setText(QString::number(setting.tcpPort));
    updateConnectionState();
}

void ZELRS232CTab::storeShownConnector()
{
    Rs232cConnectorSetting &setting = m_config.connector(m_shown);
    setting.flowType = qMax(0, m_ui->ZELRS232cAutoFlowCtrlComboBox->currentIndex());
    setting.wait = m_ui->ZELRS232cWaitCheckBox->isChecked();
    for (const LineBits &bits : kLineTable)
        setting.lines[size_t(bits.line)] = lineBox(bits.line)->isChecked();
    quint16 port = 0;
    if (MavixSetting::parsePort(m_ui->ZELRS232cPortLineEdit->text(), &port))
        setting.tcpPort = port;
}

void ZELRS232CTab::fillFlowItems()
{
    QComboBox *flow = m_ui->ZELRS232cAutoFlowCtrlComboBox;
    flow->clear();
    if (m_shown == Connector::Dte) {
        flow->addItems({tr("Manual"), tr("Auto(Ignore CTS)"), tr("Auto(Consider CTS)")});
        m_ui->ZELRS232cWaitCheckBox->setText(tr("Wait DSR/CTS"));
    } else {
        flow->addItems({tr("Manual"), tr("Auto(Ignore RTS)"), tr("Auto(Consider RTS)")});
        m_ui->ZELRS232cWaitCheckBox->setText(tr("Wait DTR/RTS"));
    }
}

void ZELRS232CTab::toggleDceDte(int index)
{
    if (index < 0 || index >= kConnectorCount || Connector(index) == m_shown)
        return;
    storeShownConnector();
    m_shown = Connector(index);
    fillFlowItems();
    showConnector();
}

void ZELRS232CTab::updateConnectionState()
{
    const bool connected = shownSession() && shownSession()->isConnected();
    m_ui->ZELRS232cConnectButton->setText(connected ? tr("Disconnect") : tr("Connect"));
    m_sendShortcut->setEnabled(connected);
}

// Data

void ZELRS232CTab::toggleConnection()
{
    if (!mayStart())
        return;
    SerialConnectorSession *session = shownSession();
    if (session->isConnected()) {
        closeShownConnection();
        reportResult(tr("ZEL-RS232C disconnect successed"));
        return;
    }
    const quint16 port =
        m_shown == Connector::Dte ? m_running.tcpDataPort : m_running.tcpCommandPort;
    const SerialConnectorSession::Result result =
        session->open(m_agent->targetAddress(), port, m_dataTimeoutMs);
    updateConnectionState();
    if (result != SerialConnectorSession::Result::Done) {
        reportError(tr("Fail to connect to device"));
        emit transmissionFailed();
        return;
    }
    reportResult(tr("ZEL-RS232C connect successed"));
    emit transmissionSuccessed();
}

void ZELRS232CTab::closeShownConnection()
{
    shownSession()->close(m_dataTimeoutMs);
    updateConnectionState();
}

void ZELRS232CTab::sendData()
{
    if (!mayStart())
        return;
    const QByteArray bytes = SerialConnectorSession::withDelimiter(
        m_ui->ZELRS232cSendDataLineEdit->text(), m_ui->ZELRS232CDelimiterComboBox->currentIndex());
    if (bytes.isEmpty()) {
        reportError(tr("ZEL-RS232C data is empty"));
        return;
    }
    switch (shownSession()->send(bytes, m_dataTimeoutMs)) {
    case SerialConnectorSession::Result::Done:
        reportResult(tr("ZEL-RS232C sending successed"));
        emit transmissionSuccessed();
        return;
    case SerialConnectorSession::Result::NotConnected:
        reportError(tr("ZEL-RS232C is not connected"));
        break;
    case SerialConnectorSession::Result::TimedOut:
        reportError(tr("ZEL-RS232C timeout"));
        break;
    case SerialConnectorSession::Result::Aborted: // the user gave up the wait (Esc)
        reportWrenError(WrenError{WrenError::Timeout, givenUpText()}, tr("ZEL-RS232C timeout"));
        break;
    default:
        reportError(tr("ZEL-RS232C undefined error"));
        break;
    }
    emit transmissionFailed();
}

void ZELRS232CTab::receive()
{
    if (!mayStart())
        return;
    bool isNumber = false;
    const qint64 maxLength = m_ui->ZELRS232cMaxReceiveLengthLineEdit->text().toLongLong(&isNumber);
    QByteArray received;
    switch (shownSession()->receive(isNumber ? maxLength : 0, m_dataTimeoutMs, &received)) {
    case SerialConnectorSession::Result::Done:
        m_ui->ZELRS232cReceivedDataTextarea->appendPlainText(SerialConnectorSession::receivedText(
            received, m_ui->ZELRS232cShowAsHexCheckBox->isChecked()));
        reportResult(tr("ZEL-RS232C receiving successed"));
        emit transmissionSuccessed();
        return;
    case SerialConnectorSession::Result::NotConnected:
        reportError(tr("ZEL-RS232C is not connected"));
        updateConnectionState();
        break;
    case SerialConnectorSession::Result::TimedOut:
        reportError(tr("ZEL-RS232C timeout"));
        closeShownConnection();
        break;
    case SerialConnectorSession::Result::Aborted: // the user gave up the wait (Esc)
        reportWrenError(WrenError{WrenError::Timeout, givenUpText()}, tr("ZEL-RS232C timeout"));
        break;
    default:
        reportError(tr("ZEL-RS232C undefined error"));
        break;
    }
    emit transmissionFailed();
}

void ZELRS232CTab::maxReceiveLengthCheck()
{
    QLineEdit *edit = m_ui->ZELRS232cMaxReceiveLengthLineEdit;
    bool isNumber = false;
    const qint64 length = edit->text().toLongLong(&isNumber);
    if (!isNumber || length <= 0)
        edit->setText(tr("(Ignore)"));
}
