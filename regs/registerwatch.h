// Polls one register range, register or field at an interval and says what it read and when the
// value changed, until stopped or an access fails. One engine for the window's watch and for
// `mavix watch`; each poll is one device access under the agent's gate.
#pragma once

#include "regs/registercatalog.h"
#include "wren/wrenerror.h"

#include <QByteArray>
#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <optional>

class WrenAgent;

// One read of the watched value.
struct WatchSample
{
    QDateTime time;
    qint64 elapsedMs = 0;         // since the watch started
    QByteArray bytes;             // what the device returned
    QString text;                 // the value as shown: hex bytes, or the field in its format
    std::optional<double> number; // the value as a number, when it is one
    bool changed = false;         // differs from the read before (the first read always does)
};

class RegisterWatch : public QObject
{
    Q_OBJECT

public:
    static constexpr int kDefaultIntervalMs = 1000;
    // A range up to this long is also a number (big-endian) and can be drawn as a line.
    static constexpr int kNumericBytes = 8;

    explicit RegisterWatch(WrenAgent *agent, QObject *parent = nullptr);

    // What to watch; an error text when it cannot be watched.
    [[nodiscard]] QString watchRange(quint32 address, int length);
    // A register or field by name ("block.register" or "block.register.field").
    [[nodiscard]] QString watchName(const RegisterCatalog &catalog, const QString &name);
    [[nodiscard]] QString targetText() const { return m_targetText; }
    [[nodiscard]] bool isNumeric() const { return m_numeric; }

    void setIntervalMs(int intervalMs) { m_timer.setInterval(intervalMs); }
    void setTimeoutMs(int timeoutMs) { m_timeoutMs = timeoutMs; }
    [[nodiscard]] bool isRunning() const { return m_timer.isActive(); }
    // Why the last watch stopped by itself.
    [[nodiscard]] const std::optional<WrenError> &lastError() const { return m_lastError; }

    // CSV: one row a change, under this header.
    [[nodiscard]] static QString csvHeader();
    [[nodiscard]] QString csvRow(const WatchSample &sample) const;

public slots:
    void start(); // reads at once, then every interval
    void stop();

signals:
    void sampled(const WatchSample &sample);
    void failed(const QString &reason);
    void runningChanged(bool running);

private:
    void poll();
    // The sample for `bytes`, compared with the read before.
    [[nodiscard]] WatchSample decode(const QByteArray &bytes);

    WrenAgent *m_agent;
    QTimer m_timer;
    QElapsedTimer m_clock;
    int m_timeoutMs = 10000;
    quint32 m_address = 0;
    int m_length = 4;
    std::optional<Register> m_register; // a named register: its format and fields
    int m_field = -1;
    QString m_targetText;
    bool m_numeric = true;
    std::optional<QByteArray> m_previous;
    std::optional<WrenError> m_lastError;
};
