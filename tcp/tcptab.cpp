#include "tcp/tcptab.h"

#include "app/appmodel.h"
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
    // Children of the tab, so they close with it; as dialogs they are still windows of their own.
    m_recvDialog = new TCPRecvInfoDlg(this);
    m_sendDialog = new TCPSendInfoDlg(this);

    loadOptions();
    connectForm();
    connectWorker();
    m_setting = MavixSetting::current();
    showTarget();
    m_recvDialog->refreshWidgetStates();
}

TCPTab::~TCPTab() = default;

// Before the form is connected, so that filling it applies nothing back.
void TCPTab::loadOptions()
{
    if (TCPOutputOption *option = AppModel::currentRecvOption()) {
        m_ui->TCPRecvFileTextConvertCheckbox->setChecked(option->useHexFile());
        m_ui->TCPRecvFormatTextarea->setText(option->format());
        m_ui->TCPRecvPathTextarea->setText(option->fileName());
    }
    if (TCPOutputOption *option = AppModel::currentSendOption()) {
        m_ui->TCPSendFileTextConvertCheckbox->setChecked(option->useHexFile());
        m_ui->TCPSendFormatTextarea->setText(option->format());
        m_ui->TCPSendPathTextarea->setText(option->fileName());
    }
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

    if (TCPOutputOption *option = AppModel::currentRecvOption())
        connect(option, &TCPOutputOption::formatChanged, this, &TCPTab::onTcpRecvFormatChanged);
}

// The worker lives on its own thread: these connections are queued.
void TCPTab::connectWorker()
{
    TCPThread *worker = TCPThread::instance();
    if (!worker)
        return;
    connect(worker, &TCPThread::recvStatusChanged, this, &TCPTab::onTcpRecvStatusChanged);
    connect(worker, &TCPThread::sendStatusChanged, this, &TCPTab::onTcpSendStatusChanged);
    connect(worker, &TCPThread::errorOccured, this, &TCPTab::onErrorOccured);
    onTcpRecvStatusChanged(TS_STOP, worker->recvStatus());
    onTcpSendStatusChanged(TS_STOP, worker->sendStatus());
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

void TCPTab::applyTargetSettingChange(const MavixSetting &setting)
{
    m_setting = setting;
    showTarget();
}

void TCPTab::showTarget()
{
    m_ui->TCPTargetIPAddressLabel->setText(m_setting.ipAddress);
    m_ui->TCPTargetTCPPortLabel->setText(QString::number(m_setting.tcpDataPort));
    m_ui->TCPTargetUDPPortLabel->setText(QString::number(m_setting.udpPort));
}

// Receive options

void TCPTab::applyRecvFormatUse()
{
    if (AppModel *model = AppModel::instance())
        model->setRecvUseHexFile(m_ui->TCPRecvFileTextConvertCheckbox->isChecked());
}

void TCPTab::applyRecvFile(const QString &name)
{
    if (AppModel *model = AppModel::instance())
        model->setRecvFileName(name);
    m_recvNameChecked = false;
}

// A name is checked once per change, when editing is finished or a chooser has set it.
void TCPTab::checkRecvFile()
{
    AppModel *model = AppModel::instance();
    if (!model || m_recvNameChecked)
        return;
    m_recvNameChecked = true;
    (void)model->checkRecvFile(); // a problem is reported there
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
    if (AppModel *model = AppModel::instance())
        (void)model->setRecvFormat(m_ui->TCPRecvFormatTextarea->text()); // refusals reported there
}

void TCPTab::onTcpRecvFormatChanged()
{
    TCPOutputOption *option = AppModel::currentRecvOption();
    if (option && m_ui->TCPRecvFormatTextarea->text() != option->format())
        m_ui->TCPRecvFormatTextarea->setText(option->format());
}

// Send options

void TCPTab::applySendFormatUse()
{
    if (AppModel *model = AppModel::instance())
        model->setSendUseHexFile(m_ui->TCPSendFileTextConvertCheckbox->isChecked());
}

void TCPTab::applySendFile(const QString &name)
{
    if (AppModel *model = AppModel::instance())
        model->setSendFileName(name);
    m_sendNameChecked = false;
}

void TCPTab::checkSendFile()
{
    AppModel *model = AppModel::instance();
    if (!model || m_sendNameChecked)
        return;
    m_sendNameChecked = true;
    (void)model->checkSendFile();
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
    if (AppModel *model = AppModel::instance())
        (void)model->setSendFormat(m_ui->TCPSendFormatTextarea->text());
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
