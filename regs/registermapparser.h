// The native register-map format: TOML that a person writes by hand. A top-level table is a block
// (base, description); its tables are registers (offset, size, access, reset, format,
// description); a register's tables are fields (bits, access, format, description, values).
// docs/register-maps.md describes it with a complete example.
#pragma once

#include "regs/registermap.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <variant>

using MapResult = std::variant<RegisterMap, MapError>;

class RegisterMapParser
{
    Q_DECLARE_TR_FUNCTIONS(RegisterMapParser)

public:
    // Parses and checks a map; `fileName` names it in errors.
    [[nodiscard]] static MapResult parse(const QByteArray &text, const QString &fileName);
    // Reads a file of either format (IP-XACT when it starts with '<', else native).
    [[nodiscard]] static MapResult load(const QString &fileName);
};
