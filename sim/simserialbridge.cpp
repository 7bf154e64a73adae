#include "sim/simserialbridge.h"

#include "sim/mavixsim.h"
#include "sim/simregisters.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtEndian>
#include <QTimer>

namespace {

using namespace Rs232c;

quint32 portAddress(int connector)
{
    return kSettingsBlockAddress + quint32(kPortOffset[size_t(connector)]);
}

int otherEnd(int connector)
{
    return 1 - connector;
}

} // namespace

SimSerialBridge::SimSerialBridge(MavixSim *sim, QObject *parent) : QObject(parent), m_sim(sim)
{
    connect(sim, &MavixSim::registersWritten, this, &SimSerialBridge::onRegistersWritten);
}

SimSerialBridge::~SimSerialBridge() = default;

bool SimSerialBridge::start(quint16 dtePort, quint16 dcePort)
{
    if (!listen(int(Connector::Dte), dtePort) || !listen(int(Connector::Dce), dcePort))
        return false;
    updateLineStates();
    return true;
}

quint16 SimSerialBridge::port(Connector connector) const
{
    return m_ends[size_t(connector)].port.load();
}

bool SimSerialBridge::listen(int connector, quint16 port)
{
    End &end = m_ends[size_t(connector)];
    delete end.socket;
    end.socket = nullptr;
    delete end.server;
    end.server = new QTcpServer(this);
    if (!end.server->listen(m_sim->address(), port)) {
        m_errorString = tr("Cannot listen on TCP port %1 for the %2 connector: %3")
                            .arg(QString::number(port),
                                 connector == int(Connector::Dte) ? QStringLiteral("DTE")
                                                                  : QStringLiteral("DCE"),
                                 end.server->errorString());
        end.port = 0;
        return false;
    }
    end.port = end.server->serverPort();
    connect(end.server, &QTcpServer::newConnection, this, [this, connector] { accept(connector); });
    QByteArray bytes(2, '\0');
    qToBigEndian<quint16>(end.port, bytes.data());
    m_sim->poke(portAddress(connector), bytes);
    return true;
}

// One connection a connector: a newer one takes the place of the older.
void SimSerialBridge::accept(int connector)
{
    End &end = m_ends[size_t(connector)];
    while (QTcpSocket *socket = end.server->nextPendingConnection()) {
        if (end.socket) {
            end.socket->disconnect(this);
            end.socket->close();
            end.socket->deleteLater();
        }
        end.socket = socket;
        socket->setReadBufferSize(kInFlightLimitBytes);
        connect(socket, &QTcpSocket::readyRead, this, [this, connector] { forward(connector); });
        // What the other connector held back goes on once this one's output has left.
        connect(socket, &QTcpSocket::bytesWritten, this,
                [this, connector] { forward(otherEnd(connector)); });
        connect(socket, &QTcpSocket::disconnected, this, [this, connector, socket] {
            End &current = m_ends[size_t(connector)];
            if (current.socket == socket)
                current.socket = nullptr;
            socket->deleteLater();
        });
    }
    if (end.socket && !end.pending.isEmpty()) {
        end.socket->write(end.pending);
        end.pending.clear();
    }
}

// The emulator's data faults apply to the line: every Nth chunk is lost, and each is late by the
// reply delay.
void SimSerialBridge::forward(int from)
{
    QTcpSocket *socket = m_ends[size_t(from)].socket;
    if (!socket || socket->bytesAvailable() == 0)
        return;
    const QTcpSocket *sink = m_ends[size_t(otherEnd(from))].socket;
    if (sink && sink->bytesToWrite() >= kInFlightLimitBytes)
        return;
    const QByteArray bytes = socket->read(kInFlightLimitBytes);
    const SimFaults faults = m_sim->faults();
    ++m_chunks;
    if (faults.dropEveryNth != 0 && m_chunks % faults.dropEveryNth == 0)
        return;
    const int to = otherEnd(from);
    if (faults.delayMs > 0)
        QTimer::singleShot(faults.delayMs, this, [this, to, bytes] { deliver(to, bytes); });
    else
        deliver(to, bytes);
}

void SimSerialBridge::deliver(int to, const QByteArray &bytes)
{
    End &end = m_ends[size_t(to)];
    if (end.socket && end.socket->state() == QAbstractSocket::ConnectedState) {
        end.socket->write(bytes);
        return;
    }
    end.pending.append(bytes.left(kPendingLimitBytes - end.pending.size()));
}

void SimSerialBridge::onRegistersWritten(quint32 address, int length)
{
    if (SimRegisters::touches(address, length, kConfigAddress, kConfigAddress + kConfigSize - 1))
        updateLineStates();
    if (SimRegisters::touches(address, length, portAddress(0), portAddress(1) + 1))
        followPortsInImage();
}

// A port written into the running copy takes effect at once; its connection ends.
void SimSerialBridge::followPortsInImage()
{
    for (int c = 0; c < kConnectorCount; ++c) {
        const quint16 wanted = qFromBigEndian<quint16>(m_sim->peek(portAddress(c), 2).constData());
        if (wanted != m_ends[size_t(c)].port && !listen(c, wanted))
            emit problemOccurred(m_errorString);
    }
}

// Each line is driven by one connector and seen by both, so both line-state bytes are alike.
void SimSerialBridge::updateLineStates()
{
    const QByteArray config = m_sim->peek(kConfigAddress, kConfigSize);
    quint8 state = 0xFF;
    for (const LineBits &bits : kLineTable) {
        const quint8 driverByte = quint8(config[kConnectorConfigByte[size_t(bits.driver)]]);
        if (isOn(driverByte, bits.outputBit))
            state &= quint8(~(1u << bits.stateBit));
    }
    m_sim->poke(kLineStateAddress, QByteArray(kLineStateSize, char(state)));
}
