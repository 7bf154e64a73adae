// One TCP connection to a connector of the ZEL-RS232C module: connect, send a line, receive what
// the serial side delivered. Every wait goes through the program's AccessGate, so the window keeps
// painting and no second device operation starts meanwhile.
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QString>

class AccessGate;
class QTcpSocket;

class SerialConnectorSession : public QObject
{
    Q_OBJECT

public:
    enum class Result { Done, TimedOut, Aborted, NotConnected, Failed };
    Q_ENUM(Result)

    // Delimiter items, in the form's order: (Ignore), CR, LF, CR+LF.
    enum Delimiter : int { NoDelimiter, CR, LF, CRLF };

    explicit SerialConnectorSession(AccessGate *gate, QObject *parent = nullptr);
    ~SerialConnectorSession() override;

    // Connection
    [[nodiscard]] bool isConnected() const;
    [[nodiscard]] Result open(const QHostAddress &address, quint16 port, int timeoutMs);
    void close(int timeoutMs);

    // Data. A receive takes at most maxLength bytes (ModuleLimits::kReceiveCapBytes when 0 or
    // less); what is left stays for the next one.
    [[nodiscard]] Result send(const QByteArray &bytes, int timeoutMs);
    [[nodiscard]] Result receive(qint64 maxLength, int timeoutMs, QByteArray *data);
    // Watching: every piece that arrives is handed over at once by arrived(), with no receive and
    // no wait, until unwatched or the connection ends. The program stays free meanwhile.
    void setWatched(bool watched);
    [[nodiscard]] bool isWatched() const { return m_watched; }
    // The socket's own words for the last failure.
    [[nodiscard]] QString errorString() const { return m_errorString; }

    // Texts
    [[nodiscard]] static QByteArray withDelimiter(const QString &text, int delimiter);

signals:
    // The device ended the connection by itself; wasWatched: while it was being watched.
    void closedByPeer(bool wasWatched);
    void arrived(QByteArray data);

private:
    void dropSocket();
    void onDisconnected();
    void handOver();

    AccessGate *m_gate;
    QTcpSocket *m_socket = nullptr;
    bool m_closing = false;
    bool m_watched = false;
    QString m_errorString;
};
