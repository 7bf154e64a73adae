#include "cli/transfercommand.h"

#include "app/appmodel.h"
#include "app/devicetarget.h"
#include "app/signalwatcher.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/streampath.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcpthread.h"
#include "wren/wrenagent.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <limits>

namespace {

constexpr int kProgressIntervalMs = 250;
// The closing sequence's own limit: the worker gives a stuck device ten seconds to take the rest.
constexpr int kSocketCloseWaitMs = 11000;
constexpr int kSocketCloseStepMs = 10;

QString secondsText(qint64 ms)
{
    return QString::number(double(ms) / 1000.0, 'f', 3);
}

// Megabytes (10^6 bytes) per second; an elapsed time below one millisecond counts as one.
QString rateText(qint64 bytes, qint64 ms)
{
    return QString::number(double(bytes) / 1000.0 / double(std::max<qint64>(ms, 1)), 'f', 1);
}

} // namespace

TransferCommand::TransferCommand(const CommandContext &context, Direction direction,
                                 QObject *parent)
    : QObject(parent), m_context(context), m_direction(direction)
{
}

int TransferCommand::run()
{
    if (!readLimits())
        return m_refusedExitCode;
    m_fileName = m_context.arguments.value(0);
    m_errorsBefore = m_context.console->errorCount();

    AppModel model;
    if (!prepareFile(model))
        return ExitCode::kConnectionOrFile;
    QThread thread;
    TCPThread worker(&thread);
    m_worker = &worker;
    // --timeout shortens every wait for the device, on the data port too.
    if (m_context.timeoutMs != WrenAgent::kAccessTimeoutMs)
        worker.setTimeouts(m_context.timeoutMs, m_context.timeoutMs, m_context.timeoutMs);
    connect(&worker, &TCPThread::recvProgress, this, &TransferCommand::onRecvProgress);
    connect(&worker, &TCPThread::sendProgress, this, &TransferCommand::onSendProgress);
    connect(&worker, receiving() ? &TCPThread::recvStatusChanged : &TCPThread::sendStatusChanged,
            this, &TransferCommand::onStatusChanged);

    SignalWatcher termination;
    connect(&termination, &SignalWatcher::signalReceived, this, &TransferCommand::interrupt);
    QTimer progressTimer;
    if (m_context.console->showsProgress()) {
        connect(&progressTimer, &QTimer::timeout, this, &TransferCommand::showProgress);
        progressTimer.start(kProgressIntervalMs);
    }

    thread.start();
    m_clock.start();
    begin();
    m_loop.exec();
    progressTimer.stop();
    waitForSocketClose();
    // A send is done when the device has taken the bytes: the connection's orderly close.
    if (!receiving() && !m_interrupted && m_stoppedAtMs >= 0)
        m_stoppedAtMs = m_clock.elapsed();
    thread.quit();
    thread.wait();
    m_worker = nullptr;

    m_context.console->endProgress();
    keepOnlyByteLimit();
    countBytesInFile();
    printSummary();
    return exitCode();
}

bool TransferCommand::readLimits()
{
    if (!receiving())
        return true;
    const QCommandLineParser &parser = *m_context.parser;
    const auto limit = [&](const QString &name, qint64 scale, qint64 *value) {
        if (!parser.isSet(name))
            return true;
        bool ok = false;
        const qint64 number = parser.value(name).toLongLong(&ok);
        if (ok && number >= 1 && number <= std::numeric_limits<qint64>::max() / scale) {
            *value = number * scale;
            return true;
        }
        m_refusedExitCode = m_context.refuse(
            tr("--%1 must be a whole number from 1, not %2").arg(name, parser.value(name)),
            ExitCode::kRefusedInput);
        return false;
    };
    return limit(QStringLiteral("bytes"), 1, &m_byteLimit) &&
           limit(QStringLiteral("seconds"), 1000, &m_timeLimitMs);
}

// The file is named through the application model as the TCP tab names it, with the same check.
// Nothing is shown: the whole bandwidth goes to the file.
bool TransferCommand::prepareFile(AppModel &model)
{
    // "-" is standard output for recv and standard input for send, so that the tool fits in a
    // pipeline; a FIFO or a device is written into as it is.
    const QString path = StreamPath::isStandardStream(m_fileName)
                             ? QString::fromLatin1(receiving() ? "/dev/stdout" : "/dev/stdin")
                             : m_fileName;
    if (receiving()) {
        model.recvOption()->setDisplayMode(TCPOutputOption::kDisplayOff);
        model.setRecvFileName(path);
        m_run = runOf(*model.recvOption());
        return model.checkRecvFile();
    }
    model.sendOption()->setShowData(false);
    model.setSendFileName(path);
    if (!model.checkSendFile())
        return false;
    m_run = runOf(*model.sendOption());
    m_fileSize = QFileInfo(path).isFile() ? QFile(path).size() : -1;
    return true;
}

TransferRun TransferCommand::runOf(const TCPOutputOption &option) const
{
    return TransferRun::of(option, m_context.target->host(), m_context.target->tcpPort());
}

void TransferCommand::begin()
{
    if (receiving())
        m_worker->beginRecvThread(m_run);
    else
        m_worker->beginSendThread(m_run);
}

void TransferCommand::stop()
{
    m_stopRequested = true;
    if (!m_running || !m_worker)
        return; // a stop before the run began is carried out once it runs
    if (receiving())
        m_worker->stopReceiving();
    else
        QMetaObject::invokeMethod(m_worker, &TCPThread::stopSending, Qt::QueuedConnection);
}

void TransferCommand::interrupt()
{
    m_interrupted = true;
    stop();
}

void TransferCommand::onStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status)
{
    Q_UNUSED(oldStatus)
    if (status == TS_RUN) {
        m_running = true;
        m_clock.restart();
        // The time limit counts from the connection on, as the summary's time does.
        if (m_timeLimitMs > 0)
            QTimer::singleShot(m_timeLimitMs, Qt::PreciseTimer, this, &TransferCommand::stop);
        if (m_stopRequested)
            stop();
    } else if (status == TS_STOPPING || status == TS_STOP) {
        if (m_stoppedAtMs < 0 && m_running)
            m_stoppedAtMs = m_clock.elapsed();
        m_running = false;
        if (status == TS_STOP)
            m_loop.quit();
    }
}

void TransferCommand::onRecvProgress(qint64 recvSize)
{
    m_bytes = recvSize;
    if (m_byteLimit > 0 && recvSize >= m_byteLimit && !m_stopRequested)
        stop();
}

void TransferCommand::onSendProgress(qint64 sentSize, qint64 fileSize, qint64 elapsedMs)
{
    Q_UNUSED(elapsedMs) // the run's own clock also covers the connection
    m_bytes = sentSize;
    if (m_fileSize >= 0) // standard input has no size until its end
        m_fileSize = fileSize;
}

// Both directions are stopped once the status is TS_STOP, but the socket may still be closing.
void TransferCommand::waitForSocketClose()
{
    QElapsedTimer waited;
    waited.start();
    while (m_worker->hasSocket() && waited.elapsed() < kSocketCloseWaitMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, kSocketCloseStepMs);
        QThread::msleep(kSocketCloseStepMs);
    }
}

qint64 TransferCommand::elapsedMs() const
{
    return m_stoppedAtMs >= 0 ? m_stoppedAtMs : m_clock.elapsed();
}

void TransferCommand::showProgress()
{
    const qint64 ms = elapsedMs();
    if (receiving()) {
        m_context.console->progress(
            tr("%1 bytes  %2 s  %3 MB/s").arg(m_bytes).arg(secondsText(ms), rateText(m_bytes, ms)));
        return;
    }
    QString line = tr("%1 / %2 bytes  %3 s  %4 MB/s")
                       .arg(m_bytes)
                       .arg(m_fileSize)
                       .arg(secondsText(ms), rateText(m_bytes, ms));
    if (m_bytes > 0 && m_fileSize > m_bytes) {
        const qint64 remainingMs = (m_fileSize - m_bytes) * ms / m_bytes;
        line += QStringLiteral("  ") + tr("ETA %1 s").arg(secondsText(remainingMs));
    }
    m_context.console->progress(line);
}

// The worker reads what the socket holds in chunks, so a receive stopped at its byte limit may
// have written a little more: the file keeps exactly the bytes asked for.
void TransferCommand::keepOnlyByteLimit()
{
    if (!receiving() || m_byteLimit < 0 || m_bytes < m_byteLimit)
        return;
    QFile file(m_fileName);
    if (file.size() > m_byteLimit)
        (void)file.resize(m_byteLimit);
    m_bytes = m_byteLimit;
}

// The summary counts the bytes the file holds, which on a failed write (a full disk) are fewer
// than those received.
void TransferCommand::countBytesInFile()
{
    const QFileInfo info(m_fileName);
    if (receiving() && !StreamPath::isStandardStream(m_fileName) && info.isFile())
        m_bytes = std::min(m_bytes, info.size());
    if (!receiving() && m_fileSize < 0 && !m_interrupted)
        m_fileSize = m_bytes; // standard input or a FIFO: its size is what it gave
}

void TransferCommand::printSummary()
{
    const qint64 ms = elapsedMs();
    if (m_context.console->json()) {
        QJsonObject object{{QStringLiteral("command"),
                            receiving() ? QStringLiteral("recv") : QStringLiteral("send")},
                           {QStringLiteral("file"), m_fileName},
                           {QStringLiteral("bytes"), m_bytes},
                           {QStringLiteral("elapsedMs"), ms},
                           {QStringLiteral("interrupted"), m_interrupted}};
        if (!receiving())
            object.insert(QStringLiteral("fileSize"), m_fileSize);
        if (receiving() && StreamPath::isStandardStream(m_fileName))
            m_context.console->message(QString::fromUtf8(QJsonDocument(object).toJson(
                QJsonDocument::Compact))); // standard output carries the data
        else
            m_context.console->printJson(object);
    }
    if (receiving())
        m_context.console->message(tr("%1 bytes received into %2 in %3 s (%4 MB/s)")
                                       .arg(m_bytes)
                                       .arg(m_fileName, secondsText(ms), rateText(m_bytes, ms)));
    else
        m_context.console->message(tr("%1 of %2 bytes sent from %3 in %4 s (%5 MB/s)")
                                       .arg(m_bytes)
                                       .arg(m_fileSize)
                                       .arg(m_fileName, secondsText(ms), rateText(m_bytes, ms)));
}

int TransferCommand::exitCode() const
{
    if (receiving() && m_byteLimit > 0 && m_bytes >= m_byteLimit)
        return ExitCode::kSuccess;
    if (receiving() && m_byteLimit > 0 && !m_interrupted) {
        return m_context.refuse(tr("Only %1 of %2 bytes received").arg(m_bytes).arg(m_byteLimit),
                                ExitCode::kConnectionOrFile);
    }
    if (m_context.console->errorCount() > m_errorsBefore)
        return ExitCode::kConnectionOrFile;
    const bool cutShort = receiving() ? m_byteLimit > 0 : m_bytes < m_fileSize;
    if (m_interrupted && cutShort)
        return ExitCode::kInterrupted;
    return ExitCode::kSuccess;
}
