#include "tcp/recvstream.h"

#include "app/log.h"
#include "tcp/tcpoutputoption.h"

#include <QIODevice>
#include <QTimer>

#include <algorithm>

RecvStream::RecvStream(QObject *parent)
    : QObject(parent), m_progressDue(new QTimer(this)), m_flushTimer(new QTimer(this))
{
    m_progressDue->setSingleShot(true);
    m_progressDue->setInterval(kProgressIntervalMs);
    connect(m_progressDue, &QTimer::timeout, this, &RecvStream::sendLastProgress);
    m_flushTimer->setInterval(kFlushIntervalMs);
    // Gathered bytes are written out on every tick, so the file never lags more than a second.
    connect(m_flushTimer, &QTimer::timeout, this, [this] {
        if (m_recorder.writeOut())
            return;
        m_recorder.close();
        emit writeFailed();
    });
}

QString RecvStream::start(const TransferRun &run)
{
    m_run = run;
    m_received = 0;
    m_throttle.restart();
    QMutexLocker lock(&m_displayMutex);
    m_displayMode = run.displayMode;
    m_layout = run.layout;
    m_tail.clear();
    m_textSignalled = false;
    if (run.fileName.isEmpty())
        return tr("Nothing is being saved: Save To is empty.");
    return tr("Saving to %1").arg(run.fileName);
}

// Only once the connection stands: a run that cannot connect leaves the file as it was.
bool RecvStream::openFile()
{
    return m_run.fileName.isEmpty() || m_recorder.open(m_run.fileName, m_run.hexFile, m_run.layout);
}

QString RecvStream::openFailureText() const
{
    return QStringLiteral("%1: %2 (%3)")
        .arg(tr("Receive file cannot open"), m_run.fileName, m_recorder.errorString());
}

void RecvStream::setRunning(bool running)
{
    if (running) {
        m_flushTimer->start();
    } else {
        m_flushTimer->stop();
        m_progressDue->stop();
    }
}

// Every byte goes to the file at once; the display keeps only the newest bytes, so a slow display
// never holds the device back.
bool RecvStream::readFrom(QIODevice *device)
{
    QMutexLocker lock(&m_displayMutex);
    const bool display = m_displayMode != TCPOutputOption::kDisplayOff;
    lock.unlock();
    for (qint64 available = device->bytesAvailable(); available > 0;
         available = device->bytesAvailable()) {
        // All that is buffered at once: the socket hands its block over without a copy.
        const QByteArray chunk = device->read(available);
        if (chunk.isEmpty()) {
            LOG_ERROR("Invalid received data.");
            break;
        }
        if (display) {
            lock.relock();
            m_tail.keep(chunk.constData(), chunk.size(), m_received);
            lock.unlock();
        }
        m_received += chunk.size();
        if (m_recorder.isOpen() && !m_recorder.add(chunk)) {
            m_recorder.close();
            return false;
        }
    }
    lock.relock();
    const bool signal = !m_tail.isEmpty() && !m_textSignalled;
    m_textSignalled = m_textSignalled || signal;
    lock.unlock();
    if (signal)
        emit textAdded();
    emitProgress(false);
    return true;
}

void RecvStream::sendLastProgress()
{
    emitProgress(true);
}

// A figure held back by the throttle is sent by the progress timer, so the last one always shows.
void RecvStream::emitProgress(bool force)
{
    if (m_throttle.take(m_received, force)) {
        m_progressDue->stop();
        emit progressed(m_received);
    } else if (m_throttle.isHeldBack(m_received) && !m_progressDue->isActive()) {
        m_progressDue->start();
    }
}

bool RecvStream::closeFile()
{
    return m_recorder.close();
}

RecvStream::End RecvStream::endAtBreak(bool closedByDevice, const QString &failure)
{
    sendLastProgress();
    if (!closeFile())
        return {writeFailureText(), true, TTE_RECV_ERROR};
    if (closedByDevice)
        return {QStringLiteral("%1 %2").arg(tr("The device closed the connection."), savedText()),
                false};
    return {QStringLiteral("%1. %2").arg(failure, savedText()), true, TTE_CONNECT_ERROR};
}

QString RecvStream::savedText() const
{
    if (m_run.fileName.isEmpty())
        return tr("Nothing was saved (Save To is empty).");
    return tr("%1 bytes were saved to %2.").arg(m_recorder.savedBytes()).arg(m_run.fileName);
}

QString RecvStream::writeFailureText() const
{
    LOG_ERROR(QStringLiteral("recv file write failed: %1").arg(m_recorder.errorString()));
    return QStringLiteral("%1: %2 (%3). %4")
        .arg(tr("Receive file cannot be written"), m_run.fileName, m_recorder.errorString(),
             savedText());
}

void RecvStream::setDisplayMode(int mode)
{
    QMutexLocker lock(&m_displayMutex);
    m_displayMode = mode;
}

QByteArray RecvStream::take(qint64 maxSize)
{
    QMutexLocker lock(&m_displayMutex);
    const bool hex = m_displayMode == TCPOutputOption::kDisplayHex;
    const QByteArrayView lineEnd(TCPOutputOption::kRecvLineEnd);
    QByteArray mark;
    if (m_tail.skipped() > 0) {
        const QByteArray around = hex ? lineEnd.toByteArray() : QByteArray(1, '\n');
        mark = around + tr("[%1 bytes skipped]").arg(m_tail.skipped()).toUtf8() + around;
    }
    const QByteArray result = m_tail.take(maxSize, hex ? m_layout : HexLayout(), lineEnd, mark);
    if (m_tail.isEmpty())
        m_textSignalled = false;
    return result;
}
