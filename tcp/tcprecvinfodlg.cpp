#include "tcp/tcprecvinfodlg.h"

#include "app/appmodel.h"
#include "app/devicetarget.h"
#include "app/log.h"
#include "app/report.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/transferfigurefields.h"
#include "tcp/transferfigures.h"
#include "ui_tcprecvinfodlg.h"

#include <QMetaObject>
#include <QMutexLocker>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>

namespace {

constexpr int kDisplayOff = TCPOutputOption::kDisplayOff;
constexpr int kDisplayText = TCPOutputOption::kDisplayText;
constexpr int kDisplayHex = TCPOutputOption::kDisplayHex;

// QTextCursor takes every one of these as the end of a paragraph; turning them into line feeds
// lets the display count line lengths on a single kind of line end.
QString withLineFeeds(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    for (QChar &ch : text) {
        if (ch == QLatin1Char('\r') || ch == QChar::ParagraphSeparator || ch.unicode() == 0xFDD0 ||
            ch.unicode() == 0xFDD1)
            ch = QLatin1Char('\n');
    }
    return text;
}

} // namespace

TCPRecvInfoDlg::TCPRecvInfoDlg(AppModel *model, TCPThread *worker, const DeviceTarget *target,
                               QWidget *parent)
    : QDialog(parent), m_ui(new Ui::TCPRecvInfoDlg), m_model(model), m_worker(worker),
      m_target(target)
{
    m_ui->setupUi(this);
    setModal(false);
    m_figures = {m_ui->SizeTextarea,     m_ui->TCPSizeUnitLabel, m_ui->TimeTextarea,
                 m_ui->TCPTimeUnitLabel, m_ui->RateTextarea,     m_ui->RateUnitLabel};
    m_figures.prepare(m_ui->DataTextarea);
    m_ui->RatePlot->setUnit(tr("MB/s"));

    m_status = m_worker->recvStatus();

    m_progressTimer = new QTimer(this);
    m_progressTimer->setObjectName(QStringLiteral("progressTimer"));
    m_progressTimer->setInterval(kProgressIntervalMs);
    connectForm();
    connectWorker();
    m_progressTimer->start();

    m_ui->RecvButton->setEnabled(m_status == TS_STOP);
    m_ui->StopButton->setEnabled(m_status == TS_RUN);
    refreshWidgetStates();
}

TCPRecvInfoDlg::~TCPRecvInfoDlg() = default;

void TCPRecvInfoDlg::connectForm()
{
    connect(m_ui->RecvButton, &QPushButton::clicked, this, &TCPRecvInfoDlg::beginReceive);
    connect(m_ui->StopButton, &QPushButton::clicked, this, &TCPRecvInfoDlg::stopReceive);
    connect(m_ui->DataShowCheckbox, &QCheckBox::clicked, this, &TCPRecvInfoDlg::applyShowDataFlag);
    connect(m_ui->ShowHexCheckbox, &QCheckBox::clicked, this, &TCPRecvInfoDlg::applyShowHexFlag);
    connect(m_ui->FormatTextarea, &QLineEdit::textChanged, this, &TCPRecvInfoDlg::applyFormat);
    connect(m_ui->ClearButton, &QPushButton::clicked, m_ui->DataTextarea, &QPlainTextEdit::clear);
    connect(m_progressTimer, &QTimer::timeout, this, &TCPRecvInfoDlg::progressUpdateTimeout);
}

// The worker lives on its own thread: these connections are queued.
void TCPRecvInfoDlg::connectWorker()
{
    connect(m_worker, &TCPThread::recvStatusChanged, this, &TCPRecvInfoDlg::onRecvStatusChanged);
    connect(m_worker, &TCPThread::recvProgress, this, &TCPRecvInfoDlg::showProgress);
    connect(m_worker, &TCPThread::recvStringAdded, this, &TCPRecvInfoDlg::reserveTextOutput);
    connect(m_worker, &TCPThread::errorOccured, this, &TCPRecvInfoDlg::onErrorOccured);
    connect(m_worker, &TCPThread::recvReported, this, &TCPRecvInfoDlg::showRunReport);
    connect(option(), &TCPOutputOption::formatChanged, this, &TCPRecvInfoDlg::onFormatChanged);
}

TCPOutputOption *TCPRecvInfoDlg::option() const
{
    return m_model->recvOption();
}

// The file of the run and how it ended and, in red, why it failed; a failed run is not announced
// as finished.
void TCPRecvInfoDlg::showRunReport(const QString &text, bool error)
{
    if (TransferFigureFields::showRunReport(m_ui->FileLabel, m_ui->ErrorLabel, text, error))
        m_failed = true;
}

// Flags and format

void TCPRecvInfoDlg::applyShowDataFlag(bool /*flag*/)
{
    applyDisplayMode();
}

void TCPRecvInfoDlg::applyShowHexFlag(bool /*flag*/)
{
    applyDisplayMode();
}

void TCPRecvInfoDlg::applyDisplayMode()
{
    int mode = kDisplayOff;
    if (m_ui->DataShowCheckbox->isChecked())
        mode = m_ui->ShowHexCheckbox->isChecked() ? kDisplayHex : kDisplayText;
    if (mode != option()->displayMode()) {
        QMutexLocker lock(&m_mutex);
        m_decoder.restart(); // a character begun as text is not ended by hex text
    }
    option()->setDisplayMode(mode);
    m_worker->setDisplayMode(mode);
    refreshWidgetStates();
    reserveTextOutput();
}

void TCPRecvInfoDlg::applyFormat(const QString &value)
{
    if (const std::optional<QString> refusal = option()->setFormat(value))
        reportError(*refusal);
}

void TCPRecvInfoDlg::onFormatChanged()
{
    const TCPOutputOption *recvOption = option();
    if (m_ui->FormatTextarea->text() != recvOption->format())
        m_ui->FormatTextarea->setText(recvOption->format());
}

void TCPRecvInfoDlg::refreshWidgetStates()
{
    const TCPOutputOption *recvOption = option();
    const int mode = recvOption->displayMode();
    m_ui->DataShowCheckbox->setChecked(mode != kDisplayOff);
    if (mode != kDisplayOff)
        m_ui->ShowHexCheckbox->setChecked(mode == kDisplayHex);
    const bool showData = m_ui->DataShowCheckbox->isChecked();
    m_ui->ShowHexCheckbox->setEnabled(showData);
    m_ui->FormatTextarea->setEnabled(m_status == TS_STOP && showData &&
                                     m_ui->ShowHexCheckbox->isChecked());
    if (m_ui->FormatTextarea->text() != recvOption->format())
        m_ui->FormatTextarea->setText(recvOption->format());
}

// Begin and stop

void TCPRecvInfoDlg::beginReceive()
{
    const THREAD_STATUS status = m_worker->recvStatus();
    if (status != TS_STOP) {
        LOG_WARN(QStringLiteral("Invalid recv status: %1").arg(threadStatusText(status)));
        return;
    }
    m_elapsedTimer.start();
    m_stoppedElapsedMs = -1;
    m_recvSize = 0;
    m_failed = false;
    m_ui->ErrorLabel->clear();
    m_ui->FileLabel->clear();
    m_ui->DataTextarea->clear();
    m_rateSampler.restart();
    m_ui->RatePlot->clear();
    m_ui->RatePlot->setWholeRun(false);
    {
        QMutexLocker lock(&m_mutex);
        m_decoder.restart();
    }
    m_worker->beginRecvThread(TransferRun::of(*option(), m_target->host(), m_target->tcpPort()));
}

void TCPRecvInfoDlg::stopReceive()
{
    const THREAD_STATUS status = m_worker->recvStatus();
    if (status != TS_RUN) {
        LOG_WARN(QStringLiteral("Invalid recv status: %1").arg(threadStatusText(status)));
        return;
    }
    m_worker->stopReceiving();
}

void TCPRecvInfoDlg::onRecvStatusChanged(THREAD_STATUS /*oldStatus*/, THREAD_STATUS status)
{
    m_status = status;
    m_ui->RecvButton->setEnabled(status == TS_STOP);
    m_ui->StopButton->setEnabled(status == TS_RUN);
    if (status == TS_STARTING)
        reportResult(tr("Receiving began"));
    if (status == TS_STOP) {
        if (!m_failed)
            reportResult(tr("Receiving finished"));
        if (m_elapsedTimer.isValid() && m_stoppedElapsedMs < 0)
            m_stoppedElapsedMs = m_elapsedTimer.elapsed();
        refreshFigures();
        endRatePlot();
        textOutput(true);
    }
    refreshWidgetStates();
}

void TCPRecvInfoDlg::onErrorOccured(TCPTHREAD_ERROR /*error*/)
{
    refreshWidgetStates();
}

// Progress

void TCPRecvInfoDlg::showProgress(qint64 recvSize)
{
    m_recvSize = recvSize;
}

void TCPRecvInfoDlg::progressUpdateTimeout()
{
    if (!m_elapsedTimer.isValid())
        return;
    refreshFigures();
}

qint64 TCPRecvInfoDlg::runElapsedMs() const
{
    return m_stoppedElapsedMs >= 0 ? m_stoppedElapsedMs : m_elapsedTimer.elapsed();
}

void TCPRecvInfoDlg::refreshFigures()
{
    if (!m_elapsedTimer.isValid())
        return;
    m_figures.show(m_recvSize, runElapsedMs());
    if (const std::optional<QPointF> rate = m_rateSampler.take(m_recvSize, runElapsedMs()))
        m_ui->RatePlot->append(rate->x(), rate->y());
}

// Once the run has ended the plot shows all of it.
void TCPRecvInfoDlg::endRatePlot()
{
    if (!m_elapsedTimer.isValid())
        return;
    if (const std::optional<QPointF> rate = m_rateSampler.finish(m_recvSize, runElapsedMs()))
        m_ui->RatePlot->append(rate->x(), rate->y());
    m_ui->RatePlot->setWholeRun(true);
}

// Text output

void TCPRecvInfoDlg::reserveTextOutput()
{
    QMutexLocker lock(&m_mutex);
    if (m_textOutputReserved)
        return;
    m_textOutputReserved = true;
    QMetaObject::invokeMethod(
        this, [this] { textOutput(false); }, Qt::QueuedConnection);
}

void TCPRecvInfoDlg::textOutput(bool forceAll)
{
    QMutexLocker lock(&m_mutex);
    m_textOutputReserved = false;
    const int mode = option()->displayMode();
    if (mode == kDisplayOff) {
        m_decoder.restart();
        (void)m_worker->takeRecvData(-1); // text made before display was switched off
        return;
    }

    // At most kPendingLimitBytes a pass, so that one pass never holds the GUI for long. The
    // decoder keeps a character whose last bytes are still to come (hex text carries the
    // format's UTF-8).
    const QByteArray taken = m_worker->takeRecvData(kPendingLimitBytes);
    const bool workerMayHoldMore = taken.size() >= kPendingLimitBytes;
    QString text = m_decoder.decode(taken);
    // Once the receive has ended no byte will complete a partial character: show that it was there.
    if ((forceAll || m_status == TS_STOP) && !workerMayHoldMore)
        text += m_decoder.finish();
    if (!text.isEmpty())
        appendToTextArea(text);
    // A partial character alone waits for the worker's next recvStringAdded().
    if (workerMayHoldMore)
        reserveTextOutput();
}

void TCPRecvInfoDlg::appendToTextArea(const QString &text)
{
    QPlainTextEdit *area = m_ui->DataTextarea;
    QTextCursor cursor = area->textCursor();
    cursor.movePosition(QTextCursor::End);
    area->setTextCursor(cursor);

    const qsizetype currentLineChars = area->document()->lastBlock().length() - 1;
    const QString lines =
        TransferFigures::breakLongLines(withLineFeeds(text), currentLineChars, kLongestLineChars);
    const qsizetype lineEnd = lines.indexOf(QLatin1Char('\n'));
    if (lineEnd < 0 || area->document()->isEmpty()) {
        area->insertPlainText(lines);
    } else {
        // The head continues the current line; the rest starts a new one.
        if (lineEnd > 0)
            area->insertPlainText(lines.left(lineEnd));
        area->appendPlainText(lines.mid(lineEnd + 1));
    }
    QScrollBar *bar = area->verticalScrollBar();
    bar->setValue(bar->maximum());
}
