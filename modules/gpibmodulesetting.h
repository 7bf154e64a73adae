// The ZEL-GPIB module's settings block in the register space: the module's own controller address
// on the bus and its bus time-out, kept in units of 10 ms.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

struct GpibModuleSetting
{
    static constexpr quint32 kAddress = 0xFFFE1000;
    static constexpr int kSize = 4;
    static constexpr quint32 kMaxTimeoutMs = 655350; // 0xFFFF units of 10 ms

    // Empty when the block is short or its controller address is not a GPIB address.
    [[nodiscard]] static std::optional<GpibModuleSetting> decode(const QByteArray &block);
    // Controller address, 0, time-out high byte, time-out low byte.
    [[nodiscard]] QByteArray encode() const;

    // The time-out as typed and shown: milliseconds, written as whole units of 10 ms.
    [[nodiscard]] quint32 timeoutMs() const { return quint32(timeout10Ms) * 10; }
    void setTimeoutMs(quint32 ms) { timeout10Ms = quint16(ms / 10); }

    // A typed decimal number from 0 to max; negative numbers and anything beyond 32 bits are
    // refused.
    [[nodiscard]] static std::optional<quint32> parseDecimal(const QString &text, quint32 max);

    quint8 controllerAddress = 0;
    quint16 timeout10Ms = 0;
};
