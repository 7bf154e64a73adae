// Owns the long-lived parts of the program and tears them down in a fixed order, stopping the
// TCP transfer worker first.
#pragma once

#include <QString>

class AppModel;
class DeviceTarget;
class MainWindow;
class QThread;
class QWidget;
class TCPThread;

class AppContext
{
public:
    AppContext(bool expert, bool serverMode, int uiPort, bool noTranslation,
               QWidget *parent = nullptr, const QString &presetTarget = QString());
    ~AppContext();
    AppContext(const AppContext &) = delete;
    AppContext &operator=(const AppContext &) = delete;

    [[nodiscard]] MainWindow *mainWindow() const { return m_mainWindow; }
    [[nodiscard]] TCPThread *worker() const { return m_worker; }
    [[nodiscard]] AppModel *model() const { return m_model; }
    // The device every part of the window talks to.
    [[nodiscard]] DeviceTarget *target() const { return m_target; }

    // Time-outs of the closing sequence
    static constexpr int kSocketCloseWaitMs = 10000;
    static constexpr int kSocketClosePollMs = 100;

private:
    void stopTransfers();
    void waitForSocketClose();

    AppModel *m_model = nullptr;
    DeviceTarget *m_target = nullptr;
    MainWindow *m_mainWindow = nullptr;
    QThread *m_thread = nullptr;
    TCPThread *m_worker = nullptr;
};
