#include <toml++/toml.h>

#include "regs/registersnapshot.h"

#include "regs/registervalue.h"

#include <QFile>
#include <QMap>

#include <limits>

namespace {

QString qs(std::string_view text)
{
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

// TOML integers are signed: a value above their range is written as a text.
QString valueText(quint64 value, int size)
{
    const QString hex = QStringLiteral("%1").arg(value, size * 2, 16, QLatin1Char('0')).toUpper();
    return value > quint64(std::numeric_limits<qint64>::max()) ? QStringLiteral("\"0x%1\"").arg(hex)
                                                               : QStringLiteral("0x") + hex;
}

} // namespace

QByteArray RegisterSnapshot::format(const RegisterCatalog &catalog, const SnapshotValues &values,
                                    const QString &heading)
{
    // Blocks in the order of their first register, registers by address.
    QStringList blocks;
    QMap<QString, QStringList> lines;
    for (int i = 0; i < catalog.entries().size(); ++i) {
        if (!values.contains(i))
            continue;
        const RegisterEntry &e = catalog.entry(i);
        if (!blocks.contains(e.block))
            blocks.append(e.block);
        const quint64 value = values.value(i);
        QString line = e.reg.name + QLatin1String(" = ") + valueText(value, e.reg.size);
        if (e.reg.format != ValueFormat::Hex)
            line += QLatin1String("  # ") + RegisterValue::format(e.reg, value);
        lines[e.block].append(line);
    }
    QString text = QStringLiteral("# ") + heading + QLatin1Char('\n');
    for (const QString &block : std::as_const(blocks))
        text += QStringLiteral("\n[%1]\n").arg(block) + lines.value(block).join(QLatin1Char('\n')) +
                QLatin1Char('\n');
    return text.toUtf8();
}

SnapshotResult RegisterSnapshot::parse(const RegisterCatalog &catalog, const QByteArray &text,
                                       const QString &fileName)
{
    SnapshotValues values;
    try {
        const toml::table root =
            toml::parse(std::string_view(text.constData(), size_t(text.size())));
        for (auto &&[blockKey, blockNode] : root) {
            const int blockLine = int(blockKey.source().begin.line);
            if (!blockNode.is_table())
                return MapError{fileName, blockLine,
                                tr("%1 is not a block").arg(qs(blockKey.str()))};
            for (auto &&[key, node] : *blockNode.as_table()) {
                const int line = int(key.source().begin.line);
                const QString name = qs(blockKey.str()) + QLatin1Char('.') + qs(key.str());
                const int index = catalog.indexOf(name);
                if (index < 0)
                    return MapError{fileName, line, tr("No register is named %1").arg(name)};
                const Register &reg = catalog.entry(index).reg;
                std::optional<quint64> value;
                if (const std::optional<int64_t> integer = node.value_exact<int64_t>()) {
                    if (*integer >= 0)
                        value = quint64(*integer);
                } else if (const std::optional<std::string_view> typed =
                               node.value<std::string_view>()) {
                    QString error;
                    value = RegisterValue::parse(qs(*typed), 64, ValueFormat::Hex, {}, &error);
                }
                if (!value || (reg.size < 8 && *value >> (reg.size * 8)))
                    return MapError{
                        fileName, line,
                        tr("The value of %1 is not a number of %2 bytes").arg(name).arg(reg.size)};
                values.insert(index, *value);
            }
        }
    } catch (const toml::parse_error &error) {
        return MapError{fileName, int(error.source().begin.line), qs(error.description())};
    }
    return values;
}

SnapshotResult RegisterSnapshot::load(const RegisterCatalog &catalog, const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return MapError{fileName, 0, tr("Cannot read the file: %1").arg(file.errorString())};
    return parse(catalog, file.readAll(), fileName);
}
