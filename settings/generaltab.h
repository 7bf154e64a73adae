// The General tab: reads the device's network settings from the running or EEPROM copy and writes
// a new IP address, TCP data port and UDP port. Its target fields say which device the shared
// register-access agent talks to.
#pragma once

#include "settings/mavixsetting.h"
#include "wren/wrenagent.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace Ui {
class GeneralTab;
}
class DeviceTarget;
class QCheckBox;
class MavixSettingAccess;
class QLineEdit;
class WrenAgent;

class GeneralTab : public QWidget
{
    Q_OBJECT

public:
    explicit GeneralTab(QWidget *parent = nullptr);
    ~GeneralTab() override;

    // Hand over the shared agent and the program's target (neither owned); the tab is ready once
    // it has both. The target fields show the target whenever it changes.
    void setAgent(WrenAgent *agent);
    void setDeviceTarget(DeviceTarget *target);
    [[nodiscard]] bool isReady() const;

    // Time-outs: every access waits this long for its reply (10000 ms unless a test shortens it).
    void setAccessTimeoutMs(int timeoutMs) { m_accessTimeoutMs = timeoutMs; }
    [[nodiscard]] int accessTimeoutMs() const { return m_accessTimeoutMs; }

    // Target fields
    // Validates the three target fields; when all pass, they become the program's target (which
    // the agent follows).
    bool applyTargetFields(bool reportErrors);
    // Puts exactly these texts into the target fields, empty ones included; nothing else changes.
    void setTargetFields(const QString &ip, const QString &tcpPort, const QString &udpPort);
    // Write fields the user has not edited take these texts, so that a write that changes one port
    // does not also move the device to the form's factory address.
    void fillUntouchedWriteFields(const QString &ip, const QString &tcpPort,
                                  const QString &udpPort);
    [[nodiscard]] QString targetIPAddressText() const;
    [[nodiscard]] QString targetTCPPortText() const;
    [[nodiscard]] QString targetUDPPortText() const;

    // EEPROM Access
    [[nodiscard]] QCheckBox *eepromAccessCheckbox() const { return m_eepromAccess; }
    [[nodiscard]] bool isEEPROMAccessChecked() const;
    void setEEPROMAccessChecked(bool checked);

signals:
    void targetSettingChanged(MavixSetting setting);
    void transmissionFailed();
    void transmissionSuccessed();

public slots:
    virtual void applyTargetSettingChange(MavixSetting setting);
    void readDeviceInformation();
    void writeDeviceInformation();
    virtual void resetDeviceInformation();

protected:
    // For a derived tab that builds its own form and hands over its widgets.
    struct WithoutForm
    {
    };
    struct TargetWidgets
    {
        QLineEdit *ipAddress = nullptr;
        QLineEdit *tcpPort = nullptr;
        QLineEdit *udpPort = nullptr;
        QCheckBox *eepromAccess = nullptr;
    };
    GeneralTab(WithoutForm, QWidget *parent);
    void setTargetWidgets(const TargetWidgets &widgets);

    // Moving a record into and out of the form.
    virtual void showSetting(const MavixSetting &setting);
    // The record to write: `base` (decoded from the image just read) with the form's values.
    // Empty when a field is invalid; the reasons have been reported.
    [[nodiscard]] virtual std::optional<MavixSetting> recordFromFields(const MavixSetting &base);

private:
    void connectForm();
    void showTarget();
    void prepareAccess();
    [[nodiscard]] bool confirmUdpPortChange();

    std::unique_ptr<Ui::GeneralTab> m_ui;
    WrenAgent *m_agent = nullptr;
    DeviceTarget *m_target = nullptr;
    MavixSettingAccess *m_access = nullptr; // the read and write sequences, made with the agent
    QLineEdit *m_targetIPAddress = nullptr;
    QLineEdit *m_targetTCPPort = nullptr;
    QLineEdit *m_targetUDPPort = nullptr;
    QCheckBox *m_eepromAccess = nullptr;
    int m_accessTimeoutMs = kAccessTimeoutMs;
};
