// A register map as data: blocks at a base address, registers at an offset in their block, fields
// as bit ranges of a register with optional named values. Register values travel big-endian, as
// everything on the device does; a register holds 1 to 8 bytes so that its value fits a quint64.
#pragma once

#include <QCoreApplication>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

enum class RegisterAccessMode { ReadWrite, ReadOnly, WriteOnly };

// How a value is shown and typed: a number in hex or decimal, a dotted IPv4 address or a
// colon-separated MAC address.
enum class ValueFormat { Hex, Decimal, Ipv4, Mac };

struct NamedValue
{
    QString name;
    quint64 value = 0;
    QString description;
};

struct RegisterField
{
    QString name;
    int lsb = 0;
    int msb = 0;
    RegisterAccessMode access = RegisterAccessMode::ReadWrite;
    ValueFormat format = ValueFormat::Decimal;
    QString description;
    QList<NamedValue> values;
    int line = 0;

    [[nodiscard]] int width() const { return msb - lsb + 1; }
    [[nodiscard]] quint64 mask() const; // the field's bits in place
    [[nodiscard]] quint64 extract(quint64 raw) const;
    [[nodiscard]] quint64 insert(quint64 raw, quint64 value) const;
};

struct Register
{
    QString name;
    quint32 offset = 0;
    int size = 4;
    RegisterAccessMode access = RegisterAccessMode::ReadWrite;
    ValueFormat format = ValueFormat::Hex;
    std::optional<quint64> reset;
    QString description;
    QList<RegisterField> fields; // highest bits first
    int line = 0;

    [[nodiscard]] int fieldIndex(const QString &fieldName) const;
};

struct RegisterBlock
{
    QString name;
    quint32 base = 0;
    QString description;
    QList<Register> registers; // by offset
    int line = 0;
};

// Why a map was refused: where and why.
struct MapError
{
    QString file;
    int line = 0;
    QString reason;

    [[nodiscard]] QString text() const;
};

class RegisterMap
{
    Q_DECLARE_TR_FUNCTIONS(RegisterMap)

public:
    QString source; // the file it came from
    QList<RegisterBlock> blocks;
    // Second names of registers: "block.register" to "block.register".
    QHash<QString, QString> aliases;

    // Sorts blocks, registers and fields and checks the map as a whole: names, sizes, fields
    // inside their register, addresses inside the 32-bit space, no overlapping registers. Empty
    // when the map stands.
    [[nodiscard]] std::optional<MapError> check();

    // Access words of the native format and of IP-XACT.
    [[nodiscard]] static std::optional<RegisterAccessMode> parseAccess(const QString &word);
    [[nodiscard]] static QString accessWord(RegisterAccessMode access);
    [[nodiscard]] static std::optional<ValueFormat> parseFormat(const QString &word);
    [[nodiscard]] static bool isValidName(const QString &name);
    [[nodiscard]] static bool readable(RegisterAccessMode access)
    {
        return access != RegisterAccessMode::WriteOnly;
    }
    [[nodiscard]] static bool writable(RegisterAccessMode access)
    {
        return access != RegisterAccessMode::ReadOnly;
    }

private:
    [[nodiscard]] std::optional<MapError> checkRegister(const RegisterBlock &block,
                                                        const Register &reg) const;
    [[nodiscard]] MapError error(int line, const QString &reason) const;
};
