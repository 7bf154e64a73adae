// Runs a MavixSim on a thread of its own, so that a client on the calling thread may block in a
// synchronous wait while the emulator answers. Used by tests and benchmarks.
#pragma once

#include "sim/simtypes.h"

#include <QString>
#include <QThread>

class MavixSim;

class SimThread
{
public:
    SimThread() = default;
    ~SimThread();
    SimThread(const SimThread &) = delete;
    SimThread &operator=(const SimThread &) = delete;

    // Life cycle: start() returns once the emulator is bound (or has failed to bind).
    [[nodiscard]] bool start(const SimOptions &options = SimOptions::anyPort());
    void stop();

    // The emulator; its methods may be called from this thread.
    [[nodiscard]] MavixSim *sim() const { return m_sim; }
    [[nodiscard]] QHostAddress address() const;
    [[nodiscard]] quint16 udpPort() const;
    [[nodiscard]] quint16 tcpPort() const;
    [[nodiscard]] SimStartError startError() const { return m_startError; }
    [[nodiscard]] QString errorString() const { return m_errorString; }

private:
    QThread m_thread;
    MavixSim *m_sim = nullptr;
    SimStartError m_startError = SimStartError::None;
    QString m_errorString;
};
