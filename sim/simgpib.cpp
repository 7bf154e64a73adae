#include "sim/simgpib.h"

#include "sim/ownthread.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace {

// Reply status bits
constexpr quint8 kStatusOk = 0x00;
constexpr quint8 kStatusEnd = 0x01;
constexpr quint8 kStatusError = 0x02;

// Request codes and operands
constexpr quint8 kDataByte = 0x20;
constexpr quint8 kLastDataByte = 0x21;
constexpr quint8 kReadOneByte = 0x30;
constexpr quint8 kCommand = 0x40;
constexpr quint8 kBusControl = 0x50;
constexpr quint8 kInterfaceClear = 0x2F;
constexpr quint8 kCommandModeFlag = 0x08;

// Interface commands
constexpr quint8 kListenBase = 0x20;
constexpr quint8 kUnlisten = 0x3F;
constexpr quint8 kTalkBase = 0x40;
constexpr quint8 kUntalk = 0x5F;
constexpr quint32 kNobody = 0xFF;

QByteArray reply(quint8 status, quint8 data = 0)
{
    return QByteArray(1, char(status)) + char(data);
}

} // namespace

QByteArray SimGpib::identification()
{
    return QByteArrayLiteral("MAVIX,SIM-GPIB-METER,0,1.0\r\n");
}

QByteArray SimGpib::startSettings()
{
    return QByteArray::fromHex("00000064");
}

SimGpib::SimGpib(QObject *parent) : QObject(parent)
{
    m_instruments.insert(kMeterAddress, Instrument{});
    m_instruments.insert(kEchoAddress, Instrument{true, {}, {}});
}

SimGpib::~SimGpib()
{
    stop();
}

// ---- Life cycle ----

quint16 SimGpib::start(const QHostAddress &address, quint16 port)
{
    if (parent() || m_thread.isRunning())
        return 0;
    if (!runOnOwnThread(this, &m_thread, QStringLiteral("SimGpib"),
                        [&] { return listenHere(address, port); })) {
        stop();
        return 0;
    }
    return this->port();
}

bool SimGpib::listen(const QHostAddress &address, quint16 port)
{
    return listenHere(address, port);
}

void SimGpib::stop()
{
    leaveOwnThread(this, &m_thread, [this] { stopHere(); });
}

quint16 SimGpib::port() const
{
    QMutexLocker lock(&m_mutex);
    return m_port;
}

QString SimGpib::errorString() const
{
    QMutexLocker lock(&m_mutex);
    return m_errorString;
}

bool SimGpib::listenHere(const QHostAddress &address, quint16 port)
{
    m_server = new QTcpServer(this);
    connect(m_server, &QTcpServer::newConnection, this, &SimGpib::acceptConnection);
    QMutexLocker lock(&m_mutex);
    if (!m_server->listen(address, port)) {
        m_errorString = m_server->errorString();
        return false;
    }
    m_port = m_server->serverPort();
    return true;
}

void SimGpib::stopHere()
{
    delete m_connection;
    m_connection = nullptr;
    delete m_server;
    m_server = nullptr;
}

// One connection at a time, as the module: a new one replaces the old.
void SimGpib::acceptConnection()
{
    while (QTcpSocket *next = m_server->nextPendingConnection()) {
        delete m_connection;
        m_connection = next;
        m_requestsOfConnection = 0;
        next->setReadBufferSize(kInputLimitBytes);
        connect(next, &QTcpSocket::readyRead, this, &SimGpib::readUnits);
        connect(next, &QTcpSocket::bytesWritten, this, &SimGpib::readUnits);
    }
}

// ---- Faults and inspection ----

void SimGpib::setFault(Fault fault, int request)
{
    QMutexLocker lock(&m_mutex);
    m_fault = fault;
    m_faultRequest = request;
}

// "error-packet:N", "no-reply:N" or "duplicate:N"
bool SimGpib::parseFault(const QString &text, Fault *fault, int *request)
{
    const QString kind = text.section(QLatin1Char(':'), 0, 0);
    bool ok = false;
    *request = text.section(QLatin1Char(':'), 1).toInt(&ok);
    if (kind == QLatin1String("error-packet"))
        *fault = Fault::ErrorPacket;
    else if (kind == QLatin1String("no-reply"))
        *fault = Fault::NoReply;
    else if (kind == QLatin1String("duplicate"))
        *fault = Fault::Duplicate;
    else
        return false;
    return ok && *request > 0;
}

QStringList SimGpib::units() const
{
    QMutexLocker lock(&m_mutex);
    return m_units;
}

void SimGpib::clearUnits()
{
    QMutexLocker lock(&m_mutex);
    m_units.clear();
}

// ---- Protocol ----

void SimGpib::readUnits()
{
    while (m_connection && m_connection->bytesAvailable() >= 2 &&
           m_connection->bytesToWrite() < kOutputLimitBytes) {
        const QByteArray request = m_connection->read(2);
        const auto code = quint8(request[0]);
        const auto operand = quint8(request[1]);
        Fault fault = Fault::None;
        {
            QMutexLocker lock(&m_mutex);
            if (m_units.size() >= kRecordLimitUnits)
                m_units.removeFirst();
            m_units << QString::fromLatin1(request.toHex());
            if (++m_requestsOfConnection == m_faultRequest)
                fault = m_fault;
        }
        if (fault == Fault::NoReply)
            continue;
        if (fault == Fault::ErrorPacket) {
            m_connection->write(reply(kStatusError | kStatusEnd));
            continue;
        }
        const QByteArray answer = serve(code, operand);
        m_connection->write(fault == Fault::Duplicate ? answer + answer : answer);
    }
}

QByteArray SimGpib::serve(quint8 code, quint8 operand)
{
    switch (code) {
    case kBusControl:
        if (operand == kInterfaceClear) {
            m_talker = kNobody;
            m_listeners.clear();
            m_commandMode = false;
            return reply(kStatusOk);
        }
        m_commandMode = operand & kCommandModeFlag;
        return reply(kStatusOk);
    case kCommand:
        return interfaceCommand(operand);
    case kDataByte:
    case kLastDataByte:
        return acceptDataByte(operand, code == kLastDataByte);
    case kReadOneByte:
        return sourceDataByte();
    default:
        return reply(kStatusError);
    }
}

QByteArray SimGpib::interfaceCommand(quint8 command)
{
    if (!m_commandMode)
        return reply(kStatusError); // ATN is not asserted: the byte would be data
    if (command == kUnlisten) {
        m_listeners.clear();
    } else if (command == kUntalk) {
        m_talker = kNobody;
    } else if (command >= kTalkBase && command < kUntalk) {
        m_talker = command - kTalkBase; // any other talker is unaddressed
    } else if (command >= kListenBase && command < kUnlisten) {
        if (!m_listeners.contains(command - kListenBase))
            m_listeners << command - kListenBase;
    }
    return reply(kStatusOk);
}

// A message byte needs at least one instrument listening, or nobody takes it off the bus.
QByteArray SimGpib::acceptDataByte(quint8 byte, bool end)
{
    if (m_commandMode)
        return reply(kStatusError);
    int acceptors = 0;
    for (const quint32 address : std::as_const(m_listeners)) {
        auto instrument = m_instruments.find(address);
        if (instrument == m_instruments.end())
            continue;
        ++acceptors;
        instrument->input.append(char(byte));
        if (end)
            messageComplete(*instrument);
    }
    return reply(acceptors == 0 ? kStatusError : kStatusOk);
}

QByteArray SimGpib::sourceDataByte()
{
    auto instrument = m_instruments.find(m_talker);
    if (m_commandMode || instrument == m_instruments.end() || instrument->output.isEmpty())
        return reply(kStatusError); // nobody talks: the module's bus time-out
    const auto byte = quint8(instrument->output.front());
    instrument->output.remove(0, 1);
    return reply(instrument->output.isEmpty() ? kStatusEnd : kStatusOk, byte);
}

// A new message replaces any answer not yet read.
void SimGpib::messageComplete(Instrument &instrument)
{
    const QByteArray message = instrument.input;
    instrument.input.clear();
    if (instrument.echo)
        instrument.output = message;
    else if (message.trimmed().toUpper() == "*IDN?")
        instrument.output = identification();
}
