// The "Data(TCP)" tab: the files, hex-format boxes and formats of both transfer directions, the
// target device's address, and the buttons that open the receive and send dialogs.
#pragma once

#include "settings/mavixsetting.h"
#include "tcp/tcpthread.h"

#include <QWidget>

#include <memory>

namespace Ui {
class TCPTab;
}
class AppModel;
class DeviceTarget;
class QDialog;
class TCPOutputOption;
class TCPRecvInfoDlg;
class TCPSendInfoDlg;

class TCPTab : public QWidget
{
    Q_OBJECT

public:
    explicit TCPTab(QWidget *parent = nullptr);
    ~TCPTab() override;

    // Hands over the application model, the transfer worker and the program's target (none
    // owned), fills the form from the model and makes the dialogs; until then the tab is inert.
    void setup(AppModel *model, TCPThread *worker, DeviceTarget *target);

    [[nodiscard]] TCPRecvInfoDlg *recvDialog() const { return m_recvDialog; }
    [[nodiscard]] TCPSendInfoDlg *sendDialog() const { return m_sendDialog; }

signals:
    void connectSuccessed();
    void connectFailed();

public slots:
    // Dialogs and target
    void openReceiveInfoDialog();
    void openSendInfoDialog();
    void applyTargetSettingChange(const MavixSetting &setting);

    // Receive options
    void applyRecvFormatUse();
    void applyRecvFile(const QString &name);
    void openRecvFileRefferenceDialog();
    void openRecvFile();
    void applyRecvFormat();
    void onTcpRecvFormatChanged();

    // Send options
    void applySendFormatUse();
    void applySendFile(const QString &name);
    void openSendFileRefferenceDialog();
    void openSendFile();
    void applySendFormat();

    // File checks, once editing is finished or a chooser has set the name
    void checkRecvFile();
    void checkSendFile();

    // Worker status
    void onTcpRecvStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void onTcpSendStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);

private slots:
    void onErrorOccured(TCPTHREAD_ERROR error);

private:
    void loadOptions();
    void connectForm();
    void connectWorker();
    void showTarget();
    static void showDialog(QDialog *dialog);
    [[nodiscard]] static QString absolutePath(const QString &path);

    std::unique_ptr<Ui::TCPTab> m_ui;
    AppModel *m_model = nullptr;
    TCPThread *m_worker = nullptr;
    DeviceTarget *m_target = nullptr;
    TCPRecvInfoDlg *m_recvDialog = nullptr;
    TCPSendInfoDlg *m_sendDialog = nullptr;
    // The names in the fields have been checked since they last changed: leaving a field checks
    // once.
    bool m_recvNameChecked = true;
    bool m_sendNameChecked = true;
};
