#include "cli/mapcommands.h"

#include "app/report.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "regs/registercatalog.h"
#include "regs/registerio.h"
#include "regs/registersnapshot.h"
#include "regs/registervalue.h"
#include "settings/registerrange.h"
#include "wren/wrenagent.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTextStream>

#include <optional>

namespace {

QString hexAddress(quint32 address)
{
    return QStringLiteral("0x") +
           QStringLiteral("%1").arg(address, 8, 16, QLatin1Char('0')).toUpper();
}

QString bitsText(const RegisterField &field)
{
    return field.msb == field.lsb ? QStringLiteral("[%1]").arg(field.lsb)
                                  : QStringLiteral("[%1:%2]").arg(field.msb).arg(field.lsb);
}

// The built-in map, then the files of the environment variable and of --map, each once.
bool loadMaps(const CommandContext &context, RegisterCatalog &catalog, int *exitCode)
{
    QStringList seen;
    const QStringList files =
        RegisterCatalog::environmentMaps() + context.parser->values(QStringLiteral("map"));
    for (const QString &file : files) {
        const QString canonical = QFileInfo(file).canonicalFilePath();
        if (!canonical.isEmpty() && seen.contains(canonical))
            continue;
        seen << canonical;
        if (const std::optional<MapError> failure = catalog.loadFile(file)) {
            *exitCode = context.refuse(failure->text(), ExitCode::kRefusedInput);
            return false;
        }
    }
    return true;
}

QJsonObject fieldsObject(const Register &reg, quint64 raw)
{
    QJsonObject fields;
    for (const RegisterField &field : reg.fields)
        fields.insert(field.name, RegisterValue::format(field, raw));
    return fields;
}

QString targetName(const RegisterCatalog &catalog, const RegisterTarget &target)
{
    const RegisterEntry &e = catalog.entry(target.entry);
    return target.field < 0 ? e.name()
                            : e.name() + QLatin1Char('.') + e.reg.fields.at(target.field).name;
}

QString targetValue(const RegisterCatalog &catalog, const RegisterTarget &target, quint64 raw)
{
    const Register &reg = catalog.entry(target.entry).reg;
    return target.field < 0 ? RegisterValue::format(reg, raw)
                            : RegisterValue::format(reg.fields.at(target.field), raw);
}

// The maps, then the snapshot file named by the first argument, read against them.
std::optional<SnapshotValues> loadSnapshot(const CommandContext &context, RegisterCatalog &catalog,
                                           int *exitCode)
{
    if (!loadMaps(context, catalog, exitCode))
        return std::nullopt;
    SnapshotResult snapshot = RegisterSnapshot::load(catalog, context.arguments.value(0));
    if (const MapError *failure = std::get_if<MapError>(&snapshot)) {
        *exitCode = context.refuse(failure->text(), ExitCode::kRefusedInput);
        return std::nullopt;
    }
    return std::get<SnapshotValues>(std::move(snapshot));
}

// Reads `entries`; on a failed access reports it and returns nothing.
std::optional<QHash<int, quint64>> readEntries(const CommandContext &context,
                                               const RegisterCatalog &catalog,
                                               const QList<int> &entries, int *exitCode)
{
    RegisterIo io(catalog, context.agent, context.timeoutMs);
    try {
        return io.read(entries);
    } catch (const WrenError &error) {
        *exitCode = context.accessFailed(error, RegisterRange::readTimeoutText());
        return std::nullopt;
    }
}

QString targetText(const CommandContext &context)
{
    return QStringLiteral("%1:%2")
        .arg(context.agent->targetAddress().toString())
        .arg(context.agent->targetPort());
}

bool confirm(const CommandContext &context, const QString &question)
{
    if (context.parser->isSet(QStringLiteral("yes")))
        return true;
    context.console->message(question);
    QTextStream in(stdin);
    const QString answer = in.readLine().trimmed().toLower();
    return answer == QLatin1String("y") || answer == QLatin1String("yes");
}

} // namespace

int MapCommands::regs(const CommandContext &context)
{
    RegisterCatalog catalog;
    int exitCode = ExitCode::kSuccess;
    if (!loadMaps(context, catalog, &exitCode))
        return exitCode;
    const QList<int> matches = catalog.match(context.arguments.value(0));
    if (matches.isEmpty())
        return context.refuse(tr("No register matches %1").arg(context.arguments.value(0)),
                              ExitCode::kRefusedInput);
    QString text;
    for (const int index : matches) {
        const RegisterEntry &e = catalog.entry(index);
        if (context.console->json()) {
            QJsonArray fields;
            for (const RegisterField &field : e.reg.fields) {
                QJsonObject values;
                for (const NamedValue &named : field.values)
                    values.insert(named.name, QString::number(named.value));
                fields.append(
                    QJsonObject{{QStringLiteral("name"), field.name},
                                {QStringLiteral("msb"), field.msb},
                                {QStringLiteral("lsb"), field.lsb},
                                {QStringLiteral("access"), RegisterMap::accessWord(field.access)},
                                {QStringLiteral("values"), values}});
            }
            context.console->printJson(
                {{QStringLiteral("name"), e.name()},
                 {QStringLiteral("address"), hexAddress(e.address)},
                 {QStringLiteral("size"), e.reg.size},
                 {QStringLiteral("access"), RegisterMap::accessWord(e.reg.access)},
                 {QStringLiteral("description"), e.reg.description},
                 {QStringLiteral("map"), e.source},
                 {QStringLiteral("fields"), fields}});
            continue;
        }
        text += QStringLiteral("%1  %2  %3 %4  %5\n")
                    .arg(hexAddress(e.address), e.name().leftJustified(36))
                    .arg(e.reg.size)
                    .arg(RegisterMap::accessWord(e.reg.access), e.reg.description);
        for (const RegisterField &field : e.reg.fields) {
            QStringList values;
            for (const NamedValue &named : field.values)
                values << QStringLiteral("%1=%2").arg(named.name).arg(named.value);
            text += QStringLiteral("              .%1 %2 %3  %4\n")
                        .arg(field.name.leftJustified(20), bitsText(field).leftJustified(7),
                             RegisterMap::accessWord(field.access), values.join(QLatin1Char(' ')));
        }
    }
    context.console->print(text);
    return ExitCode::kSuccess;
}

int MapCommands::get(const CommandContext &context)
{
    RegisterCatalog catalog;
    int exitCode = ExitCode::kSuccess;
    if (!loadMaps(context, catalog, &exitCode))
        return exitCode;
    QList<RegisterTarget> targets;
    QList<int> entries;
    for (const QString &name : context.arguments) {
        QString error;
        const std::optional<RegisterTarget> target = catalog.resolve(name, &error);
        if (!target)
            return context.refuse(error, ExitCode::kRefusedInput);
        if (!RegisterMap::readable(catalog.entry(target->entry).reg.access))
            return context.refuse(tr("%1 is write-only").arg(name), ExitCode::kRefusedInput);
        targets << *target;
        entries << target->entry;
    }
    const std::optional<QHash<int, quint64>> values =
        readEntries(context, catalog, entries, &exitCode);
    if (!values)
        return exitCode;
    QString text;
    for (const RegisterTarget &target : std::as_const(targets)) {
        const quint64 raw = values->value(target.entry);
        const Register &reg = catalog.entry(target.entry).reg;
        const QString name = targetName(catalog, target);
        const QString value = targetValue(catalog, target, raw);
        if (context.console->json()) {
            QJsonObject object{
                {QStringLiteral("name"), name},
                {QStringLiteral("raw"), RegisterValue::format(raw, reg.size * 8, ValueFormat::Hex)},
                {QStringLiteral("value"), value}};
            if (target.field < 0 && !reg.fields.isEmpty())
                object.insert(QStringLiteral("fields"), fieldsObject(reg, raw));
            context.console->printJson(object);
            continue;
        }
        text += QStringLiteral("%1 = %2\n").arg(name, value);
        if (target.field < 0)
            for (const RegisterField &field : reg.fields)
                text += QStringLiteral("  .%1 = %2\n")
                            .arg(field.name, RegisterValue::format(field, raw));
    }
    context.console->print(text);
    return ExitCode::kSuccess;
}

int MapCommands::put(const CommandContext &context)
{
    RegisterCatalog catalog;
    int exitCode = ExitCode::kSuccess;
    if (!loadMaps(context, catalog, &exitCode))
        return exitCode;
    QList<FieldWrite> writes;
    for (const QString &assignment : context.arguments) {
        const int equals = assignment.indexOf(QLatin1Char('='));
        if (equals <= 0)
            return context.refuse(tr("%1 is not NAME=VALUE").arg(assignment),
                                  ExitCode::kRefusedInput);
        QString error;
        const std::optional<RegisterTarget> target =
            catalog.resolve(assignment.left(equals), &error);
        if (!target)
            return context.refuse(error, ExitCode::kRefusedInput);
        const Register &reg = catalog.entry(target->entry).reg;
        const std::optional<quint64> value =
            target->field < 0 ? RegisterValue::parse(assignment.mid(equals + 1), reg.size * 8,
                                                     reg.format, {}, &error)
                              : RegisterValue::parse(assignment.mid(equals + 1),
                                                     reg.fields.at(target->field).width(),
                                                     reg.fields.at(target->field).format,
                                                     reg.fields.at(target->field).values, &error);
        if (!value)
            return context.refuse(tr("%1: %2").arg(assignment.left(equals), error),
                                  ExitCode::kRefusedInput);
        writes.append({*target, *value});
    }
    RegisterIo io(catalog, context.agent, context.timeoutMs);
    io.setExpert(context.parser->isSet(QStringLiteral("expert")));
    if (const QString refusal = io.checkWrites(writes); !refusal.isEmpty())
        return context.refuse(refusal, ExitCode::kRefusedInput);
    QList<RegisterChange> changes;
    try {
        changes = io.apply(writes);
    } catch (const WrenError &error) {
        return context.accessFailed(error, RegisterRange::writeTimeoutText());
    }
    reportResult(RegisterRange::writeDoneText());
    QString text;
    for (const RegisterChange &change : std::as_const(changes)) {
        const RegisterEntry &e = catalog.entry(change.entry);
        const QString after = RegisterValue::format(change.after, e.reg.size * 8, ValueFormat::Hex);
        const QString before =
            change.before ? RegisterValue::format(*change.before, e.reg.size * 8, ValueFormat::Hex)
                          : QString();
        if (context.console->json())
            context.console->printJson({{QStringLiteral("name"), e.name()},
                                        {QStringLiteral("before"), before},
                                        {QStringLiteral("after"), after}});
        else
            text += before.isEmpty()
                        ? QStringLiteral("%1 = %2\n").arg(e.name(), after)
                        : QStringLiteral("%1 = %2 (was %3)\n").arg(e.name(), after, before);
    }
    context.console->print(text);
    return ExitCode::kSuccess;
}

int MapCommands::dump(const CommandContext &context)
{
    RegisterCatalog catalog;
    int exitCode = ExitCode::kSuccess;
    if (!loadMaps(context, catalog, &exitCode))
        return exitCode;
    QList<int> entries;
    for (const int index : catalog.match(context.arguments.value(0)))
        if (RegisterMap::readable(catalog.entry(index).reg.access))
            entries << index;
    if (entries.isEmpty())
        return context.refuse(tr("No readable register matches %1").arg(context.arguments.value(0)),
                              ExitCode::kRefusedInput);
    const std::optional<QHash<int, quint64>> values =
        readEntries(context, catalog, entries, &exitCode);
    if (!values)
        return exitCode;
    if (context.console->json()) {
        for (const int index : std::as_const(entries)) {
            const RegisterEntry &e = catalog.entry(index);
            context.console->printJson(
                {{QStringLiteral("name"), e.name()},
                 {QStringLiteral("address"), hexAddress(e.address)},
                 {QStringLiteral("raw"),
                  RegisterValue::format(values->value(index), e.reg.size * 8, ValueFormat::Hex)},
                 {QStringLiteral("value"), RegisterValue::format(e.reg, values->value(index))}});
        }
        return ExitCode::kSuccess;
    }
    const QString heading =
        tr("Register values of %1 at %2")
            .arg(targetText(context), QDateTime::currentDateTimeUtc().toString(
                                          QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'")));
    context.console->print(QString::fromUtf8(RegisterSnapshot::format(catalog, *values, heading)));
    return ExitCode::kSuccess;
}

int MapCommands::diff(const CommandContext &context)
{
    RegisterCatalog catalog;
    int exitCode = ExitCode::kSuccess;
    const std::optional<SnapshotValues> snapshot = loadSnapshot(context, catalog, &exitCode);
    if (!snapshot)
        return exitCode;
    const SnapshotValues &saved = *snapshot;
    QList<int> entries = saved.keys();
    std::sort(entries.begin(), entries.end());
    const std::optional<QHash<int, quint64>> now =
        readEntries(context, catalog, entries, &exitCode);
    if (!now)
        return exitCode;
    QString text;
    int changed = 0;
    for (const int index : std::as_const(entries)) {
        if (!now->contains(index) || now->value(index) == saved.value(index))
            continue;
        ++changed;
        const RegisterEntry &e = catalog.entry(index);
        const quint64 before = saved.value(index);
        const quint64 after = now->value(index);
        if (context.console->json()) {
            context.console->printJson(
                {{QStringLiteral("name"), e.name()},
                 {QStringLiteral("saved"), RegisterValue::format(e.reg, before)},
                 {QStringLiteral("device"), RegisterValue::format(e.reg, after)}});
            continue;
        }
        text += QStringLiteral("%1: %2 -> %3\n")
                    .arg(e.name(), RegisterValue::format(e.reg, before),
                         RegisterValue::format(e.reg, after));
        for (const RegisterField &field : e.reg.fields)
            if (field.extract(before) != field.extract(after))
                text += QStringLiteral("  .%1: %2 -> %3\n")
                            .arg(field.name, RegisterValue::format(field, before),
                                 RegisterValue::format(field, after));
    }
    context.console->print(text);
    reportResult(tr("Registers changed since the snapshot: %1").arg(changed));
    return ExitCode::kSuccess;
}

int MapCommands::load(const CommandContext &context)
{
    RegisterCatalog catalog;
    int exitCode = ExitCode::kSuccess;
    const std::optional<SnapshotValues> snapshot = loadSnapshot(context, catalog, &exitCode);
    if (!snapshot)
        return exitCode;
    // Registers the device does not let us write are left out.
    QHash<int, quint64> values;
    QList<FieldWrite> writes;
    const SnapshotValues &saved = *snapshot;
    for (auto it = saved.cbegin(); it != saved.cend(); ++it)
        if (RegisterMap::writable(catalog.entry(it.key()).reg.access)) {
            values.insert(it.key(), it.value());
            writes.append({{it.key(), -1}, it.value()});
        }
    RegisterIo io(catalog, context.agent, context.timeoutMs);
    io.setExpert(context.parser->isSet(QStringLiteral("expert")));
    if (const QString refusal = io.checkWrites(writes); !refusal.isEmpty())
        return context.refuse(refusal, ExitCode::kRefusedInput);
    if (!confirm(context,
                 tr("Write %1 registers to %2? [y/N]").arg(values.size()).arg(targetText(context))))
        return context.refuse(tr("Nothing written"), ExitCode::kRefusedInput);
    try {
        io.writeValues(values);
    } catch (const WrenError &error) {
        return context.accessFailed(error, RegisterRange::writeTimeoutText());
    }
    reportResult(RegisterRange::writeDoneText());
    if (context.console->json())
        context.console->printJson({{QStringLiteral("written"), int(values.size())}});
    return ExitCode::kSuccess;
}
