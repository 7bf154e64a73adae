// The ZEL-GPIB tab: reads and writes the GPIB bridge module's settings through the register-access
// agent, connects to the module over the device's TCP data port, and sends a command to an
// instrument, receives its answer or clears the bus.
#pragma once

#include "modules/gpibbus.h"
#include "settings/mavixsetting.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace Ui {
class ZELGPIBTab;
}
class QTcpSocket;
class WrenAgent;
struct WrenError;

class ZELGPIBTab : public QWidget
{
    Q_OBJECT

public:
    explicit ZELGPIBTab(QWidget *parent = nullptr);
    ~ZELGPIBTab() override;

    // Hands over the shared agent (not owned); the tab is ready from then on.
    void setAgent(WrenAgent *agent);

    // Time-outs: every wait for the device (register access, connect, each half of an exchange)
    // gives up after this long; 10000 ms unless shortened.
    void setWaitTimeoutMs(int ms);

    // Received bytes as lower-case hex pairs with one blank between pairs: "0d 0a 41".
    [[nodiscard]] static QString hexText(const QByteArray &bytes);

signals:
    void transmissionFailed();
    void transmissionSuccessed();

public slots:
    void writeSetting();
    void readSetting();
    void toggleConnection();
    void IFC();
    void receive();
    void sendCommand();
    void maxReceiveLengthCheck();
    void applyTargetSettingChange(MavixSetting setting);

private:
    struct Addresses
    {
        quint32 controller = 0;
        quint32 target = 0;
    };
    [[nodiscard]] bool canBeginOperation() const;
    [[nodiscard]] std::optional<Addresses> addressFields();
    [[nodiscard]] bool writeRegisters(quint32 address, const QByteArray &bytes,
                                      const QString &timeoutMessage);
    void reportAccessFailure(const WrenError &error, const QString &timeoutMessage);
    void connectToModule();
    void disconnectFromModule();
    void setTransactionControlsEnabled(bool enabled);
    // Reports the outcome of a transaction; a failed one also ends the connection.
    void finishTransaction(GpibBus::Failure failure, const QString &successMessage);

    std::unique_ptr<Ui::ZELGPIBTab> m_ui;
    WrenAgent *m_agent = nullptr;
    QTcpSocket *m_socket = nullptr;
    GpibBus *m_bus = nullptr;
    MavixSetting m_target;
    int m_waitTimeoutMs = GpibBus::kWaitTimeoutMs;
};
