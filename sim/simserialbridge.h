// The emulated ZEL-RS232C module: its two connectors, DTE and DCE, listen on the TCP ports held in
// the settings image (offsets 0x1C and 0x1E) and are wired to each other, so bytes sent into one
// come out of the other, and an output line switched on at one connector is an input line of the
// other. The line-state register follows the configuration bytes the tool writes.
//
// It lives on the emulator's thread (create it there, with the emulator as parent); port() may be
// called from any thread.
#pragma once

#include "modules/rs232clayout.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <array>
#include <atomic>

class MavixSim;
class QTcpServer;
class QTcpSocket;

class SimSerialBridge : public QObject
{
    Q_OBJECT

public:
    // Bytes held for a connector nobody is connected to; more are lost, as in a full FIFO.
    static constexpr qsizetype kPendingLimitBytes = 65536;
    // A connector whose peer does not read holds back the other: reading pauses while this much
    // waits to leave, and at most this much of a connector's input waits unread in the process.
    static constexpr qint64 kInFlightLimitBytes = 65536;

    explicit SimSerialBridge(MavixSim *sim, QObject *parent = nullptr);
    ~SimSerialBridge() override;

    // Listens on these ports (0: any free one) and writes the ports it bound into the running
    // settings image.
    [[nodiscard]] bool start(quint16 dtePort, quint16 dcePort);
    [[nodiscard]] quint16 port(Rs232c::Connector connector) const;
    [[nodiscard]] QString errorString() const { return m_errorString; }

signals:
    void problemOccurred(const QString &text);

private:
    struct End
    {
        QTcpServer *server = nullptr;
        QTcpSocket *socket = nullptr;
        QByteArray pending;
        std::atomic<quint16> port{0};
    };

    bool listen(int connector, quint16 port);
    void accept(int connector);
    void forward(int from);
    void deliver(int to, const QByteArray &bytes);
    void onRegistersWritten(quint32 address, int length);
    void followPortsInImage();
    void updateLineStates();

    MavixSim *m_sim;
    std::array<End, Rs232c::kConnectorCount> m_ends;
    quint64 m_chunks = 0;
    QString m_errorString;
};
