// dev.gpib: the ZEL-GPIB module through the tab's own engine. The data connection is opened on
// the first bus transaction and kept; a failed transaction ends it, as in the tab, and the next
// one connects again.
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

class GpibBridge;
class PythonDevice;
struct GpibModuleSetting;

class PythonGpib
{
public:
    explicit PythonGpib(PythonDevice *device);
    ~PythonGpib();

    // Module settings: the controller's own GPIB address and the bus time-out.
    [[nodiscard]] GpibModuleSetting settings();
    GpibModuleSetting set(const QString &controller, const QString &timeoutMs);

    // Bus transactions; `delimiter` is crlf, cr, lf or none; maxLength 0: no limit but the cap.
    void send(int address, const QByteArray &message, const QString &delimiter);
    [[nodiscard]] QByteArray receive(int address, const QString &delimiter, qint64 maxLength);
    [[nodiscard]] QByteArray query(int address, const QByteArray &message, const QString &delimiter,
                                   qint64 maxLength);
    void clear();
    void disconnect();

private:
    [[nodiscard]] QByteArray delimiterBytes(const QString &name) const;
    void connectBus();
    [[noreturn]] void fail() const;

    PythonDevice *m_device;
    std::unique_ptr<GpibBridge> m_bridge;
};
