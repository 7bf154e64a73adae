#include "sim/mavixsim.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>
#include <QTimer>
#include <QUdpSocket>
#include <QVariant>

#include <cstring>

namespace {

constexpr qsizetype kMaxDatagramBytes = 65536;
constexpr qsizetype kMaxReplyBytes = MavixSim::kHeaderBytes + 255;
// Large enough for bursts of requests from several clients at once.
constexpr int kReceiveBufferBytes = 1 << 20;

quint32 ipv4Of(const QHostAddress &address)
{
    // The settings image holds IPv4 only; an IPv6 address shows as 0.0.0.0.
    bool ok = false;
    const quint32 ipv4 = address.toIPv4Address(&ok);
    return ok ? ipv4 : 0;
}

} // namespace

MavixSim::MavixSim(QObject *parent) : QObject(parent)
{
    m_request.resize(kMaxDatagramBytes);
    m_reply.reserve(kMaxReplyBytes);
    m_previousReply.reserve(kMaxReplyBytes);
}

MavixSim::~MavixSim() = default;

bool MavixSim::start(const SimOptions &options)
{
    m_startError = SimStartError::None;
    m_errorString.clear();
    SimRegisters::Image eeprom{};
    bool haveEepromFile = false;
    if (!options.eepromPath.isEmpty() && QFile::exists(options.eepromPath)) {
        QFile file(options.eepromPath);
        // A FIFO or a device would block the read or never hold the image.
        if (!QFileInfo(file).isFile()) {
            m_startError = SimStartError::EepromFile;
            m_errorString = tr("The EEPROM file %1 is not a regular file").arg(options.eepromPath);
            return false;
        }
        if (!file.open(QIODevice::ReadOnly)) {
            m_startError = SimStartError::EepromFile;
            m_errorString = tr("Cannot read the EEPROM file %1: %2")
                                .arg(options.eepromPath, file.errorString());
            return false;
        }
        const QByteArray bytes = file.read(SimRegisters::kImageSize + 1);
        if (bytes.size() != SimRegisters::kImageSize) {
            m_startError = SimStartError::EepromFile;
            m_errorString = tr("The EEPROM file %1 holds %2 bytes, not %3; it is left as it is")
                                .arg(options.eepromPath)
                                .arg(file.size())
                                .arg(SimRegisters::kImageSize);
            return false;
        }
        std::memcpy(eeprom.data(), bytes.constData(), size_t(bytes.size()));
        haveEepromFile = true;
    }
    if (!bindUdp(options.address, options.udpPort, &m_startError, &m_errorString))
        return false;

    QMutexLocker lock(&m_mutex);
    m_address = options.address;
    m_eepromPath = options.eepromPath;
    const quint32 ipv4 = ipv4Of(options.address);
    const SimRegisters::Image factory =
        SimRegisters::defaultImage(ipv4, udpPort(), options.tcpPort);
    // Like the device, the running copy starts from the EEPROM copy, but answers on the address and
    // ports it was started with.
    m_registers.eepromImage() = haveEepromFile ? eeprom : factory;
    m_eepromIsFactory = !haveEepromFile;
    SimRegisters::Image &running = m_registers.runningImage();
    running = m_registers.eepromImage();
    SimRegisters::setIpv4(running, ipv4);
    SimRegisters::setPortAt(running, SimRegisters::kUdpPortOffset, udpPort());
    SimRegisters::setPortAt(running, SimRegisters::kTcpDataPortOffset, options.tcpPort);
    return true;
}

void MavixSim::stop()
{
    if (!m_socket)
        return;
    m_socket->close();
    delete m_socket;
    m_socket = nullptr;
    m_udpPort = 0;
}

bool MavixSim::bindUdp(const QHostAddress &address, quint16 port, SimStartError *error,
                       QString *errorText)
{
    auto *socket = new QUdpSocket(this);
    // Without DontShareAddress a second emulator could bind the same port and steal requests.
    if (!socket->bind(address, port, QAbstractSocket::DontShareAddress)) {
        const bool inUse = socket->error() == QAbstractSocket::AddressInUseError;
        *error = inUse ? SimStartError::AddressInUse : SimStartError::BindFailed;
        *errorText =
            inUse ? tr("UDP port %1 on %2 is already in use").arg(port).arg(address.toString())
                  : tr("Cannot bind UDP port %1 on %2: %3")
                        .arg(port)
                        .arg(address.toString(), socket->errorString());
        delete socket;
        return false;
    }
    socket->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption,
                            QVariant(kReceiveBufferBytes));
    connect(socket, &QUdpSocket::readyRead, this, &MavixSim::readPendingDatagrams);
    if (m_socket) {
        // Called from the old socket's readyRead handler: let its emission finish first.
        disconnect(m_socket, nullptr, this, nullptr);
        m_socket->close();
        m_socket->deleteLater();
    }
    m_socket = socket;
    m_udpPort = socket->localPort();
    return true;
}

QHostAddress MavixSim::address() const
{
    QMutexLocker lock(&m_mutex);
    return m_address;
}

quint16 MavixSim::tcpPort() const
{
    QMutexLocker lock(&m_mutex);
    return SimRegisters::portAt(m_registers.runningImage(), SimRegisters::kTcpDataPortOffset);
}

void MavixSim::setTcpPort(quint16 port)
{
    QMutexLocker lock(&m_mutex);
    SimRegisters::setPortAt(m_registers.runningImage(), SimRegisters::kTcpDataPortOffset, port);
    // A factory EEPROM copy holds the ports the emulator answers on, the TCP one included.
    if (m_eepromIsFactory)
        SimRegisters::setPortAt(m_registers.eepromImage(), SimRegisters::kTcpDataPortOffset, port);
}

void MavixSim::setFaults(const SimFaults &faults)
{
    QMutexLocker lock(&m_mutex);
    m_faults = faults;
    m_random.seed(faults.randomSeed);
}

SimFaults MavixSim::faults() const
{
    QMutexLocker lock(&m_mutex);
    return m_faults;
}

void MavixSim::setRecording(bool on)
{
    QMutexLocker lock(&m_mutex);
    m_recording = on;
}

QList<SimAccess> MavixSim::accessLog() const
{
    QMutexLocker lock(&m_mutex);
    return m_accessLog;
}

void MavixSim::clearAccessLog()
{
    QMutexLocker lock(&m_mutex);
    m_accessLog.clear();
}

SimCounters MavixSim::counters() const
{
    QMutexLocker lock(&m_mutex);
    return m_counters;
}

QByteArray MavixSim::peek(quint32 address, int length) const
{
    QByteArray bytes(qMax(length, 0), Qt::Uninitialized);
    QMutexLocker lock(&m_mutex);
    m_registers.read(address, int(bytes.size()), bytes.data());
    return bytes;
}

void MavixSim::poke(quint32 address, const QByteArray &data)
{
    QMutexLocker lock(&m_mutex);
    m_registers.store(address, data.constData(), int(data.size()));
}

void MavixSim::readPendingDatagrams()
{
    // What is left after one turn's share waits for the next turn: the socket's read notifier
    // fires again while datagrams are pending. (A readyRead that reads nothing would stop it.)
    for (int served = 0; served < kDatagramsPerTurn && m_socket && m_socket->hasPendingDatagrams();
         ++served) {
        QUdpSocket *socket = m_socket;
        const qint64 size =
            socket->readDatagram(m_request.data(), m_request.size(), &m_peer, &m_peerPort);
        if (size < 0)
            break;
        serve(m_request.constData(), size);
        if (socket != m_socket)
            break; // moved to a new port: what is left on the old one is not for us any more
    }
}

void MavixSim::serve(const char *datagram, qint64 size)
{
    Outcome outcome;
    {
        QMutexLocker lock(&m_mutex);
        if (isWellFormed(datagram, size))
            answer(datagram, outcome);
        else
            ++m_counters.ignored;
    }
    if (!outcome.served) {
        if (m_verbose)
            emit requestServed(tr("ignored a datagram of %1 bytes").arg(size));
        return;
    }
    if (m_verbose)
        emit requestServed(describe(datagram, outcome));
    if (outcome.reply && outcome.delayMs > 0 && m_delayedReplies >= kMaxDelayedReplies) {
        QMutexLocker lock(&m_mutex);
        ++m_counters.delayOverflow;
        outcome.reply = false;
    }
    if (outcome.reply && outcome.delayMs > 0) {
        // The device answers a port-changing write on the old port and only then moves.
        ++m_delayedReplies;
        QTimer::singleShot(outcome.delayMs, this,
                           [this, stale = outcome.stale, reply = m_reply, peer = m_peer,
                            port = m_peerPort, moveTo = outcome.moveUdpTo] {
                               --m_delayedReplies;
                               sendReply(stale, reply, peer, port);
                               if (moveTo >= 0)
                                   moveUdpPort(quint16(moveTo));
                           });
    } else {
        if (outcome.reply)
            sendReply(outcome.stale, m_reply, m_peer, m_peerPort);
        if (outcome.moveUdpTo >= 0)
            moveUdpPort(quint16(outcome.moveUdpTo));
    }
    // Keep this reply for the stale fault; swapping reuses both buffers without allocating.
    m_previousReply.swap(m_reply);
    if (outcome.eepromChanged)
        saveEeprom();
    if (outcome.tcpWritten >= 0)
        emit tcpPortWritten(quint16(outcome.tcpWritten));
    if (outcome.written) {
        const auto *raw = reinterpret_cast<const uchar *>(datagram);
        emit registersWritten(qFromBigEndian<quint32>(raw + 4), raw[3]);
    }
}

bool MavixSim::isWellFormed(const char *datagram, qint64 size)
{
    // A read carries no data; a write must carry at least its length in bytes.
    const auto *raw = reinterpret_cast<const uchar *>(datagram);
    return size >= kHeaderBytes && raw[0] == kVerType &&
           ((raw[1] & kReadBit) || size - kHeaderBytes >= raw[3]);
}

void MavixSim::answer(const char *datagram, Outcome &outcome)
{
    const auto *raw = reinterpret_cast<const uchar *>(datagram);
    const bool isRead = raw[1] & kReadBit;
    const quint8 id = raw[2];
    const quint8 length = raw[3];
    const quint32 address = qFromBigEndian<quint32>(raw + 4);
    outcome.served = true;
    ++m_counters.requests;
    ++(isRead ? m_counters.reads : m_counters.writes);

    m_reply.resize(kHeaderBytes + length);
    char *replyData = m_reply.data() + kHeaderBytes;
    const char *requestData = datagram + kHeaderBytes;
    outcome.busError = refusedByFault(address, length);
    if (!outcome.busError) {
        if (isRead)
            m_registers.read(address, length, replyData);
        else
            outcome.busError = !writeRegisters(address, requestData, length, outcome);
    }
    if (isRead && outcome.busError)
        std::memset(replyData, 0, length);
    if (!isRead)
        std::memcpy(replyData, requestData, length); // a write echoes what it was sent
    if (outcome.busError)
        ++m_counters.busErrors;

    auto *header = reinterpret_cast<uchar *>(m_reply.data());
    header[0] = kVerType;
    header[1] =
        kCommandBit | kAckBit | (isRead ? kReadBit : 0) | (outcome.busError ? kBusErrorBit : 0);
    header[2] = id;
    header[3] = length;
    qToBigEndian<quint32>(address, header + 4);
    record(isRead, address, length, id, outcome.busError);
    spoilReply();

    outcome.reply = m_faults.dropEveryNth == 0 || m_counters.requests % m_faults.dropEveryNth != 0;
    if (!outcome.reply)
        ++m_counters.dropped;
    else if (m_faults.staleReply)
        outcome.stale = m_previousReply;
    outcome.delayMs = m_faults.delayMs;
}

bool MavixSim::refusedByFault(quint32 address, int length) const
{
    if (m_faults.busError)
        return true;
    return m_faults.busErrorRange &&
           SimRegisters::touches(address, qMax(length, 1), m_faults.busErrorFirst,
                                 m_faults.busErrorLast);
}

bool MavixSim::writeRegisters(quint32 address, const char *data, int length, Outcome &outcome)
{
    const SimRegisters::Image &running = m_registers.runningImage();
    const quint16 udpBefore = SimRegisters::portAt(running, SimRegisters::kUdpPortOffset);
    const quint16 tcpBefore = SimRegisters::portAt(running, SimRegisters::kTcpDataPortOffset);
    if (!m_registers.write(address, data, length))
        return false;
    outcome.written = true;
    const quint16 udpAfter = SimRegisters::portAt(running, SimRegisters::kUdpPortOffset);
    const quint16 tcpAfter = SimRegisters::portAt(running, SimRegisters::kTcpDataPortOffset);
    if (udpAfter != udpBefore)
        outcome.moveUdpTo = udpAfter;
    if (tcpAfter != tcpBefore)
        outcome.tcpWritten = tcpAfter;
    outcome.eepromChanged =
        !m_eepromPath.isEmpty() &&
        SimRegisters::touches(address, length, SimRegisters::kEepromImageAddress,
                              SimRegisters::kEepromImageAddress + SimRegisters::kImageSize - 1);
    return true;
}

void MavixSim::record(bool isRead, quint32 address, quint8 length, quint8 id, bool busError)
{
    if (!m_recording)
        return;
    if (m_accessLog.size() >= kAccessLogCapacity)
        m_accessLog.removeFirst();
    SimAccess access;
    access.direction = isRead ? SimAccess::Read : SimAccess::Write;
    access.address = address;
    access.length = length;
    access.data = m_reply.mid(kHeaderBytes);
    access.packetId = id;
    access.busError = busError;
    m_accessLog.append(access);
}

void MavixSim::spoilReply()
{
    auto *header = reinterpret_cast<uchar *>(m_reply.data());
    if (m_faults.wrongVerType)
        header[0] = 0xEF;
    if (m_faults.ackClear)
        header[1] &= uchar(~kAckBit);
    if (m_faults.wrongPacketId)
        header[2] = uchar(header[2] + 1);
    if (m_faults.flipReadWrite)
        header[1] ^= kReadBit;
    if (m_faults.shortReply) {
        if (header[3] == 0)
            header[3] = 1; // nothing to cut: announce a byte that is not there
        else
            m_reply.chop(1);
    }
    if (m_faults.randomReply)
        randomizeReply();
}

void MavixSim::randomizeReply()
{
    enum Mutation { Noise, FlipHeaderBit, Truncate, Extend, ReplaceByte, MutationCount };
    switch (m_random.bounded(int(MutationCount))) {
    case Noise:
        m_reply.resize(m_random.bounded(300));
        for (char &byte : m_reply)
            byte = char(m_random.bounded(256));
        break;
    case FlipHeaderBit:
        m_reply[m_random.bounded(kHeaderBytes)] ^= char(1 << m_random.bounded(8));
        break;
    case Truncate:
        m_reply.truncate(m_random.bounded(int(m_reply.size()) + 1));
        break;
    case Extend:
        for (int n = m_random.bounded(1, 64); n > 0; --n)
            m_reply.append(char(m_random.bounded(256)));
        break;
    case ReplaceByte:
        m_reply[m_random.bounded(int(m_reply.size()))] = char(m_random.bounded(256));
        break;
    default:
        break;
    }
}

QString MavixSim::describe(const char *datagram, const Outcome &outcome) const
{
    const auto *raw = reinterpret_cast<const uchar *>(datagram);
    const bool isRead = raw[1] & kReadBit;
    const QString result = outcome.busError ? tr("bus error") : tr("ok");
    const QString line =
        isRead ? tr("read  0x%1 length %2 id %3: %4") : tr("write 0x%1 length %2 id %3: %4");
    const QString address =
        QString::number(qFromBigEndian<quint32>(raw + 4), 16).rightJustified(8, u'0').toUpper();
    return line.arg(address).arg(raw[3]).arg(raw[2]).arg(
        outcome.reply ? result : tr("%1, reply dropped").arg(result));
}

void MavixSim::sendReply(const QByteArray &stale, const QByteArray &reply, const QHostAddress &peer,
                         quint16 peerPort)
{
    if (!m_socket)
        return;
    {
        // Counted just before it leaves: whoever has the reply finds it counted.
        QMutexLocker lock(&m_mutex);
        m_counters.repliesSent += stale.isEmpty() ? 1 : 2;
    }
    if (!stale.isEmpty())
        m_socket->writeDatagram(stale, peer, peerPort);
    m_socket->writeDatagram(reply, peer, peerPort);
}

void MavixSim::moveUdpPort(quint16 port)
{
    SimStartError error = SimStartError::None;
    QString errorText;
    if (!bindUdp(address(), port, &error, &errorText)) {
        emit problemOccurred(tr("Staying on UDP port %1: %2").arg(udpPort()).arg(errorText));
        return;
    }
    if (port == 0) {
        QMutexLocker lock(&m_mutex);
        SimRegisters::setPortAt(m_registers.runningImage(), SimRegisters::kUdpPortOffset,
                                udpPort());
    }
    emit udpPortMoved(udpPort());
}

void MavixSim::saveEeprom()
{
    QByteArray image(SimRegisters::kImageSize, Qt::Uninitialized);
    {
        QMutexLocker lock(&m_mutex);
        std::memcpy(image.data(), m_registers.eepromImage().data(), size_t(image.size()));
    }
    QSaveFile file(m_eepromPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(image) != image.size() || !file.commit())
        emit problemOccurred(
            tr("Cannot save the EEPROM file %1: %2").arg(m_eepromPath, file.errorString()));
}
