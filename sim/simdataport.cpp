#include "sim/simdataport.h"

#include "sim/ownthread.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kListenBacklog = 4;

// Two periods back to back, so that any window of up to one period is contiguous.
const QByteArray &patternBlock()
{
    static const QByteArray block = [] {
        QByteArray bytes(2 * SimDataPort::kPatternPeriodBytes, Qt::Uninitialized);
        quint64 state = 0x9E3779B97F4A7C15ull;
        for (qint64 i = 0; i < SimDataPort::kPatternPeriodBytes; i += 8) {
            // xorshift64*: cheap, fixed, and far from any text or run of equal bytes
            state ^= state >> 12;
            state ^= state << 25;
            state ^= state >> 27;
            const quint64 value = state * 0x2545F4914F6CDD1Dull;
            std::memcpy(bytes.data() + i, &value, sizeof value);
        }
        std::memcpy(bytes.data() + SimDataPort::kPatternPeriodBytes, bytes.constData(),
                    size_t(SimDataPort::kPatternPeriodBytes));
        return bytes;
    }();
    return block;
}

bool toSockaddr(const QHostAddress &address, quint16 port, sockaddr_storage *storage,
                socklen_t *length)
{
    std::memset(storage, 0, sizeof *storage);
    if (address.protocol() == QAbstractSocket::IPv6Protocol) {
        auto *in6 = reinterpret_cast<sockaddr_in6 *>(storage);
        in6->sin6_family = AF_INET6;
        in6->sin6_port = htons(port);
        const Q_IPV6ADDR bytes = address.toIPv6Address();
        std::memcpy(&in6->sin6_addr, &bytes, sizeof bytes);
        *length = sizeof *in6;
        return true;
    }
    bool ok = false;
    const quint32 ipv4 = address.toIPv4Address(&ok);
    if (!ok)
        return false;
    auto *in4 = reinterpret_cast<sockaddr_in *>(storage);
    in4->sin_family = AF_INET;
    in4->sin_port = htons(port);
    in4->sin_addr.s_addr = htonl(ipv4);
    *length = sizeof *in4;
    return true;
}

bool writeAll(int fd, const char *data, qint64 size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size_t(size));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        size -= n;
    }
    return true;
}

void closeFd(int *fd)
{
    if (*fd >= 0)
        ::close(*fd);
    *fd = -1;
}

} // namespace

SimDataPort::SimDataPort(QObject *parent) : QObject(parent) {}

SimDataPort::~SimDataPort()
{
    stop();
}

// ---- Life cycle ----

quint16 SimDataPort::start(const QHostAddress &address, quint16 port)
{
    if (parent() || m_thread.isRunning()) {
        setError(QStringLiteral("the data port cannot move to a thread of its own"));
        return 0;
    }
    if (!runOnOwnThread(this, &m_thread, QStringLiteral("SimDataPort"),
                        [&] { return listenHere(address, port); })) {
        stop();
        return 0;
    }
    return this->port();
}

bool SimDataPort::listen(const QHostAddress &address, quint16 port)
{
    return listenHere(address, port);
}

void SimDataPort::stop()
{
    leaveOwnThread(this, &m_thread, [this] { stopHere(); });
}

bool SimDataPort::listenHere(const QHostAddress &address, quint16 port)
{
    sockaddr_storage storage;
    socklen_t length = 0;
    if (!toSockaddr(address, port, &storage, &length)) {
        setError(QStringLiteral("%1 is not an IP address").arg(address.toString()));
        return false;
    }
    const int fd = ::socket(storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    if (fd < 0 || ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        ::bind(fd, reinterpret_cast<sockaddr *>(&storage), length) != 0 ||
        ::listen(fd, kListenBacklog) != 0) {
        setError(QStringLiteral("cannot listen on TCP port %1: %2")
                     .arg(port)
                     .arg(QString::fromLocal8Bit(std::strerror(errno))));
        if (fd >= 0)
            ::close(fd);
        return false;
    }
    length = sizeof storage;
    ::getsockname(fd, reinterpret_cast<sockaddr *>(&storage), &length);
    const quint16 bound = storage.ss_family == AF_INET6
                              ? ntohs(reinterpret_cast<sockaddr_in6 *>(&storage)->sin6_port)
                              : ntohs(reinterpret_cast<sockaddr_in *>(&storage)->sin_port);
    m_listenFd = fd;
    m_listenNotifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(m_listenNotifier, &QSocketNotifier::activated, this, &SimDataPort::acceptConnection);
    m_buffer.resize(kIoBlockBytes);
    QMutexLocker lock(&m_mutex);
    m_port = bound;
    return true;
}

void SimDataPort::stopHere()
{
    endConnection();
    delete m_readNotifier;
    m_readNotifier = nullptr;
    delete m_writeNotifier;
    m_writeNotifier = nullptr;
    delete m_listenNotifier;
    m_listenNotifier = nullptr;
    delete m_rateTimer;
    m_rateTimer = nullptr;
    closeFd(&m_listenFd);
    QMutexLocker lock(&m_mutex);
    m_port = 0;
}

quint16 SimDataPort::port() const
{
    QMutexLocker lock(&m_mutex);
    return m_port;
}

QString SimDataPort::errorString() const
{
    QMutexLocker lock(&m_mutex);
    return m_errorString;
}

void SimDataPort::setError(const QString &text)
{
    QMutexLocker lock(&m_mutex);
    m_errorString = text;
}

// ---- Configuration ----

void SimDataPort::setMode(Mode mode)
{
    QMutexLocker lock(&m_mutex);
    m_config.mode = mode;
}

void SimDataPort::setHashing(bool on)
{
    QMutexLocker lock(&m_mutex);
    m_config.hashing = on;
}

void SimDataPort::setSinkFile(const QString &path)
{
    QMutexLocker lock(&m_mutex);
    m_config.sinkFile = path;
}

void SimDataPort::setStuck(bool stuck)
{
    {
        QMutexLocker lock(&m_mutex);
        m_config.stuck = stuck;
    }
    QMetaObject::invokeMethod(
        this, [this] { applyStuck(); }, Qt::QueuedConnection);
}

void SimDataPort::setSourceBytes(qint64 bytes)
{
    QMutexLocker lock(&m_mutex);
    m_config.sourceBytes = bytes;
}

void SimDataPort::setSourceFile(const QString &path)
{
    QMutexLocker lock(&m_mutex);
    m_config.sourceFile = path;
}

void SimDataPort::setSourceRate(qint64 bytesPerSecond)
{
    QMutexLocker lock(&m_mutex);
    m_config.sourceRate = std::max<qint64>(0, bytesPerSecond);
}

void SimDataPort::setKeepOpen(bool keepOpen)
{
    QMutexLocker lock(&m_mutex);
    m_config.keepOpen = keepOpen;
}

bool SimDataPort::parseMode(const QString &text, Mode *mode)
{
    if (text == QLatin1String("sink"))
        *mode = Mode::Sink;
    else if (text == QLatin1String("source"))
        *mode = Mode::Source;
    else if (text == QLatin1String("echo"))
        *mode = Mode::Echo;
    else
        return false;
    return true;
}

void SimDataPort::applyStuck()
{
    bool stuck = false;
    {
        QMutexLocker lock(&m_mutex);
        stuck = m_config.stuck;
    }
    m_active.stuck = stuck;
    if (m_connFd >= 0 && m_active.mode == Mode::Sink && m_readNotifier)
        m_readNotifier->setEnabled(!stuck);
}

// ---- Results ----

SimDataPort::Totals SimDataPort::totals() const
{
    QMutexLocker lock(&m_mutex);
    return m_totals;
}

bool SimDataPort::waitForConnectionsDone(int count, int timeoutMs) const
{
    QDeadlineTimer deadline(timeoutMs);
    QMutexLocker lock(&m_mutex);
    while (m_totals.connections < count || m_totals.connected) {
        if (!m_changed.wait(&m_mutex, deadline))
            return false;
    }
    return true;
}

QByteArray SimDataPort::pattern(qint64 offset, qint64 size)
{
    const QByteArray &block = patternBlock();
    QByteArray bytes(size, Qt::Uninitialized);
    qint64 done = 0;
    while (done < size) {
        const qint64 at = (offset + done) % kPatternPeriodBytes;
        const qint64 take = std::min(size - done, kPatternPeriodBytes);
        std::memcpy(bytes.data() + done, block.constData() + at, size_t(take));
        done += take;
    }
    return bytes;
}

// ---- Connection ----

void SimDataPort::acceptConnection()
{
    const int fd = ::accept4(m_listenFd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0)
        return;
    if (m_connFd >= 0) {
        ::close(fd); // the device serves one connection at a time
        return;
    }
    beginConnection(fd);
}

void SimDataPort::beginConnection(int fd)
{
    {
        QMutexLocker lock(&m_mutex);
        m_active = m_config;
        m_totals.bytes = 0;
        m_totals.sha256.clear();
        m_totals.seconds = 0;
        m_totals.connections += 1;
        m_totals.connected = true;
        m_totals.complete = false;
        m_changed.wakeAll();
    }
    m_connFd = fd;
    m_hash.reset();
    m_connectionTimer.start();
    m_echoPending.clear();
    delete m_readNotifier;
    delete m_writeNotifier;
    m_readNotifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    m_writeNotifier = new QSocketNotifier(fd, QSocketNotifier::Write, this);
    m_writeNotifier->setEnabled(false);
    connect(m_readNotifier, &QSocketNotifier::activated, this, &SimDataPort::onReadable);
    connect(m_writeNotifier, &QSocketNotifier::activated, this, &SimDataPort::onWritable);

    if (m_active.mode == Mode::Sink) {
        if (!m_active.sinkFile.isEmpty()) {
            m_sinkFd = ::open(QFile::encodeName(m_active.sinkFile).constData(),
                              O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
            if (m_sinkFd < 0)
                setError(QStringLiteral("cannot write %1").arg(m_active.sinkFile));
        }
        m_readNotifier->setEnabled(!m_active.stuck);
    } else if (m_active.mode == Mode::Source) {
        m_sourceOffset = 0;
        m_sourceDone = false;
        m_sourceLeft = m_active.sourceBytes;
        if (!m_active.sourceFile.isEmpty()) {
            m_sourceFd =
                ::open(QFile::encodeName(m_active.sourceFile).constData(), O_RDONLY | O_CLOEXEC);
            struct stat info = {};
            const qint64 fileSize =
                m_sourceFd >= 0 && ::fstat(m_sourceFd, &info) == 0 ? qint64(info.st_size) : 0;
            if (m_sourceFd < 0)
                setError(QStringLiteral("cannot read %1").arg(m_active.sourceFile));
            m_sourceLeft = m_sourceLeft < 0 ? fileSize : std::min(m_sourceLeft, fileSize);
        }
        if (m_active.sourceRate > 0) {
            if (!m_rateTimer) {
                m_rateTimer = new QTimer(this);
                m_rateTimer->setTimerType(Qt::PreciseTimer);
                connect(m_rateTimer, &QTimer::timeout, this, &SimDataPort::onRateTick);
            }
            m_rateTimer->start(kRateTickMs);
        } else {
            m_writeNotifier->setEnabled(true);
        }
        if (m_sourceLeft == 0)
            finishSource();
    }
    emit connectionStarted();
}

void SimDataPort::endConnection()
{
    if (m_connFd < 0)
        return;
    // Called from the notifiers' own slots too: they are switched off here and deleted later.
    if (m_readNotifier)
        m_readNotifier->setEnabled(false);
    if (m_writeNotifier)
        m_writeNotifier->setEnabled(false);
    if (m_rateTimer)
        m_rateTimer->stop();
    closeFd(&m_connFd);
    closeFd(&m_sinkFd);
    closeFd(&m_sourceFd);
    m_echoPending.clear();
    Totals finished;
    {
        QMutexLocker lock(&m_mutex);
        if (m_active.hashing && m_totals.sha256.isEmpty())
            m_totals.sha256 = m_hash.result();
        m_totals.connected = false;
        finished = m_totals;
        m_changed.wakeAll();
    }
    emit connectionFinished(finished.bytes, finished.sha256, finished.seconds);
}

void SimDataPort::onReadable()
{
    switch (m_active.mode) {
    case Mode::Sink:
        readIntoSink(kMaxBytesPerWakeup);
        break;
    case Mode::Source:
        discardIncoming();
        break;
    case Mode::Echo:
        echoIncoming();
        break;
    }
}

void SimDataPort::onWritable()
{
    if (m_active.mode == Mode::Echo) {
        flushEcho();
        return;
    }
    if (m_active.mode == Mode::Source && !m_sourceDone)
        sendSource(kMaxBytesPerWakeup);
}

void SimDataPort::onRateTick()
{
    if (m_sourceDone || m_connFd < 0)
        return;
    const qint64 due = m_active.sourceRate * m_connectionTimer.nsecsElapsed() / 1000000000;
    const qint64 allowed = std::min(due - m_sourceOffset, kMaxBytesPerWakeup);
    if (allowed > 0)
        sendSource(allowed);
}

void SimDataPort::countMoved(const char *data, qint64 size)
{
    if (m_active.hashing)
        m_hash.addData(QByteArrayView(data, size));
    QMutexLocker lock(&m_mutex);
    m_totals.bytes += size;
    m_totals.seconds = double(m_connectionTimer.nsecsElapsed()) / 1e9;
}

// ---- Sink ----

void SimDataPort::readIntoSink(qint64 limit)
{
    qint64 total = 0;
    while (total < limit && m_connFd >= 0 && !m_active.stuck) {
        const ssize_t n = ::recv(m_connFd, m_buffer.data(), size_t(kIoBlockBytes), 0);
        if (n > 0) {
            countMoved(m_buffer.constData(), n);
            if (m_sinkFd >= 0 && !writeAll(m_sinkFd, m_buffer.constData(), n)) {
                setError(QStringLiteral("cannot write %1").arg(m_active.sinkFile));
                closeFd(&m_sinkFd);
            }
            total += n;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        endConnection(); // the peer closed, or the connection broke
        return;
    }
}

// ---- Source ----

// A source reads nothing, but keeps its receive side empty so that closing never resets the
// connection, and notices when the peer goes.
void SimDataPort::discardIncoming()
{
    for (;;) {
        const ssize_t n = ::recv(m_connFd, m_buffer.data(), size_t(kIoBlockBytes), 0);
        if (n > 0)
            continue;
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        endConnection();
        return;
    }
}

qint64 SimDataPort::sendSource(qint64 limit)
{
    const QByteArray &block = patternBlock();
    qint64 total = 0;
    while (total < limit && m_sourceLeft != 0 && m_connFd >= 0) {
        qint64 want = std::min(kIoBlockBytes, limit - total);
        if (m_sourceLeft > 0)
            want = std::min(want, m_sourceLeft);
        ssize_t n = 0;
        const char *sentFrom = nullptr;
        if (m_sourceFd >= 0) {
            off_t offset = off_t(m_sourceOffset);
            n = ::sendfile(m_connFd, m_sourceFd, &offset, size_t(want));
            if (n > 0 && m_active.hashing &&
                ::pread(m_sourceFd, m_buffer.data(), size_t(n), off_t(m_sourceOffset)) == n)
                sentFrom = m_buffer.constData();
        } else {
            sentFrom = block.constData() + m_sourceOffset % kPatternPeriodBytes;
            n = ::send(m_connFd, sentFrom, size_t(want), MSG_NOSIGNAL);
        }
        if (n > 0) {
            if (m_active.hashing && sentFrom)
                m_hash.addData(QByteArrayView(sentFrom, n));
            {
                QMutexLocker lock(&m_mutex);
                m_totals.bytes += n;
                m_totals.seconds = double(m_connectionTimer.nsecsElapsed()) / 1e9;
            }
            m_sourceOffset += n;
            if (m_sourceLeft > 0)
                m_sourceLeft -= n;
            total += n;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            break;
        endConnection(); // the peer went, or the file ended early
        return total;
    }
    if (m_sourceLeft == 0 && m_connFd >= 0)
        finishSource();
    return total;
}

void SimDataPort::finishSource()
{
    m_sourceDone = true;
    m_writeNotifier->setEnabled(false);
    if (m_rateTimer)
        m_rateTimer->stop();
    {
        QMutexLocker lock(&m_mutex);
        m_totals.complete = true;
        if (m_active.hashing)
            m_totals.sha256 = m_hash.result();
        m_changed.wakeAll();
    }
    // Closing: only the sending side, so that the peer reads every byte and then sees the end;
    // the connection is released once the peer closes too.
    if (!m_active.keepOpen)
        ::shutdown(m_connFd, SHUT_WR);
}

// ---- Echo ----

void SimDataPort::echoIncoming()
{
    const qint64 room = kIoBlockBytes - m_echoPending.size();
    if (room <= 0) {
        m_readNotifier->setEnabled(false); // resumes once the peer takes the echo
        return;
    }
    const ssize_t n = ::recv(m_connFd, m_buffer.data(), size_t(room), 0);
    if (n > 0) {
        countMoved(m_buffer.constData(), n);
        m_echoPending.append(m_buffer.constData(), n);
        flushEcho();
        return;
    }
    if (n < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK))
        return;
    endConnection();
}

void SimDataPort::flushEcho()
{
    while (!m_echoPending.isEmpty() && m_connFd >= 0) {
        const ssize_t n =
            ::send(m_connFd, m_echoPending.constData(), size_t(m_echoPending.size()), MSG_NOSIGNAL);
        if (n > 0) {
            m_echoPending.remove(0, n);
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            break;
        endConnection();
        return;
    }
    if (m_connFd < 0)
        return;
    m_writeNotifier->setEnabled(!m_echoPending.isEmpty());
    m_readNotifier->setEnabled(m_echoPending.size() < kIoBlockBytes);
}
