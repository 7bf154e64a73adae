// Values of registers and fields as bytes and as text: big-endian bytes to a number and back, and a
// number shown and typed in its format or by the name of one of its named values.
#pragma once

#include "regs/registermap.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <optional>

class RegisterValue
{
    Q_DECLARE_TR_FUNCTIONS(RegisterValue)

public:
    [[nodiscard]] static quint64 fromBytes(const QByteArray &bytes);
    [[nodiscard]] static QByteArray toBytes(quint64 value, int size);

    [[nodiscard]] static QString format(quint64 value, int widthBits, ValueFormat format,
                                        const QList<NamedValue> &names = {});
    [[nodiscard]] static QString format(const Register &reg, quint64 raw);
    [[nodiscard]] static QString format(const RegisterField &field, quint64 raw);

    // A typed value: a named value, a number (decimal, 0x hex or 0b binary) or, in those formats,
    // an IPv4 or MAC address. Empty with *error set when it is none of these or does not fit.
    [[nodiscard]] static std::optional<quint64> parse(const QString &text, int widthBits,
                                                      ValueFormat format,
                                                      const QList<NamedValue> &names,
                                                      QString *error);
};
