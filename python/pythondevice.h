// One device as Python sees it: the register-access agent pointed at the target, and the calls of
// the window and the command-line tool on top of it (registers, settings, transfers). Every call
// runs on the thread that made the device, with the interpreter's lock released while it waits,
// and ends at once on Ctrl+C.
#pragma once

#include "app/accessgate.h"
#include "python/interruptguard.h"
#include "python/pythonfailure.h"
#include "python/reportsink.h"
#include "settings/mavixsetting.h"
#include "tcp/transferrunner.h"
#include "wren/wrenagent.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QThread>

#include "python/pybind.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

class PythonGpib;
class PythonRegisters;
class PythonSerial;

class PythonDevice
{
public:
    PythonDevice(const QString &target, int timeoutMs, bool expert);
    ~PythonDevice();
    PythonDevice(const PythonDevice &) = delete;
    PythonDevice &operator=(const PythonDevice &) = delete;

    // Registers
    [[nodiscard]] QByteArray read(quint32 address, int length);
    void write(quint32 address, const QByteArray &data);

    // Settings: `fields` are (key, text) pairs of the Detail tab's fields.
    [[nodiscard]] MavixSetting settings(bool eeprom);
    MavixSetting set(bool eeprom, bool yes, const QList<std::pair<QString, QString>> &fields);
    // The keys set() takes.
    [[nodiscard]] static QStringList settingKeys();

    // Transfers over the data port: a receive ends after `bytes` bytes or `ms` milliseconds (-1:
    // no limit) or when the device closes the connection.
    [[nodiscard]] TransferResult receive(const QString &path, qint64 bytes, qint64 ms);
    [[nodiscard]] TransferResult send(const QString &path);

    // The module engines and the register maps, made on first use.
    [[nodiscard]] PythonGpib &gpib();
    [[nodiscard]] PythonSerial &serial();
    [[nodiscard]] PythonRegisters &regs();

    // Target
    [[nodiscard]] WrenAgent *agent() const { return m_agent.get(); }
    [[nodiscard]] QString host() const { return m_host; }
    [[nodiscard]] quint16 udpPort() const { return m_agent->targetPort(); }
    [[nodiscard]] quint16 tcpPort() const { return m_tcpPort; }
    [[nodiscard]] int timeoutMs() const { return m_timeoutMs; }
    [[nodiscard]] bool expert() const { return m_expert; }
    [[nodiscard]] QString targetText() const;

    // Runs `call` as one device operation: on the device's thread, with the report sink cleared,
    // the interpreter's lock released and Ctrl+C giving up the wait (`onSignal`, the gate's abort
    // by default). Called with the lock held.
    template <typename Call>
    auto run(Call &&call, const std::function<void()> &onSignal = {}) -> decltype(call());

    // Raises a clear error when called from another thread than the one that made the device.
    void checkThread() const;

private:
    void setTarget(const QString &target);
    // One run over the data port (limits of a receive; -1: none); a refused file and a failure of
    // the run are raised.
    [[nodiscard]] TransferResult transfer(TransferRunner::Direction direction, const QString &path,
                                          qint64 bytes, qint64 ms);

    std::unique_ptr<WrenAgent> m_agent;
    QThread *m_thread = nullptr;
    bool m_mainThread = false;
    QString m_host;
    quint16 m_tcpPort = 0;
    int m_timeoutMs = WrenAgent::kAccessTimeoutMs;
    bool m_expert = false;
    // After the agent: they use it, and go first.
    std::unique_ptr<PythonGpib> m_gpib;
    std::unique_ptr<PythonSerial> m_serial;
    std::unique_ptr<PythonRegisters> m_regs;
};

template <typename Call>
auto PythonDevice::run(Call &&call, const std::function<void()> &onSignal) -> decltype(call())
{
    checkThread();
    ReportSink::instance()->clear();
    AccessGate *gate = m_agent->gate();
    InterruptGuard guard(m_mainThread,
                         onSignal ? onSignal : std::function<void()>([gate] { gate->abort(); }));
    std::exception_ptr failure;
    using Result = decltype(call());
    if constexpr (std::is_void_v<Result>) {
        {
            pybind11::gil_scoped_release release;
            try {
                call();
            } catch (...) {
                failure = std::current_exception();
            }
        }
        guard.finish();
        if (failure)
            std::rethrow_exception(failure);
    } else {
        std::optional<Result> result;
        {
            pybind11::gil_scoped_release release;
            try {
                result.emplace(call());
            } catch (...) {
                failure = std::current_exception();
            }
        }
        guard.finish();
        if (failure)
            std::rethrow_exception(failure);
        return std::move(*result);
    }
}
