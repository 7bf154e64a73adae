// The Control(UDP) tab: reads any run of 0 to 255 register bytes and shows it as a hex dump, or
// writes hex bytes typed by the user, through the shared register-access agent.
#pragma once

#include "settings/mavixsetting.h"
#include "wren/wrenagent.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace Ui {
class UDPTab;
}
class WrenAgent;

class UDPTab : public QWidget
{
    Q_OBJECT

public:
    explicit UDPTab(QWidget *parent = nullptr);
    ~UDPTab() override;

    // Hands over the shared agent (not owned); the tab is ready from then on.
    void setAgent(WrenAgent *agent);
    // Expert mode lifts the write protection of the top 64 KiB of the address space.
    void setExpertMode(bool expert);
    // Time-outs: every access waits this long for its reply (10000 ms unless a test shortens it).
    void setAccessTimeoutMs(int timeoutMs) { m_accessTimeoutMs = timeoutMs; }

signals:
    void transmissionFailed();
    void transmissionSuccessed();

public slots:
    void readMemory();
    void writeMemory();
    void addAddressToCombobox();

private:
    struct Access
    {
        quint32 address = 0;
        quint32 length = 0;
    };
    [[nodiscard]] std::optional<Access> parseAccess();
    void fail(const QString &message);

    std::unique_ptr<Ui::UDPTab> m_ui;
    WrenAgent *m_agent = nullptr;
    bool m_expert = false;
    int m_accessTimeoutMs = kAccessTimeoutMs;
};
