// mavix-sim: a software Mavix device. It answers WREN register reads and writes over UDP from a
// sparse 32-bit register space holding the running settings image, the EEPROM copy and its
// write-permission byte, and can misbehave on request. It shares no code with the tool's own
// protocol classes, so a fault in one is caught by the other.
//
// The object lives on one thread (its socket's); every method except start() and stop() may be
// called from any thread.
#pragma once

#include "sim/simregisters.h"
#include "sim/simtypes.h"

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QRandomGenerator>

#include <atomic>

class QUdpSocket;

class MavixSim : public QObject
{
    Q_OBJECT

public:
    // Wire constants, kept apart from the tool's own on purpose.
    static constexpr int kHeaderBytes = 8;
    static constexpr uchar kVerType = 0xFF;
    static constexpr uchar kCommandBit = 0x80;
    static constexpr uchar kReadBit = 0x40;
    static constexpr uchar kAckBit = 0x08;
    static constexpr uchar kBusErrorBit = 0x01;
    // The access log keeps this many of the latest accesses.
    static constexpr int kAccessLogCapacity = 100000;
    // Datagrams served in one turn of the event loop: a flood must leave time for the TCP data
    // port, timers and signals.
    static constexpr int kDatagramsPerTurn = 64;
    // Replies held back by the delay fault at one time; further ones are dropped and counted.
    static constexpr int kMaxDelayedReplies = 4096;

    explicit MavixSim(QObject *parent = nullptr);
    ~MavixSim() override;

    // Life cycle, on the emulator's own thread
    [[nodiscard]] bool start(const SimOptions &options);
    void stop();
    [[nodiscard]] SimStartError startError() const { return m_startError; }
    [[nodiscard]] QString errorString() const { return m_errorString; }

    // Where it answers
    [[nodiscard]] QHostAddress address() const;
    [[nodiscard]] quint16 udpPort() const { return m_udpPort.load(); }
    [[nodiscard]] quint16 tcpPort() const;
    // Hook for the TCP data port: once it listens it reports the port it actually bound, and the
    // running image shows that port from then on.
    void setTcpPort(quint16 port);

    // Faults
    void setFaults(const SimFaults &faults);
    [[nodiscard]] SimFaults faults() const;

    // Inspection
    void setRecording(bool on);
    [[nodiscard]] QList<SimAccess> accessLog() const;
    void clearAccessLog();
    [[nodiscard]] SimCounters counters() const;
    [[nodiscard]] QByteArray peek(quint32 address, int length) const;
    void poke(quint32 address, const QByteArray &data);
    void setVerbose(bool on) { m_verbose = on; }

signals:
    void requestServed(const QString &line); // one line per request, only while verbose
    void udpPortMoved(quint16 port);
    void tcpPortWritten(quint16 port); // a write changed the running copy's TCP data port
    // A write was accepted (emitted on the emulator's thread before the next request is served).
    void registersWritten(quint32 address, int length);
    void problemOccurred(const QString &text);

private:
    // What one request leaves to do once the lock is released.
    struct Outcome
    {
        bool served = false; // false: not a request, ignored
        bool reply = false;  // false: dropped on purpose
        bool busError = false;
        int moveUdpTo = -1;
        int tcpWritten = -1;
        bool written = false;
        bool eepromChanged = false;
        int delayMs = 0;
        QByteArray stale;
    };

    void saveEeprom();
    bool bindUdp(const QHostAddress &address, quint16 port, SimStartError *error,
                 QString *errorText);
    void readPendingDatagrams();
    void serve(const char *datagram, qint64 size);
    [[nodiscard]] static bool isWellFormed(const char *datagram, qint64 size);
    void answer(const char *datagram, Outcome &outcome);
    [[nodiscard]] bool refusedByFault(quint32 address, int length) const;
    bool writeRegisters(quint32 address, const char *data, int length, Outcome &outcome);
    void record(bool isRead, quint32 address, quint8 length, quint8 id, bool busError);
    void spoilReply();
    void randomizeReply();
    [[nodiscard]] QString describe(const char *datagram, const Outcome &outcome) const;
    void sendReply(const QByteArray &stale, const QByteArray &reply, const QHostAddress &peer,
                   quint16 peerPort);
    void moveUdpPort(quint16 port);

    // Owned by the emulator's thread
    QUdpSocket *m_socket = nullptr;
    QByteArray m_request;
    QByteArray m_reply;
    QByteArray m_previousReply;
    QHostAddress m_peer;
    quint16 m_peerPort = 0;
    int m_delayedReplies = 0;
    bool m_eepromIsFactory = false;
    QString m_eepromPath;
    SimStartError m_startError = SimStartError::None;
    QString m_errorString;

    // Shared with other threads
    std::atomic<quint16> m_udpPort{0};
    std::atomic<bool> m_verbose{false};
    mutable QMutex m_mutex;
    QHostAddress m_address;
    SimRegisters m_registers;
    SimFaults m_faults;
    QRandomGenerator m_random;
    SimCounters m_counters;
    QList<SimAccess> m_accessLog;
    bool m_recording = true;
};
