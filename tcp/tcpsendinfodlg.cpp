#include "tcp/tcpsendinfodlg.h"

#include "app/appmodel.h"
#include "app/devicetarget.h"
#include "app/log.h"
#include "app/report.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/transferfigurefields.h"
#include "tcp/transferfigures.h"
#include "ui_tcpsendinfodlg.h"

#include <QFileInfo>
#include <QMetaObject>
#include <QTextCursor>

TCPSendInfoDlg::TCPSendInfoDlg(AppModel *model, TCPThread *worker, const DeviceTarget *target,
                               QWidget *parent)
    : QDialog(parent), m_ui(new Ui::TCPSendInfoDlg), m_model(model), m_worker(worker),
      m_target(target)
{
    m_ui->setupUi(this);
    setModal(false);
    m_figures = {m_ui->SizeTextarea,     m_ui->TCPSizeUnitLabel, m_ui->TimeTextarea,
                 m_ui->TCPTimeUnitLabel, m_ui->RateTextarea,     m_ui->RateUnitLabel};
    m_figures.prepare(m_ui->DataTextarea);
    m_ui->RatePlot->setUnit(tr("MB/s"));
    m_tick = new QTimer(this);
    m_tick->setInterval(int(kRefreshIntervalMs));
    connect(m_tick, &QTimer::timeout, this, [this] {
        m_elapsedMsec = qMax(m_elapsedMsec, m_runClock.elapsed());
        refreshDisplay();
    });
    m_ui->DataShowCheckbox->setChecked(option()->showData());
    m_status = m_worker->sendStatus();
    m_ui->SendButton->setEnabled(m_status == TS_STOP);
    m_ui->StopButton->setEnabled(m_status == TS_RUN);

    connectForm();
    connectWorker();
}

TCPSendInfoDlg::~TCPSendInfoDlg() = default;

void TCPSendInfoDlg::connectForm()
{
    connect(m_ui->SendButton, &QPushButton::clicked, this, &TCPSendInfoDlg::beginSend);
    connect(m_ui->StopButton, &QPushButton::clicked, this, &TCPSendInfoDlg::stopSend);
    connect(m_ui->DataShowCheckbox, &QCheckBox::clicked, this, &TCPSendInfoDlg::applyShowDataFlag);
    connect(m_ui->ClearButton, &QPushButton::clicked, m_ui->DataTextarea, &QPlainTextEdit::clear);
}

// The worker lives on its own thread: these connections are queued, and arrive in the order the
// worker emitted them.
void TCPSendInfoDlg::connectWorker()
{
    connect(m_worker, &TCPThread::sendStatusChanged, this, &TCPSendInfoDlg::onSendStatusChanged);
    connect(m_worker, &TCPThread::writeFinished, this, &TCPSendInfoDlg::finishSend);
    connect(m_worker, &TCPThread::sendStringAdded, this, &TCPSendInfoDlg::addString);
    connect(m_worker, &TCPThread::sendProgress, this, &TCPSendInfoDlg::showProgress);
    connect(m_worker, &TCPThread::errorOccured, this, &TCPSendInfoDlg::onErrorOccured);
    connect(m_worker, &TCPThread::sendReported, this, &TCPSendInfoDlg::showRunReport);
}

TCPOutputOption *TCPSendInfoDlg::option() const
{
    return m_model->sendOption();
}

// The file of the run and how it ended and, in red, why it failed; a failed run is not announced
// as finished.
void TCPSendInfoDlg::showRunReport(const QString &text, bool error)
{
    if (TransferFigureFields::showRunReport(m_ui->FileLabel, m_ui->ErrorLabel, text, error))
        m_failed = true;
}

qint64 TCPSendInfoDlg::sendFileSize() const
{
    return QFileInfo(option()->fileName()).size();
}

void TCPSendInfoDlg::applyShowDataFlag(bool flag)
{
    option()->setShowData(flag);
}

// Begin and stop

void TCPSendInfoDlg::beginSend()
{
    const THREAD_STATUS status = m_worker->sendStatus();
    if (status != TS_STOP) {
        LOG_WARN(QStringLiteral("Invalid send status: %1").arg(threadStatusText(status)));
        return;
    }
    m_ui->sendProgressBar->reset();
    m_sentSize = 0;
    m_fileSize = sendFileSize();
    m_elapsedMsec = 1;
    m_lastRefreshMs = 0;
    m_failed = false;
    m_stopped = false;
    m_figures.show(0, 1); // a new run starts from zero, not from the last run's figures
    m_rateSampler.restart();
    m_ui->RatePlot->clear();
    m_ui->RatePlot->setWholeRun(false);
    m_ui->ErrorLabel->clear();
    m_ui->FileLabel->clear();
    m_worker->beginSendThread(TransferRun::of(*option(), m_target->host(), m_target->tcpPort()));
}

void TCPSendInfoDlg::stopSend()
{
    const THREAD_STATUS status = m_worker->sendStatus();
    if (status != TS_RUN) {
        LOG_WARN(QStringLiteral("Invalid send status: %1").arg(threadStatusText(status)));
        return;
    }
    // A direct call: the worker never holds its lock across a wait for the device, and its send
    // loop looks at the status between short waits, so the stop takes effect at once.
    // The loss is reported once the run has stopped, from the same final figure the dialog
    // shows.
    m_stopped = true;
    m_worker->stopSending();
}

void TCPSendInfoDlg::finishSend()
{
    showProgress(m_sentSize, sendFileSize(), m_elapsedMsec);
}

void TCPSendInfoDlg::onErrorOccured(TCPTHREAD_ERROR /*error*/)
{
    m_ui->SendButton->setEnabled(m_status == TS_STOP);
    m_ui->StopButton->setEnabled(m_status == TS_RUN);
}

void TCPSendInfoDlg::onSendStatusChanged(THREAD_STATUS /*oldStatus*/, THREAD_STATUS status)
{
    m_status = status;
    m_ui->StopButton->setEnabled(status == TS_RUN);
    m_ui->SendButton->setEnabled(status == TS_STOP);
    if (status == TS_STARTING)
        reportResult(tr("Sending began"));
    if (status == TS_RUN) {
        m_runClock.start();
        m_tick->start();
    }
    if (status == TS_STOP) {
        m_tick->stop();
        if (m_runClock.isValid())
            m_elapsedMsec = qMax(m_elapsedMsec, m_runClock.elapsed());
        m_runClock.invalidate();
        if (m_stopped)
            reportError(TransferFigures::lossText(m_sentSize, m_fileSize));
        else if (!m_failed)
            reportResult(tr("Sending finished"));
        refreshDisplay();
        endRatePlot();
    }
}

// Progress

void TCPSendInfoDlg::showProgress(qint64 sentSize, qint64 fileSize, qint64 elapsedMsec)
{
    if (sentSize >= 0)
        m_sentSize = sentSize;
    if (elapsedMsec >= 0)
        m_elapsedMsec = qMax<qint64>(elapsedMsec, 1);
    m_fileSize = fileSize;
    const qint64 runMs = m_elapsedMsec;
    if (runMs - m_lastRefreshMs >= kRefreshIntervalMs || runMs < m_lastRefreshMs ||
        sentSize == fileSize) {
        refreshDisplay();
        m_lastRefreshMs = runMs;
    }
}

void TCPSendInfoDlg::refreshDisplay()
{
    m_figures.show(m_sentSize, m_elapsedMsec);
    if (m_status == TS_RUN) {
        if (const std::optional<QPointF> rate = m_rateSampler.take(m_sentSize, m_elapsedMsec))
            m_ui->RatePlot->append(rate->x(), rate->y());
    }

    // The bar keeps the end of a run (full after a complete send) until the next one begins.
    const ProgressBarRange range = TransferFigures::progressBarRange(m_fileSize, m_sentSize);
    if (range.maximum == 0) { // an empty range would show a busy bar
        m_ui->sendProgressBar->reset();
        return;
    }
    m_ui->sendProgressBar->setRange(0, range.maximum);
    m_ui->sendProgressBar->setValue(range.value);
}

// Once the run has ended the plot shows all of it.
void TCPSendInfoDlg::endRatePlot()
{
    if (const std::optional<QPointF> rate = m_rateSampler.finish(m_sentSize, m_elapsedMsec))
        m_ui->RatePlot->append(rate->x(), rate->y());
    m_ui->RatePlot->setWholeRun(true);
}

void TCPSendInfoDlg::addString(const QString &text, bool /*formatted*/, qint64 /*bytesFrom*/,
                               qint64 /*bytes*/)
{
    if (!m_ui->DataShowCheckbox->isChecked())
        return;
    QPlainTextEdit *area = m_ui->DataTextarea;
    QTextCursor cursor = area->textCursor();
    cursor.movePosition(QTextCursor::End);
    area->setTextCursor(cursor);
    area->insertPlainText(text);
    cursor.movePosition(QTextCursor::End);
    area->setTextCursor(cursor);
}
