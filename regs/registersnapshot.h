// Register values saved to a file and read back: the native format's TOML, one table a block and
// one "register = value" line a register, with the decoded value as a comment.
#pragma once

#include "regs/registercatalog.h"

#include <QCoreApplication>
#include <QHash>

#include <variant>

// Values by entry of the catalog.
using SnapshotValues = QHash<int, quint64>;
using SnapshotResult = std::variant<SnapshotValues, MapError>;

class RegisterSnapshot
{
    Q_DECLARE_TR_FUNCTIONS(RegisterSnapshot)

public:
    // `heading` becomes the first comment line.
    [[nodiscard]] static QByteArray format(const RegisterCatalog &catalog,
                                           const SnapshotValues &values, const QString &heading);
    // Every name must be a register of `catalog`.
    [[nodiscard]] static SnapshotResult parse(const RegisterCatalog &catalog,
                                              const QByteArray &text, const QString &fileName);
    [[nodiscard]] static SnapshotResult load(const RegisterCatalog &catalog,
                                             const QString &fileName);
};
