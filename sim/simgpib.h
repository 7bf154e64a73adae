// The emulated device's ZEL-GPIB module, serving the TCP data port instead of the plain data modes.
// Every 2-byte request unit (code, operand) gets exactly one 2-byte reply unit (status, data). It
// keeps the bus's state as a real controller does (command or data mode; UNL, talk and listen
// addressing; Interface Clear) and drives two instruments at their own GPIB addresses: a meter
// that answers "*IDN?" with its identification line, and an echo box that sends back each message
// it was sent. It records the units it receives, for tests, and can misbehave on request.
//
// Run it with start() on a thread of its own, or with listen() on the calling thread's event loop.
// Faults and the record may be used from any thread.
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QThread>

class QTcpServer;
class QTcpSocket;

class SimGpib : public QObject
{
    Q_OBJECT

public:
    enum class Fault { None, ErrorPacket, NoReply, Duplicate };

    // A peer that sends without reading must not grow the emulator: at most this much of its
    // input waits unread in the process, and reading pauses while this much of the replies waits
    // to leave. The record keeps the latest units only.
    static constexpr qint64 kInputLimitBytes = 65536;
    static constexpr qint64 kOutputLimitBytes = 65536;
    static constexpr qsizetype kRecordLimitUnits = 65536;

    // Instruments
    static constexpr quint32 kMeterAddress = 1;
    static constexpr quint32 kEchoAddress = 2;
    [[nodiscard]] static QByteArray identification();

    // The module's settings block as the device starts with the module: controller address 0 and
    // a bus time-out of 1000 ms.
    static constexpr quint32 kSettingsAddress = 0xFFFE1000;
    [[nodiscard]] static QByteArray startSettings();

    explicit SimGpib(QObject *parent = nullptr);
    ~SimGpib() override;
    SimGpib(const SimGpib &) = delete;
    SimGpib &operator=(const SimGpib &) = delete;

    // Life cycle: start() returns the bound port, 0 on failure (the object must have no parent).
    [[nodiscard]] quint16 start(const QHostAddress &address, quint16 port);
    [[nodiscard]] bool listen(const QHostAddress &address, quint16 port);
    void stop();
    [[nodiscard]] quint16 port() const;
    [[nodiscard]] QString errorString() const;

    // Faults: the request-th unit of every connection (1: the first) is answered with an error
    // packet (status bits error and END) or not at all, and not acted upon, or is answered twice.
    // 0: never.
    void setFault(Fault fault, int request);
    [[nodiscard]] static bool parseFault(const QString &text, Fault *fault, int *request);

    // Inspection: every unit received, code then operand in hex ("5038"), since the last clear.
    [[nodiscard]] QStringList units() const;
    void clearUnits();

private:
    struct Instrument
    {
        bool echo = false;
        QByteArray input;
        QByteArray output;
    };

    Q_INVOKABLE bool listenHere(const QHostAddress &address, quint16 port);
    void stopHere();
    void acceptConnection();
    void readUnits();
    // The reply's status and data byte for one request.
    QByteArray serve(quint8 code, quint8 operand);
    QByteArray interfaceCommand(quint8 command);
    QByteArray acceptDataByte(quint8 byte, bool end);
    QByteArray sourceDataByte();
    void messageComplete(Instrument &instrument);

    // Owned by the module's thread
    QThread m_thread;
    QTcpServer *m_server = nullptr;
    QTcpSocket *m_connection = nullptr;
    int m_requestsOfConnection = 0;
    bool m_commandMode = false; // ATN asserted
    quint32 m_talker = 0xFF;
    QList<quint32> m_listeners;
    QMap<quint32, Instrument> m_instruments;

    // Shared with other threads
    mutable QMutex m_mutex;
    Fault m_fault = Fault::None;
    int m_faultRequest = 0;
    QStringList m_units;
    quint16 m_port = 0;
    QString m_errorString;
};
