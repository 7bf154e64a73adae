// The ZEL-GPIB tab: reads and writes the GPIB bridge module's settings through the register-access
// agent, connects to the module over the device's TCP data port, and sends a command to an
// instrument, receives its answer or clears the bus.
#pragma once

#include "modules/gpibbridge.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace Ui {
class ZELGPIBTab;
}
class CommandHistory;
class DeviceTarget;
class WrenAgent;

class ZELGPIBTab : public QWidget
{
    Q_OBJECT

public:
    explicit ZELGPIBTab(QWidget *parent = nullptr);
    ~ZELGPIBTab() override;

    // Hands over the shared agent (not owned); the tab is ready from then on.
    void setAgent(WrenAgent *agent);
    // The program's target (not owned): Connect goes to its host and TCP data port.
    void setDeviceTarget(const DeviceTarget *target) { m_target = target; }
    // The engine the tab shows; null until the agent is handed over.
    [[nodiscard]] GpibBridge *bridge() const { return m_bridge; }

    // Time-outs: every wait for the device (register access, connect, each half of an exchange)
    // gives up after this long; 10000 ms unless shortened.
    void setWaitTimeoutMs(int ms);

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
    // Sends the command, then receives the answer, in one click.
    void query();

private:
    [[nodiscard]] bool canBeginOperation() const;
    [[nodiscard]] std::optional<GpibBridge::Addresses> addressFields() const;
    [[nodiscard]] QByteArray delimiter() const;
    [[nodiscard]] std::optional<QByteArray> commandMessage() const;
    [[nodiscard]] qint64 maxReceiveLength() const;
    void showReceived(const QByteArray &received);
    void showConnection(bool connected);
    void announce(bool succeeded);

    std::unique_ptr<Ui::ZELGPIBTab> m_ui;
    GpibBridge *m_bridge = nullptr;
    const DeviceTarget *m_target = nullptr;
    CommandHistory *m_history;
    int m_waitTimeoutMs = GpibBus::kWaitTimeoutMs;
};
