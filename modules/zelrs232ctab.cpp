#include "modules/zelrs232ctab.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "modules/serialbridge.h"
#include "modules/serialmonitorpanel.h"
#include "modules/textareafeed.h"
#include "ui_zelrs232ctab.h"
#include "wren/wrenagent.h"

#include <QFontDatabase>
#include <QKeySequence>
#include <QShortcut>
#include <QtEndian>

namespace {

using namespace Rs232c;

} // namespace

ZELRS232CTab::ZELRS232CTab(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::ZELRS232CTab>()),
      m_accessTimeoutMs(WrenAgent::kAccessTimeoutMs), m_dataTimeoutMs(WrenAgent::kAccessTimeoutMs)
{
    m_ui->setupUi(this);
    m_ui->ZELRS232cReceivedDataTextarea->setFont(
        QFontDatabase::systemFont(QFontDatabase::FixedFont));
    TextAreaFeed::limit(m_ui->ZELRS232cReceivedDataTextarea->document());
    m_monitor = new SerialMonitorPanel(m_ui.get(), this);
    connect(m_monitor, &SerialMonitorPanel::transmissionSuccessed, this,
            &ZELRS232CTab::transmissionSuccessed);
    connect(m_monitor, &SerialMonitorPanel::transmissionFailed, this,
            &ZELRS232CTab::transmissionFailed);
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
    delete m_bridge;
    m_bridge = new SerialBridge(agent, this);
    m_bridge->config() = m_initialConfig;
    m_bridge->setTimeouts(m_accessTimeoutMs, m_dataTimeoutMs);
    connect(m_bridge, &SerialBridge::connectionChanged, this, &ZELRS232CTab::updateConnectionState);
    connect(m_bridge, &SerialBridge::targetSettingChanged, this,
            &ZELRS232CTab::targetSettingChanged);
    m_monitor->setBridge(m_bridge);
    updateConnectionState();
}

void ZELRS232CTab::setTimeouts(int accessMs, int dataMs)
{
    m_accessTimeoutMs = accessMs;
    m_dataTimeoutMs = dataMs;
    if (m_bridge)
        m_bridge->setTimeouts(accessMs, dataMs);
}

void ZELRS232CTab::setAccessTimeoutMs(int ms)
{
    setTimeouts(ms, m_dataTimeoutMs);
}

// One device operation at a time: a click that arrives while another waits is ignored.
bool ZELRS232CTab::mayStart() const
{
    return isReady() && !m_bridge->gate()->isBusy();
}

bool ZELRS232CTab::eepromAccess() const
{
    return m_ui->ZELRS232cEEPROMAccessCheckBox->isChecked();
}

Rs232cConfig &ZELRS232CTab::config()
{
    return m_bridge ? m_bridge->config() : m_initialConfig;
}

void ZELRS232CTab::announce(bool succeeded)
{
    if (succeeded)
        emit transmissionSuccessed();
    else
        emit transmissionFailed();
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
    const bool read = m_bridge->read(eepromAccess());
    if (read) {
        showFormat();
        showConnector();
    }
    announce(read);
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
    Rs232cConfig &settings = config();
    settings.baudIndex = m_ui->ZELRS232cBaudRateCombobox->currentIndex();
    settings.dataWidthIndex = m_ui->ZELRS232cDataWidthCombobox->currentIndex();
    settings.stopBitIndex = m_ui->ZELRS232cStopBitCombobox->currentIndex();
    settings.parityIndex = m_ui->ZELRS232cParityComboBox->currentIndex();
    const bool written = m_bridge->write(eepromAccess(), m_shown, port);
    showConnector();
    announce(written);
}

void ZELRS232CTab::applyTargetSettingChange(MavixSetting setting)
{
    if (!isReady())
        return;
    m_bridge->takeRunningPorts(setting);
    // A port the user is typing is left alone.
    if (!m_ui->ZELRS232cPortLineEdit->isModified())
        m_ui->ZELRS232cPortLineEdit->setText(QString::number(config().connector(m_shown).tcpPort));
}

// Form

void ZELRS232CTab::showFormat()
{
    const auto select = [](QComboBox *box, int index) {
        if (index >= 0 && index < box->count())
            box->setCurrentIndex(index);
    };
    const Rs232cConfig &settings = config();
    select(m_ui->ZELRS232cBaudRateCombobox, settings.baudIndex);
    select(m_ui->ZELRS232cDataWidthCombobox, settings.dataWidthIndex);
    select(m_ui->ZELRS232cStopBitCombobox, settings.stopBitIndex);
    select(m_ui->ZELRS232cParityComboBox, settings.parityIndex);
}

void ZELRS232CTab::showConnector()
{
    const Rs232cConnectorSetting &setting = config().connector(m_shown);
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
    Rs232cConnectorSetting &setting = config().connector(m_shown);
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
    const bool connected = m_bridge && m_bridge->isConnected(m_shown);
    m_ui->ZELRS232cConnectButton->setText(connected ? tr("Disconnect") : tr("Connect"));
    m_sendShortcut->setEnabled(connected);
    // A watched connector hands everything to the monitor; a receive there would wait for nothing.
    m_ui->ZELRS232cReceiveButton->setEnabled(!m_bridge || !m_bridge->isMonitored(m_shown));
    m_monitor->showState();
}

// Data

void ZELRS232CTab::toggleConnection()
{
    if (!mayStart())
        return;
    if (m_bridge->isConnected(m_shown)) {
        m_bridge->disconnectFrom(m_shown);
        reportResult(tr("ZEL-RS232C disconnect successed"));
        return;
    }
    announce(m_bridge->connectTo(m_shown));
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
    announce(m_bridge->send(m_shown, bytes));
}

void ZELRS232CTab::receive()
{
    if (!mayStart())
        return;
    bool isNumber = false;
    const qint64 maxLength = m_ui->ZELRS232cMaxReceiveLengthLineEdit->text().toLongLong(&isNumber);
    QByteArray received;
    const bool done = m_bridge->receive(m_shown, isNumber ? maxLength : 0, &received);
    if (done) {
        const bool hex = m_ui->ZELRS232cShowAsHexCheckBox->isChecked();
        // As text, one line end at the very end is left out: the area starts a new line anyway.
        if (!hex && received.endsWith("\r\n"))
            received.chop(2);
        else if (!hex && received.endsWith('\n'))
            received.chop(1);
        TextAreaFeed::append(m_ui->ZELRS232cReceivedDataTextarea, received,
                             hex ? TextAreaFeed::Form::Hex : TextAreaFeed::Form::Text);
    }
    announce(done);
}

void ZELRS232CTab::maxReceiveLengthCheck()
{
    QLineEdit *edit = m_ui->ZELRS232cMaxReceiveLengthLineEdit;
    bool isNumber = false;
    const qint64 length = edit->text().toLongLong(&isNumber);
    if (!isNumber || length <= 0)
        edit->setText(tr("(Ignore)"));
}
