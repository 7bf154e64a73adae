// The non-modal "Receive Dialog": starts and stops receiving from the device's TCP data port and
// shows size, time, rate and, optionally, the received data as text or hex text.
#pragma once

#include "app/utf8piecedecoder.h"
#include "tcp/ratesampler.h"
#include "tcp/tcpthread.h"
#include "tcp/transferfigurefields.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QRecursiveMutex>

#include <memory>

namespace Ui {
class TCPRecvInfoDlg;
}
class AppModel;
class DeviceTarget;
class QTimer;
class TCPOutputOption;

class TCPRecvInfoDlg : public QDialog
{
    Q_OBJECT

public:
    // Display
    static constexpr int kProgressIntervalMs = 500;
    static constexpr qsizetype kPendingLimitBytes = 4096;
    // The data area drops its oldest lines beyond this many, and breaks lines longer than
    // kLongestLineChars, so that a full-rate stream never makes it slow to lay out.
    static constexpr int kMaximumLineCount = TransferFigureFields::kMaximumLineCount;
    static constexpr qsizetype kLongestLineChars = 1024;

    // The model, the worker and the target are handed over by whoever makes the dialog (not owned;
    // they outlive it). A run is aimed at the target as it stands when Receive is pressed.
    TCPRecvInfoDlg(AppModel *model, TCPThread *worker, const DeviceTarget *target,
                   QWidget *parent = nullptr);
    ~TCPRecvInfoDlg() override;

    // Sets the boxes and the format field from the receive option and the receive status.
    void refreshWidgetStates();

public slots:
    void applyShowDataFlag(bool flag);
    void applyShowHexFlag(bool flag);
    void applyFormat(const QString &value);
    void showProgress(qint64 recvSize);
    void reserveTextOutput();
    void progressUpdateTimeout();
    void beginReceive();
    void stopReceive();
    void onErrorOccured(TCPTHREAD_ERROR error);
    void onRecvStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void onFormatChanged();
    void showRunReport(const QString &text, bool error);

public:
    Q_INVOKABLE void textOutput(bool forceAll);

private:
    void connectForm();
    void connectWorker();
    void applyDisplayMode();
    void refreshFigures();
    void endRatePlot();
    [[nodiscard]] qint64 runElapsedMs() const;
    void appendToTextArea(const QString &text);
    [[nodiscard]] TCPOutputOption *option() const;

    std::unique_ptr<Ui::TCPRecvInfoDlg> m_ui;
    AppModel *m_model = nullptr;
    TCPThread *m_worker = nullptr;
    const DeviceTarget *m_target = nullptr;
    TransferFigureFields m_figures;
    RateSampler m_rateSampler;         // feeds RatePlot from the figures shown
    QTimer *m_progressTimer = nullptr; // child "progressTimer", running for the dialog's life
    QElapsedTimer m_elapsedTimer;
    qint64 m_stoppedElapsedMs = -1; // frozen run time once the receive has ended
    QRecursiveMutex m_mutex;
    bool m_textOutputReserved = false;
    // Display text taken from the worker, as text or hex text; holds a character whose last
    // bytes have not been taken yet. Starts over with each run and each display mode.
    Utf8PieceDecoder m_decoder;
    qint64 m_recvSize = 0;
    bool m_failed = false; // the current run has reported a failure
    // The receive status as last announced by the worker: the widgets follow it in step with the
    // data and progress signals queued before it.
    THREAD_STATUS m_status = TS_STOP;
};
