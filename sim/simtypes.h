// Plain values shared by the emulator, its thread helper, its console program and the tests.
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QString>
#include <QtGlobal>

// Where and how the emulated device starts.
struct SimOptions
{
    QHostAddress address{QHostAddress::LocalHost};
    quint16 udpPort = 4660;
    quint16 tcpPort = 2424; // the TCP data port; 0 lets the data port pick one
    QString eepromPath;     // empty: the EEPROM copy lives only as long as the process

    // 127.0.0.1 with both ports chosen by the operating system, as tests and benchmarks want.
    [[nodiscard]] static SimOptions anyPort()
    {
        SimOptions options;
        options.udpPort = 0;
        options.tcpPort = 0;
        return options;
    }
};

enum class SimStartError {
    None,
    AddressInUse, // the console program exits with 2
    BindFailed,
    EepromFile,
};

// Misbehaviour on request, for tests and demonstrations. Several reply faults may be set at once.
struct SimFaults
{
    quint32 dropEveryNth = 0; // 0: never drop; N: no reply to requests N, 2N, ...
    int delayMs = 0;          // every reply leaves this much later

    // The reply's header or data is spoiled after the access was made.
    bool wrongVerType = false;
    bool ackClear = false;
    bool wrongPacketId = false;
    bool flipReadWrite = false;
    bool shortReply = false;  // fewer data bytes than the length field
    bool staleReply = false;  // a copy of the previous reply goes out just before each reply
    bool randomReply = false; // the reply is replaced by random bytes or a mutated copy
    quint32 randomSeed = 1;

    // Bus errors: the access is refused, a write changes nothing and a read returns zeros.
    bool busError = false; // every access
    bool busErrorRange = false;
    quint32 busErrorFirst = 0;
    quint32 busErrorLast = 0;
};

// One served request, as the emulator saw it.
struct SimAccess
{
    enum Direction : quint8 { Read, Write };

    Direction direction = Read;
    quint32 address = 0;
    quint8 length = 0;
    QByteArray data; // the bytes written, or the bytes read back
    quint8 packetId = 0;
    bool busError = false;
};

struct SimCounters
{
    quint64 requests = 0; // well-formed requests
    quint64 reads = 0;
    quint64 writes = 0;
    quint64 ignored = 0; // datagrams it could not make sense of: no reply
    quint64 dropped = 0; // replies held back by the drop fault
    quint64 busErrors = 0;
    quint64 repliesSent = 0;   // including stale copies
    quint64 delayOverflow = 0; // delayed replies dropped: kMaxDelayedReplies already waited
};
