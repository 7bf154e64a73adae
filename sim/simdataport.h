// The emulated device's TCP data port: one connection at a time, as the device. It swallows what
// the tool sends (sink), streams bytes to it (source) or sends back what it gets (echo), and
// reports the totals of each connection. It is written on plain sockets with large writes and
// sendfile(2), so that on loopback it is never the slower end of a transfer.
//
// Run it with start() on a thread of its own, so that a test or benchmark may block while the
// port serves, or with listen() on the calling thread's event loop. Configuration and totals may
// be read and set from any thread.
#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QThread>
#include <QWaitCondition>

class QSocketNotifier;
class QTimer;

class SimDataPort : public QObject
{
    Q_OBJECT

public:
    enum class Mode { Sink, Source, Echo };

    // Totals of the current or the last connection.
    struct Totals
    {
        qint64 bytes = 0;       // received (sink, echo) or sent (source)
        QByteArray sha256;      // of those bytes; empty while hashing is off
        double seconds = 0;     // from the accept to the last byte moved
        int connections = 0;    // connections accepted since listening began
        bool connected = false; // a connection is open now
        bool complete = false;  // a source has sent all it was asked to
    };

    // Buffers and pacing
    static constexpr qint64 kIoBlockBytes = 1024 * 1024;
    static constexpr qint64 kPatternPeriodBytes = 1024 * 1024;
    static constexpr qint64 kMaxBytesPerWakeup = 64 * 1024 * 1024;
    static constexpr int kRateTickMs = 10;

    explicit SimDataPort(QObject *parent = nullptr);
    ~SimDataPort() override;
    SimDataPort(const SimDataPort &) = delete;
    SimDataPort &operator=(const SimDataPort &) = delete;

    // Life cycle. start() runs the port on its own thread (the object must have no parent) and
    // returns the bound port, 0 on failure. listen() serves from the calling thread's event loop.
    [[nodiscard]] quint16 start(const QHostAddress &address, quint16 port);
    [[nodiscard]] bool listen(const QHostAddress &address, quint16 port);
    void stop();
    [[nodiscard]] quint16 port() const;
    [[nodiscard]] QString errorString() const;

    // Configuration, used from the next connection on; setStuck() also acts at once.
    void setMode(Mode mode);
    void setHashing(bool on);
    void setSinkFile(const QString &path);
    void setStuck(bool stuck);
    void setSourceBytes(qint64 bytes); // -1: without end
    void setSourceFile(const QString &path);
    void setSourceRate(qint64 bytesPerSecond); // 0: full speed
    void setKeepOpen(bool keepOpen);
    [[nodiscard]] static bool parseMode(const QString &text, Mode *mode);

    // Results
    [[nodiscard]] Totals totals() const;
    // Waits until `count` connections have been accepted and none is open.
    [[nodiscard]] bool waitForConnectionsDone(int count, int timeoutMs) const;

    // The source pattern: the bytes at `offset` .. `offset + size` of the stream.
    [[nodiscard]] static QByteArray pattern(qint64 offset, qint64 size);

signals:
    void connectionStarted();
    void connectionFinished(qint64 bytes, const QByteArray &sha256, double seconds);

private:
    struct Config
    {
        Mode mode = Mode::Sink;
        bool hashing = true;
        QString sinkFile;
        bool stuck = false;
        qint64 sourceBytes = -1;
        QString sourceFile;
        qint64 sourceRate = 0;
        bool keepOpen = false;
    };

    Q_INVOKABLE bool listenHere(const QHostAddress &address, quint16 port);
    Q_INVOKABLE void stopHere();
    Q_INVOKABLE void applyStuck();
    void acceptConnection();
    void beginConnection(int fd);
    void endConnection();
    void onReadable();
    void onWritable();
    void onRateTick();
    void readIntoSink(qint64 limit);
    void discardIncoming();
    void echoIncoming();
    void flushEcho();
    qint64 sendSource(qint64 limit);
    void finishSource();
    void countMoved(const char *data, qint64 size);
    void setError(const QString &text);

    // Owned by the port's thread
    QThread m_thread;
    int m_listenFd = -1;
    int m_connFd = -1;
    int m_sinkFd = -1;
    int m_sourceFd = -1;
    QSocketNotifier *m_listenNotifier = nullptr;
    QSocketNotifier *m_readNotifier = nullptr;
    QSocketNotifier *m_writeNotifier = nullptr;
    QTimer *m_rateTimer = nullptr;
    Config m_active; // the configuration of the open connection
    QByteArray m_buffer;
    QByteArray m_echoPending;
    qint64 m_sourceLeft = 0; // -1: without end
    qint64 m_sourceOffset = 0;
    bool m_sourceDone = false;
    QElapsedTimer m_connectionTimer;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};

    // Shared with other threads
    mutable QMutex m_mutex;
    mutable QWaitCondition m_changed;
    Config m_config;
    Totals m_totals;
    quint16 m_port = 0;
    QString m_errorString;
};
