// The ZEL-RS232C tab: the serial bridge module's settings, line states and data. Settings travel
// through the shared register-access agent; data through one TCP connection per connector.
#pragma once

#include "modules/rs232cconfig.h"
#include "settings/mavixsetting.h"

#include <QWidget>

#include <array>
#include <memory>

namespace Ui {
class ZELRS232CTab;
}
class QCheckBox;
class QShortcut;
class SerialBridge;
class SerialMonitorPanel;
class WrenAgent;

class ZELRS232CTab : public QWidget
{
    Q_OBJECT

public:
    explicit ZELRS232CTab(QWidget *parent = nullptr);
    ~ZELRS232CTab() override;

    // Hands over the shared agent (not owned); the tab is ready from then on.
    void setAgent(WrenAgent *agent);
    [[nodiscard]] bool isReady() const { return m_bridge != nullptr; }
    // The engine the tab shows; null until the agent is handed over.
    [[nodiscard]] SerialBridge *bridge() const { return m_bridge; }

    // Time-outs: register accesses, and connecting, sending and receiving on a connector.
    void setTimeouts(int accessMs, int dataMs);
    void setAccessTimeoutMs(int ms);

signals:
    void targetSettingChanged(MavixSetting setting);
    void transmissionFailed();
    void transmissionSuccessed();

public slots:
    void writeParameters();
    void readParameters();
    void toggleConnection();
    void receive();
    void sendData();
    void maxReceiveLengthCheck();
    void toggleDceDte(int index);
    void applyTargetSettingChange(MavixSetting setting);

private:
    void connectForm();
    [[nodiscard]] bool mayStart() const;
    [[nodiscard]] Rs232c::Connector shownConnector() const { return m_shown; }
    [[nodiscard]] bool eepromAccess() const;
    [[nodiscard]] Rs232cConfig &config();
    [[nodiscard]] QCheckBox *lineBox(Rs232c::Line line) const;

    // Moving values between the form and the records.
    void showFormat();
    void showConnector();
    void storeShownConnector();
    void fillFlowItems();
    void updateConnectionState();
    void announce(bool succeeded);

    std::unique_ptr<Ui::ZELRS232CTab> m_ui;
    SerialBridge *m_bridge = nullptr;
    // What the form shows until the agent is handed over.
    Rs232cConfig m_initialConfig;
    Rs232c::Connector m_shown = Rs232c::Connector::Dte;
    QShortcut *m_sendShortcut = nullptr;
    SerialMonitorPanel *m_monitor = nullptr;
    int m_accessTimeoutMs;
    int m_dataTimeoutMs;
};
