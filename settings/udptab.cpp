#include "settings/udptab.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "settings/registerrange.h"
#include "ui_udptab.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

#include <QFontDatabase>
#include <QLineEdit>

UDPTab::UDPTab(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::UDPTab>())
{
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
    if (const QString error = RegisterRange::parseAddress(addressText, &access.address);
        !error.isEmpty()) {
        fail(error);
        return std::nullopt;
    }
    // Every address the device was asked about goes into the history.
    addAddressToCombobox();

    const QString lengthText = m_ui->UDPDataLengthCombobox->currentText();
    if (const QString error = RegisterRange::parseLength(lengthText, &access.length);
        !error.isEmpty()) {
        fail(error);
        return std::nullopt;
    }
    return access;
}

void UDPTab::readMemory()
{
    if (!m_agent)
        return;
    const std::optional<Access> access = parseAccess();
    if (!access)
        return;
    if (const QString error = RegisterRange::checkRead(access->address, access->length);
        !error.isEmpty()) {
        fail(error);
        return;
    }

    AccessGate::Hold hold(m_agent->gate());
    QByteArray bytes;
    try {
        bytes = m_agent->read(access->address, quint8(access->length), m_accessTimeoutMs);
    } catch (const WrenError &error) {
        reportWrenError(error, RegisterRange::readTimeoutText());
        emit transmissionFailed();
        return;
    }

    const QString text = access->length == 0
                             ? QString()
                             : RegisterRange::formatDump(access->address, bytes,
                                                         m_ui->UDPShowAddressCheckbox->isChecked());
    m_ui->UDPDataTextarea->setPlainText(text);
    reportResult(RegisterRange::readDoneText());
    emit transmissionSuccessed();
}

void UDPTab::writeMemory()
{
    if (!m_agent)
        return;
    const std::optional<Access> access = parseAccess();
    if (!access)
        return;
    if (const QString error = RegisterRange::checkWrite(access->address, access->length, m_expert);
        !error.isEmpty()) {
        fail(error);
        return;
    }
    QByteArray bytes;
    if (const QString error =
            RegisterRange::parseData(m_ui->UDPDataTextarea->toPlainText(), access->length, &bytes);
        !error.isEmpty()) {
        fail(error);
        return;
    }

    AccessGate::Hold hold(m_agent->gate());
    try {
        (void)m_agent->write(access->address, bytes, m_accessTimeoutMs);
    } catch (const WrenError &error) {
        reportWrenError(error, RegisterRange::writeTimeoutText());
        emit transmissionFailed();
        return;
    }
    reportResult(RegisterRange::writeDoneText());
    emit transmissionSuccessed();
}
