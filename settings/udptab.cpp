#include "settings/udptab.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "app/validators.h"
#include "ui_udptab.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

#include <QFontDatabase>
#include <QLineEdit>
#include <QRegularExpression>

namespace {

constexpr int kBytesPerLine = 16;
// Without expert mode a write must end below this address: the device's own settings live above.
constexpr quint32 kProtectedStart = 0xFFFF0001;

} // namespace

UDPTab::UDPTab(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::UDPTab>())
{
    MavixSetting::registerMetaType();
    m_ui->setupUi(this);
    m_ui->UDPDataTextarea->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    // The history is kept by addAddressToCombobox(), not by the combo box itself.
    m_ui->UDPRegisterAddressCombobox->setInsertPolicy(QComboBox::NoInsert);
    // The history is offered as a drop-down only: completing "1" inline into "1000" would send
    // the write somewhere the user did not type.
    m_ui->UDPRegisterAddressCombobox->setCompleter(nullptr);
    m_ui->UDPDataLengthCombobox->setCompleter(nullptr);
    m_ui->UDPRegisterAddressCombobox->setEditText(QStringLiteral("00000000"));
    m_ui->UDPDataLengthCombobox->setCurrentText(QStringLiteral("16"));

    connect(m_ui->UDPReadButton, &QPushButton::clicked, this, &UDPTab::readMemory);
    connect(m_ui->UDPWriteButton, &QPushButton::clicked, this, &UDPTab::writeMemory);
    connect(m_ui->UDPRegisterAddressCombobox->lineEdit(), &QLineEdit::returnPressed, this,
            &UDPTab::addAddressToCombobox);
}

UDPTab::~UDPTab() = default;

void UDPTab::setAgent(WrenAgent *agent)
{
    m_agent = agent;
}

void UDPTab::setExpertMode(bool expert)
{
    m_expert = expert;
}

// The agent's target is set by the tabs that own target fields; nothing to keep here.
void UDPTab::applyTargetSettingChange(MavixSetting setting)
{
    Q_UNUSED(setting)
}

QString UDPTab::formatDump(quint32 address, const QByteArray &data, bool showAddress)
{
    QString text;
    for (int offset = 0; offset < data.size(); offset += kBytesPerLine) {
        if (showAddress) {
            const quint32 lineAddress = address + quint32(offset); // wraps modulo 2^32
            text += QStringLiteral("%1 : ").arg(lineAddress, 8, 16, QLatin1Char('0')).toUpper();
        }
        const QByteArray line = data.mid(offset, kBytesPerLine);
        for (const char byte : line)
            text +=
                QStringLiteral("%1 ").arg(uint(quint8(byte)), 2, 16, QLatin1Char('0')).toUpper();
        text += QLatin1Char('\n');
    }
    return text;
}

std::optional<QByteArray> UDPTab::parseDump(const QString &text)
{
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    QByteArray bytes;
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        QStringList tokens = line.split(blanks, Qt::SkipEmptyParts);
        // A line printed with "Show Address" carries its address before the first ":".
        const qsizetype separator = tokens.indexOf(QStringLiteral(":"));
        if (separator >= 0)
            tokens = tokens.mid(separator + 1);
        for (const QString &token : tokens) {
            bool ok = false;
            const uint value = token.toUInt(&ok, 16);
            if (!ok || value > 0xFF)
                return std::nullopt;
            bytes.append(char(value));
        }
    }
    return bytes;
}

void UDPTab::addAddressToCombobox()
{
    QComboBox *combo = m_ui->UDPRegisterAddressCombobox;
    const QString text = combo->currentText();
    if (combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive) >= 0)
        return;
    combo->addItem(text);
}

void UDPTab::fail(const QString &message)
{
    reportError(message);
    emit transmissionFailed();
}

std::optional<UDPTab::Access> UDPTab::parseAccess()
{
    Access access;
    const QString addressText = m_ui->UDPRegisterAddressCombobox->currentText();
    if (!MavixSetting::parseHex32(addressText, &access.address)) {
        fail(tr("Set register address 8 character hex number"));
        return std::nullopt;
    }
    // Every address the device was asked about goes into the history.
    addAddressToCombobox();

    quint8 length = 0;
    if (!MavixSetting::parseByte(m_ui->UDPDataLengthCombobox->currentText(), &length)) {
        fail(tr("Data length must be 0 to 255"));
        return std::nullopt;
    }
    access.length = length;
    return access;
}

void UDPTab::readMemory()
{
    if (!m_agent)
        return;
    const std::optional<Access> access = parseAccess();
    if (!access)
        return;
    if (access->address > 0xFFFFFFFFu - access->length) {
        fail(tr("Accessible range is 0x0 to 0xffffffff"));
        return;
    }

    AccessGate::Hold hold(m_agent->gate());
    QByteArray bytes;
    try {
        bytes = m_agent->read(access->address, quint8(access->length), m_accessTimeoutMs);
    } catch (const WrenError &error) {
        reportWrenError(error, tr("UDP read is timeout"));
        emit transmissionFailed();
        return;
    }

    const QString text =
        access->length == 0
            ? QString()
            : formatDump(access->address, bytes, m_ui->UDPShowAddressCheckbox->isChecked());
    m_ui->UDPDataTextarea->setPlainText(text);
    reportResult(tr("UDP read successed"));
    emit transmissionSuccessed();
}

void UDPTab::writeMemory()
{
    if (!m_agent)
        return;
    const std::optional<Access> access = parseAccess();
    if (!access)
        return;
    if (!m_expert && access->address >= kProtectedStart - access->length) {
        fail(tr("Writing in domain after 0xFFFF0000 is not permitted"));
        return;
    }
    // 2^32 - length in 32 bits: 0 for a length of 0, so a zero-length write is allowed only at 0.
    const quint32 endOfSpace = quint32(0) - access->length;
    if (endOfSpace < access->address) {
        fail(tr("Writing in domain after 0xFFFFFFFF is not permitted"));
        return;
    }
    const std::optional<QByteArray> bytes = parseDump(m_ui->UDPDataTextarea->toPlainText());
    if (!bytes) {
        fail(tr("Written data is specified in hex number with a space"));
        return;
    }
    if (quint32(bytes->size()) != access->length) {
        fail(tr("Written data length does not match"));
        return;
    }

    AccessGate::Hold hold(m_agent->gate());
    try {
        (void)m_agent->write(access->address, *bytes, m_accessTimeoutMs);
    } catch (const WrenError &error) {
        reportWrenError(error, tr("UDP writing is timeout"));
        emit transmissionFailed();
        return;
    }
    reportResult(tr("UDP writing successed"));
    emit transmissionSuccessed();
}
