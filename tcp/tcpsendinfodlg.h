// The non-modal "Send Dialog": starts and stops sending the chosen file to the device's TCP data
// port and shows a progress bar, size, time, rate and, optionally, the data sent.
#pragma once

#include "tcp/ratesampler.h"
#include "tcp/tcpthread.h"
#include "tcp/transferfigurefields.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>

#include <memory>

namespace Ui {
class TCPSendInfoDlg;
}
class AppModel;
class DeviceTarget;
class TCPOutputOption;

class TCPSendInfoDlg : public QDialog
{
    Q_OBJECT

public:
    // Display
    static constexpr qint64 kRefreshIntervalMs = 501;
    static constexpr int kMaximumLineCount = TransferFigureFields::kMaximumLineCount;

    // The model, the worker and the target are handed over by whoever makes the dialog (not owned;
    // they outlive it). A run is aimed at the target as it stands when Send is pressed.
    TCPSendInfoDlg(AppModel *model, TCPThread *worker, const DeviceTarget *target,
                   QWidget *parent = nullptr);
    ~TCPSendInfoDlg() override;

public slots:
    void applyShowDataFlag(bool flag);
    void beginSend();
    void finishSend();
    void onErrorOccured(TCPTHREAD_ERROR error);
    void stopSend();
    void addString(const QString &text, bool formatted, qint64 bytesFrom, qint64 bytes);
    void showProgress(qint64 sentSize, qint64 fileSize, qint64 elapsedMsec);
    void onSendStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void showRunReport(const QString &text, bool error);

private:
    void connectForm();
    void connectWorker();
    void refreshDisplay();
    void endRatePlot();
    [[nodiscard]] TCPOutputOption *option() const;
    [[nodiscard]] qint64 sendFileSize() const;

    std::unique_ptr<Ui::TCPSendInfoDlg> m_ui;
    AppModel *m_model = nullptr;
    TCPThread *m_worker = nullptr;
    const DeviceTarget *m_target = nullptr;
    TransferFigureFields m_figures;
    RateSampler m_rateSampler; // feeds RatePlot from the figures shown
    qint64 m_sentSize = 0;
    qint64 m_fileSize = 0;
    qint64 m_elapsedMsec = 1;
    qint64 m_lastRefreshMs = 0; // run time of the last display refresh
    bool m_failed = false;      // the current run has reported a failure
    bool m_stopped = false;     // the user stopped the current run
    // The dialog's own clock of the run: figures move while the device takes nothing, and a
    // finished run counts until the connection's orderly close.
    QElapsedTimer m_runClock;
    QTimer *m_tick = nullptr;
    // The send status as last announced by the worker: the buttons and the bar follow it in step
    // with the progress signals queued before it, so the last report of a run still fills the bar.
    THREAD_STATUS m_status = TS_STOP;
};
