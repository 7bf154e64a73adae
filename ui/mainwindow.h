// The program's only top-level window: the working tabs, the logo, the message area in which every
// result and error is shown, and the Help menu. It creates the one register-access agent and wires
// the tabs to each other and to the logo.
#pragma once

#include "settings/mavixsetting.h"

#include <QMainWindow>

namespace Ui {
class MainWindow;
}
class AppModel;
class DeviceTarget;
class ExpertTab;
class GeneralTab;
class QAction;
class QShortcut;
class ServerTab;
class TCPTab;
class TCPThread;
class UDPTab;
class WrenAgent;
class ZELGPIBTab;
class ZELRS232CTab;

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // What the window's owner hands it (none owned by the window; all outlive it).
    struct Parts
    {
        AppModel *model = nullptr;
        TCPThread *worker = nullptr;
        DeviceTarget *target = nullptr;
    };

    MainWindow(bool expert, bool serverMode, int uiPort, bool noTranslation, QWidget *parent,
               const QString &presetTarget, const Parts &parts);
    ~MainWindow() override;

    // Tabs, for the parts of the program and the tests that drive them
    [[nodiscard]] GeneralTab *generalTab() const;
    [[nodiscard]] UDPTab *udpTab() const;
    [[nodiscard]] TCPTab *tcpTab() const;
    [[nodiscard]] ZELRS232CTab *zelrs232cTab() const;
    [[nodiscard]] ZELGPIBTab *zelgpibTab() const;
    // Null when the mode does not show the tab.
    [[nodiscard]] ExpertTab *expertTab() const { return m_expertTab; }
    [[nodiscard]] ServerTab *serverTab() const { return m_serverTab; }
    [[nodiscard]] WrenAgent *agent() const { return m_agent; }

signals:
    void showResult(QString text);
    void showError(QString text);

public slots:
    void regetNetworkInfo(int index);
    // Expert mode: the two tabs' target fields and EEPROM boxes kept in step.
    void applyGeneralTargetInfoToExpert();
    void applyExpertTargetInfoToGeneral();
    void setEEPROMAccessCheck(bool checked);
    void actionAbout_triggered();
    void onShowResult(const QString &text);
    void onShowError(const QString &text);

protected:
    // While a device access waits: user input to this window is swallowed (Esc gives the wait up)
    bool eventFilter(QObject *watched, QEvent *event) override;
    // Closing gives up a wait in progress, which then fails as a time-out.
    void closeEvent(QCloseEvent *event) override;

private:
    void showBusy(bool busy);
    void loadTranslation();
    void initTabs(const QString &presetTarget);
    void removeTabsOfOtherModes();
    void applyPresetTarget(const QString &presetTarget);
    void connectTabs();
    void connectSerialBridgeTab();
    void connectExpertTab();
    void connectZelGpibTab();
    void appendMessage(const QString &html);

    Ui::MainWindow *m_ui = nullptr;
    Parts m_parts;
    WrenAgent *m_agent = nullptr;
    ExpertTab *m_expertTab = nullptr;
    ServerTab *m_serverTab = nullptr;
    QWidget *m_shownTab = nullptr; // the tab shown before the last tab change
    bool m_expert = false;
    bool m_serverMode = false;
    int m_uiPort = 0;
    QShortcut *m_animationShortcut = nullptr;
    QAction *m_aboutAction = nullptr;
};
