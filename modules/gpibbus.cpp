#include "modules/gpibbus.h"

#include "app/accessgate.h"
#include "modules/receivecap.h"

#include <QTcpSocket>

GpibBus::GpibBus(QTcpSocket *socket, AccessGate *gate, QObject *parent)
    : QObject(parent), m_socket(socket), m_gate(gate)
{
    connect(m_socket, &QTcpSocket::readyRead, this, &GpibBus::socketActivity);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &GpibBus::socketActivity);
    connect(m_socket, &QTcpSocket::stateChanged, this, &GpibBus::socketActivity);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &GpibBus::socketActivity);
}

QByteArray GpibBus::delimiterBytes(int index)
{
    switch (index) {
    case 1:
        return QByteArrayLiteral("\r");
    case 2:
        return QByteArrayLiteral("\n");
    case 3:
        return QByteArrayLiteral("\r\n");
    default:
        return {};
    }
}

GpibBus::Failure GpibBus::send(quint32 controller, quint32 target, const QByteArray &message)
{
    AccessGate::Hold hold(m_gate);
    if (const Failure failure = address(controller, target); failure != Failure::None)
        return failure;
    if (const Failure failure = enterDataMode(); failure != Failure::None)
        return failure;
    for (qsizetype i = 0; i < message.size(); ++i) {
        const bool last = i == message.size() - 1;
        const GpibUnit unit =
            last ? GpibUnit::lastDataByte(message[i]) : GpibUnit::dataByte(message[i]);
        if (const Failure failure = exchange(unit); failure != Failure::None)
            return failure;
    }
    return Failure::None;
}

GpibBus::Failure GpibBus::receive(quint32 controller, quint32 target, const QByteArray &delimiter,
                                  qint64 maxLength, QByteArray *data)
{
    AccessGate::Hold hold(m_gate);
    data->clear();
    const qint64 limit = maxLength > 0 ? maxLength : ModuleLimits::kReceiveCapBytes;
    if (!isAddressedFor(target, controller)) {
        if (const Failure failure = address(target, controller); failure != Failure::None)
            return failure;
    }
    if (!m_dataMode) {
        if (const Failure failure = enterDataMode(); failure != Failure::None)
            return failure;
    }
    for (;;) {
        GpibUnit reply = GpibUnit::readOneByte();
        if (const Failure failure = exchange(GpibUnit::readOneByte(), &reply);
            failure != Failure::None)
            return failure;
        data->append(reply.dataByte());
        if (!delimiter.isEmpty() && data->endsWith(delimiter)) {
            data->chop(delimiter.size());
            return Failure::None;
        }
        if (reply.isEnd() || data->size() >= limit)
            return Failure::None;
    }
}

GpibBus::Failure GpibBus::interfaceClear()
{
    AccessGate::Hold hold(m_gate);
    (void)m_socket->readAll(); // a late reply must not be taken for the answer to this request
    resetBusState();           // IFC leaves every talker and listener unaddressed
    return exchange(GpibUnit::interfaceClear());
}

void GpibBus::resetBusState()
{
    m_talker = kNoAddress;
    m_listener = kNoAddress;
    m_addressed = false;
    m_dataMode = false;
}

GpibBus::Failure GpibBus::address(quint32 talker, quint32 listener)
{
    // Until the whole sequence has been answered the bus may be half addressed.
    m_addressed = false;
    m_dataMode = false;
    for (const GpibUnit &unit :
         {GpibUnit::busControl(true, true), GpibUnit::unlisten(), GpibUnit::talkAddress(talker),
          GpibUnit::listenAddress(listener)}) {
        if (const Failure failure = exchange(unit); failure != Failure::None)
            return failure;
    }
    m_talker = talker;
    m_listener = listener;
    m_addressed = true;
    return Failure::None;
}

GpibBus::Failure GpibBus::enterDataMode()
{
    const Failure failure = exchange(GpibUnit::busControl(true, false));
    m_dataMode = failure == Failure::None;
    return failure;
}

bool GpibBus::isConnected() const
{
    return m_socket->state() == QAbstractSocket::ConnectedState;
}

// Every request has exactly one reply unit: bytes waiting before the request leaves, or beyond the
// reply once it came, belong to no request (a duplicated or extra unit), and taking them for an
// answer would shift every later reply.
GpibBus::Failure GpibBus::exchange(const GpibUnit &request, GpibUnit *reply)
{
    if (!isConnected())
        return Failure::Other;
    if (m_socket->bytesAvailable() > 0)
        return Failure::BadReply;
    if (m_socket->write(request.toByteArray()) != GpibUnit::kSize)
        return Failure::Other;
    if (const Failure failure = waitUntil([this] { return m_socket->bytesToWrite() == 0; });
        failure != Failure::None)
        return failure;
    // A unit may arrive in two pieces: wait for both of its bytes.
    if (const Failure failure =
            waitUntil([this] { return m_socket->bytesAvailable() >= GpibUnit::kSize; });
        failure != Failure::None)
        return failure;
    const GpibUnit answer = GpibUnit::fromReply(m_socket->read(GpibUnit::kSize));
    if (reply)
        *reply = answer;
    if (m_socket->bytesAvailable() > 0)
        return Failure::BadReply;
    return answer.isError() ? Failure::ErrorPacket : Failure::None;
}

// A connection that ends while waiting fails at once instead of waiting out the time-out.
GpibBus::Failure GpibBus::waitUntil(const std::function<bool()> &done)
{
    const auto finished = [&] { return done() || !isConnected(); };
    switch (m_gate->waitFor(this, &GpibBus::socketActivity, m_waitTimeoutMs, finished)) {
    case AccessGate::WaitResult::Arrived:
        return done() ? Failure::None : Failure::Other;
    case AccessGate::WaitResult::TimedOut:
        return Failure::Timeout;
    case AccessGate::WaitResult::Aborted:
        return Failure::Aborted;
    }
    return Failure::Other;
}
