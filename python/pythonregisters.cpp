#include "python/pythonregisters.h"

#include "python/pythondevice.h"
#include "regs/registerio.h"
#include "regs/registervalue.h"
#include "settings/registerrange.h"

namespace {

[[noreturn]] void refuse(const QString &text)
{
    throw PythonFailure(PythonFailure::Kind::Refused, text);
}

} // namespace

PythonRegisters::PythonRegisters(PythonDevice *device) : m_device(device)
{
    for (const QString &file : RegisterCatalog::environmentMaps())
        load(file);
}

void PythonRegisters::load(const QString &fileName)
{
    if (const std::optional<MapError> failure = m_catalog.loadFile(fileName))
        refuse(failure->text());
}

RegisterTarget PythonRegisters::resolve(const QString &name) const
{
    QString error;
    const std::optional<RegisterTarget> target = m_catalog.resolve(name, &error);
    if (!target)
        refuse(error);
    return *target;
}

QStringList PythonRegisters::names() const
{
    QStringList names;
    for (const RegisterEntry &entry : m_catalog.entries())
        names << entry.name();
    return names;
}

quint64 PythonRegisters::read(const RegisterTarget &target)
{
    const Register &reg = m_catalog.entry(target.entry).reg;
    if (!RegisterMap::readable(reg.access))
        refuse(QCoreApplication::translate("MapCommands", "%1 is write-only")
                   .arg(m_catalog.entry(target.entry).name()));
    const quint64 raw = m_device->run([&] {
        AccessGate::Hold hold(m_device->agent()->gate());
        RegisterIo io(m_catalog, m_device->agent(), m_device->timeoutMs());
        try {
            return io.read({target.entry}).value(target.entry);
        } catch (const WrenError &error) {
            throw PythonFailure::of(error, RegisterRange::readTimeoutText());
        }
    });
    return target.field < 0 ? raw : reg.fields.at(target.field).extract(raw);
}

QString PythonRegisters::text(const RegisterTarget &target, quint64 value) const
{
    const Register &reg = m_catalog.entry(target.entry).reg;
    if (target.field < 0)
        return RegisterValue::format(reg, value);
    const RegisterField &field = reg.fields.at(target.field);
    // format() takes the register's raw value: put the field's bits back in place.
    return RegisterValue::format(field, value << field.lsb);
}

void PythonRegisters::write(const RegisterTarget &target, const QString &value)
{
    const Register &reg = m_catalog.entry(target.entry).reg;
    QString error;
    const std::optional<quint64> parsed =
        target.field < 0 ? RegisterValue::parse(value, reg.size * 8, reg.format, {}, &error)
                         : RegisterValue::parse(value, reg.fields.at(target.field).width(),
                                                reg.fields.at(target.field).format,
                                                reg.fields.at(target.field).values, &error);
    if (!parsed)
        refuse(error);
    RegisterIo io(m_catalog, m_device->agent(), m_device->timeoutMs());
    io.setExpert(m_device->expert());
    const QList<FieldWrite> writes{{target, *parsed}};
    if (const QString refusal = io.checkWrites(writes); !refusal.isEmpty())
        refuse(refusal);
    m_device->run([&] {
        AccessGate::Hold hold(m_device->agent()->gate());
        try {
            (void)io.apply(writes);
        } catch (const WrenError &failure) {
            throw PythonFailure::of(failure, RegisterRange::writeTimeoutText());
        }
    });
}
