#include "tcp/tcptab.h"

#include "app/appmodel.h"
#include "app/devicetarget.h"
#include "app/openfile.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcprecvinfodlg.h"
#include "tcp/tcpsendinfodlg.h"
#include "ui_tcptab.h"

#include <QFileDialog>
#include <QFileInfo>

TCPTab::TCPTab(QWidget *parent) : QWidget(parent), m_ui(new Ui::TCPTab)
{
    m_ui->setupUi(this);
}

TCPTab::~TCPTab() = default;

void TCPTab::setup(AppModel *model, TCPThread *worker, DeviceTarget *target)
{
    if (m_model || !model || !worker || !target)
        return; // handed over once, at start-up
    m_model = model;
    m_worker = worker;
    m_target = target;
    // Children of the tab, so they close with it; as dialogs they are still windows of their own.
    m_recvDialog = new TCPRecvInfoDlg(model, worker, target, this);
    m_sendDialog = new TCPSendInfoDlg(model, worker, target, this);

    loadOptions();
    connectForm();
    connectWorker();
    connect(target, &DeviceTarget::changed, this, &TCPTab::showTarget);
    showTarget();
    m_recvDialog->refreshWidgetStates();
}

// Before the form is connected, so that filling it applies nothing back.
void TCPTab::loadOptions()
{
    const TCPOutputOption *recv = m_model->recvOption();
    m_ui->TCPRecvFileTextConvertCheckbox->setChecked(recv->useHexFile());
    m_ui->TCPRecvFormatTextarea->setText(recv->format());
    m_ui->TCPRecvPathTextarea->setText(recv->fileName());
    const TCPOutputOption *send = m_model->sendOption();
    m_ui->TCPSendFileTextConvertCheckbox->setChecked(send->useHexFile());
    m_ui->TCPSendFormatTextarea->setText(send->format());
    m_ui->TCPSendPathTextarea->setText(send->fileName());
}

void TCPTab::connectForm()
{
    connect(m_ui->TCPRecvDlgOpenButton, &QPushButton::clicked, this,
            &TCPTab::openReceiveInfoDialog);
    connect(m_ui->TCPSendDlgOpenButton, &QPushButton::clicked, this, &TCPTab::openSendInfoDialog);

    connect(m_ui->TCPRecvFileTextConvertCheckbox, &QCheckBox::clicked, this,
            &TCPTab::applyRecvFormatUse);
    // Every keystroke stores the name; it is checked once editing is finished.
    connect(m_ui->TCPRecvPathTextarea, &QLineEdit::textChanged, this, &TCPTab::applyRecvFile);
    connect(m_ui->TCPRecvPathTextarea, &QLineEdit::editingFinished, this, &TCPTab::checkRecvFile);
    connect(m_ui->TCPRecvPathRefferenceButton, &QPushButton::clicked, this,
            &TCPTab::openRecvFileRefferenceDialog);
    connect(m_ui->TCPRecvPathOpenButton, &QPushButton::clicked, this, &TCPTab::openRecvFile);
    connect(m_ui->TCPRecvFormatTextarea, &QLineEdit::editingFinished, this,
            &TCPTab::applyRecvFormat);

    connect(m_ui->TCPSendFileTextConvertCheckbox, &QCheckBox::clicked, this,
            &TCPTab::applySendFormatUse);
    connect(m_ui->TCPSendPathTextarea, &QLineEdit::textChanged, this, &TCPTab::applySendFile);
    connect(m_ui->TCPSendPathTextarea, &QLineEdit::editingFinished, this, &TCPTab::checkSendFile);
    connect(m_ui->TCPSendPathRefferenceButton, &QPushButton::clicked, this,
            &TCPTab::openSendFileRefferenceDialog);
    connect(m_ui->TCPSendPathOpenButton, &QPushButton::clicked, this, &TCPTab::openSendFile);
    connect(m_ui->TCPSendFormatTextarea, &QLineEdit::editingFinished, this,
            &TCPTab::applySendFormat);

    connect(m_model->recvOption(), &TCPOutputOption::formatChanged, this,
            &TCPTab::onTcpRecvFormatChanged);
}

// The worker lives on its own thread: these connections are queued.
void TCPTab::connectWorker()
{
    connect(m_worker, &TCPThread::recvStatusChanged, this, &TCPTab::onTcpRecvStatusChanged);
    connect(m_worker, &TCPThread::sendStatusChanged, this, &TCPTab::onTcpSendStatusChanged);
    connect(m_worker, &TCPThread::errorOccured, this, &TCPTab::onErrorOccured);
    onTcpRecvStatusChanged(TS_STOP, m_worker->recvStatus());
    onTcpSendStatusChanged(TS_STOP, m_worker->sendStatus());
}

// Dialogs and target

void TCPTab::showDialog(QDialog *dialog)
{
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void TCPTab::openReceiveInfoDialog()
{
    m_recvDialog->refreshWidgetStates();
    showDialog(m_recvDialog);
}

void TCPTab::openSendInfoDialog()
{
    showDialog(m_sendDialog);
}

// The tab shows the program's target, which whoever announces a setting has already updated.
void TCPTab::applyTargetSettingChange(const MavixSetting & /*setting*/)
{
    showTarget();
}

void TCPTab::showTarget()
{
    if (!m_target)
        return;
    m_ui->TCPTargetIPAddressLabel->setText(m_target->host());
    m_ui->TCPTargetTCPPortLabel->setText(QString::number(m_target->tcpPort()));
    m_ui->TCPTargetUDPPortLabel->setText(QString::number(m_target->udpPort()));
}

// Receive options

void TCPTab::applyRecvFormatUse()
{
    if (m_model)
        m_model->setRecvUseHexFile(m_ui->TCPRecvFileTextConvertCheckbox->isChecked());
}

void TCPTab::applyRecvFile(const QString &name)
{
    if (m_model)
        m_model->setRecvFileName(name);
    m_recvNameChecked = false;
}

// A name is checked once per change, when editing is finished or a chooser has set it.
void TCPTab::checkRecvFile()
{
    if (!m_model || m_recvNameChecked)
        return;
    m_recvNameChecked = true;
    (void)m_model->checkRecvFile(); // a problem is reported there
}

void TCPTab::openRecvFileRefferenceDialog()
{
    const QString name = QFileDialog::getSaveFileName(this, tr("Select output to"), QString(),
                                                      tr("All format file (*.*)"));
    if (name.isEmpty())
        return;
    m_ui->TCPRecvPathTextarea->setText(name);
    checkRecvFile();
}

void TCPTab::openRecvFile()
{
    openFileInShell(absolutePath(m_ui->TCPRecvPathTextarea->text()));
}

// The system's file opener takes only absolute paths; a relative one is taken from the working
// folder, where the transfer finds it too.
QString TCPTab::absolutePath(const QString &path)
{
    return path.isEmpty() ? path : QFileInfo(path).absoluteFilePath();
}

void TCPTab::applyRecvFormat()
{
    if (m_model)
        (void)m_model->setRecvFormat(
            m_ui->TCPRecvFormatTextarea->text()); // refusals reported there
}

void TCPTab::onTcpRecvFormatChanged()
{
    const TCPOutputOption *option = m_model ? m_model->recvOption() : nullptr;
    if (option && m_ui->TCPRecvFormatTextarea->text() != option->format())
        m_ui->TCPRecvFormatTextarea->setText(option->format());
}

// Send options

void TCPTab::applySendFormatUse()
{
    if (m_model)
        m_model->setSendUseHexFile(m_ui->TCPSendFileTextConvertCheckbox->isChecked());
}

void TCPTab::applySendFile(const QString &name)
{
    if (m_model)
        m_model->setSendFileName(name);
    m_sendNameChecked = false;
}

void TCPTab::checkSendFile()
{
    if (!m_model || m_sendNameChecked)
        return;
    m_sendNameChecked = true;
    (void)m_model->checkSendFile();
}

void TCPTab::openSendFileRefferenceDialog()
{
    const QString name = QFileDialog::getOpenFileName(this, tr("Choose send file"), QString(),
                                                      tr("All format file (*.*)"));
    if (name.isEmpty())
        return;
    m_ui->TCPSendPathTextarea->setText(name);
    checkSendFile();
}

void TCPTab::openSendFile()
{
    openFileInShell(absolutePath(m_ui->TCPSendPathTextarea->text()));
}

void TCPTab::applySendFormat()
{
    if (m_model)
        (void)m_model->setSendFormat(m_ui->TCPSendFormatTextarea->text());
}

// Worker status

void TCPTab::onTcpRecvStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status)
{
    m_ui->TCPRecvOptionGroupBox->setEnabled(status == TS_STOP);
    if (oldStatus == TS_STARTING && status == TS_RUN)
        emit connectSuccessed();
}

void TCPTab::onTcpSendStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status)
{
    m_ui->TCPSendOptionGroupBox->setEnabled(status == TS_STOP);
    if (oldStatus == TS_STARTING && status == TS_RUN)
        emit connectSuccessed();
}

void TCPTab::onErrorOccured(TCPTHREAD_ERROR error)
{
    if (error == TTE_CONNECT_ERROR)
        emit connectFailed();
}
