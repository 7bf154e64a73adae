// dev.regs: the register maps (the built-in one, the files of MAVIX_MAPS and those loaded) and
// reads and read-modify-write writes by name, through the register-map engine.
#pragma once

#include "regs/registercatalog.h"

#include <QString>

class PythonDevice;

class PythonRegisters
{
public:
    explicit PythonRegisters(PythonDevice *device);

    void load(const QString &fileName);
    // The name resolved: a register or one of its fields; refused when unknown.
    [[nodiscard]] RegisterTarget resolve(const QString &name) const;
    [[nodiscard]] QStringList names() const;

    // A register's raw value, or a field's value.
    [[nodiscard]] quint64 read(const RegisterTarget &target);
    // The value as the map shows it (named values by name, addresses dotted).
    [[nodiscard]] QString text(const RegisterTarget &target, quint64 value) const;
    // Read-modify-write of the register; `value` as typed (a number or a named value).
    void write(const RegisterTarget &target, const QString &value);

private:
    PythonDevice *m_device;
    RegisterCatalog m_catalog;
};
