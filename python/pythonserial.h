// dev.serial: the ZEL-RS232C module's connectors through the tab's own engine. A connector is
// connected on its first use and stays connected, as in the tab.
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

class PythonDevice;
class SerialBridge;

class PythonSerial
{
public:
    explicit PythonSerial(PythonDevice *device);
    ~PythonSerial();

    // `connector` is "dte" or "dce".
    void send(const QString &connector, const QByteArray &data);
    // What has arrived, at most maxLength bytes (0: up to the receive cap).
    [[nodiscard]] QByteArray receive(const QString &connector, qint64 maxLength);
    void disconnect();

private:
    void connectTo(int connector);
    [[noreturn]] void fail() const;

    PythonDevice *m_device;
    std::unique_ptr<SerialBridge> m_bridge;
};
