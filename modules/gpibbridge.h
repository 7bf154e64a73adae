// The ZEL-GPIB bridge module as every front end drives it (the tab, the command-line tool): its
// settings through the register-access agent, and the bus through one TCP connection to the
// device's data port. Each operation reports its outcome with the tab's messages; a failed bus
// transaction ends the connection, as the module must then be connected again.
#pragma once

#include "modules/gpibbus.h"
#include "modules/gpibmodulesetting.h"

#include <QCoreApplication>
#include <QObject>
#include <QString>

#include <optional>

class AccessGate;
class QTcpSocket;
class WrenAgent;

class GpibBridge : public QObject
{
    Q_OBJECT

public:
    struct Addresses
    {
        quint32 controller = 0;
        quint32 target = 0;
    };

    // The agent is not owned; its gate orders every wait.
    explicit GpibBridge(WrenAgent *agent, QObject *parent = nullptr);
    ~GpibBridge() override;

    // Time-outs: every wait for the device (register access, connect, each half of an exchange)
    // gives up after this long; 10000 ms unless shortened.
    void setWaitTimeoutMs(int ms);
    [[nodiscard]] int waitTimeoutMs() const { return m_waitTimeoutMs; }
    [[nodiscard]] AccessGate *gate() const;

    // Checks of typed fields, with the tab's messages.
    [[nodiscard]] static std::optional<Addresses> parseAddresses(const QString &controller,
                                                                 const QString &target);
    [[nodiscard]] static std::optional<GpibModuleSetting> parseSetting(const QString &controller,
                                                                       const QString &timeoutMs);

    // Module settings
    [[nodiscard]] std::optional<GpibModuleSetting> readSetting();
    [[nodiscard]] bool writeSetting(const GpibModuleSetting &setting);

    // Connection to the module on the device's TCP data port.
    [[nodiscard]] bool isConnected() const;
    [[nodiscard]] bool connectTo(const QString &host, quint16 port);
    void disconnectFromModule();

    // Transactions. A receive keeps what arrived before a failure in *data.
    [[nodiscard]] bool send(const Addresses &addresses, const QByteArray &message);
    [[nodiscard]] bool receive(const Addresses &addresses, const QByteArray &delimiter,
                               qint64 maxLength, QByteArray *data);
    [[nodiscard]] bool interfaceClear();
    // Send, then receive the answer.
    [[nodiscard]] bool query(const Addresses &addresses, const QByteArray &message,
                             const QByteArray &delimiter, qint64 maxLength, QByteArray *data);
    // What the last failed operation ran into (Other for a refused setting or connection).
    [[nodiscard]] GpibBus::Failure lastFailure() const { return m_lastFailure; }
    // Whether the last failed operation was a register access, and its WrenError code.
    [[nodiscard]] std::optional<int> lastAccessErrorCode() const { return m_lastAccessError; }

signals:
    void connectionChanged(bool connected);

private:
    // Reports the outcome of a transaction; a failed one also ends the connection.
    bool finish(GpibBus::Failure failure, const QString &successMessage);
    bool writeRegisters(quint32 address, const QByteArray &bytes, const QString &timeoutMessage);

    WrenAgent *m_agent;
    QTcpSocket *m_socket;
    GpibBus *m_bus;
    int m_waitTimeoutMs = GpibBus::kWaitTimeoutMs;
    GpibBus::Failure m_lastFailure = GpibBus::Failure::None;
    std::optional<int> m_lastAccessError;
};
