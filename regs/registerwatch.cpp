#include "regs/registerwatch.h"

#include "app/accessgate.h"
#include "regs/registervalue.h"
#include "settings/registerrange.h"
#include "wren/wrenagent.h"
#include "wren/wrenreport.h"

namespace {

// A CSV field, quoted when it holds a separator, a quote or a line end.
QString csvField(const QString &text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

} // namespace

RegisterWatch::RegisterWatch(WrenAgent *agent, QObject *parent) : QObject(parent), m_agent(agent)
{
    m_timer.setInterval(kDefaultIntervalMs);
    connect(&m_timer, &QTimer::timeout, this, &RegisterWatch::poll);
}

QString RegisterWatch::watchRange(quint32 address, int length)
{
    if (length < 1 || length > int(RegisterRange::kMaxLength))
        return tr("Data length must be 1 to 255");
    if (QString error = RegisterRange::checkLastByte(address, quint32(length)); !error.isEmpty())
        return error;
    m_address = address;
    m_length = length;
    m_register.reset();
    m_field = -1;
    m_numeric = length <= kNumericBytes;
    m_targetText =
        QStringLiteral("0x") + QStringLiteral("%1").arg(address, 8, 16, QLatin1Char('0')).toUpper();
    return {};
}

QString RegisterWatch::watchName(const RegisterCatalog &catalog, const QString &name)
{
    QString error;
    const std::optional<RegisterTarget> target = catalog.resolve(name, &error);
    if (!target)
        return error;
    const RegisterEntry &entry = catalog.entry(target->entry);
    if (!RegisterMap::readable(entry.reg.access))
        return tr("%1 is write-only").arg(entry.name());
    m_address = entry.address;
    m_length = entry.reg.size;
    m_register = entry.reg;
    m_field = target->field;
    const bool named =
        m_field >= 0 ? !entry.reg.fields.at(m_field).values.isEmpty() : !entry.reg.fields.isEmpty();
    const ValueFormat format =
        m_field >= 0 ? entry.reg.fields.at(m_field).format : entry.reg.format;
    m_numeric = !named && (format == ValueFormat::Hex || format == ValueFormat::Decimal);
    m_targetText = m_field >= 0
                       ? entry.name() + QLatin1Char('.') + entry.reg.fields.at(m_field).name
                       : entry.name();
    return {};
}

void RegisterWatch::start()
{
    m_previous.reset();
    m_lastError.reset();
    m_clock.start();
    m_timer.start();
    emit runningChanged(true);
    poll();
}

void RegisterWatch::stop()
{
    if (!m_timer.isActive())
        return;
    m_timer.stop();
    emit runningChanged(false);
}

void RegisterWatch::poll()
{
    // Another operation waits for its reply and runs the event loop: this tick is skipped rather
    // than sent in the middle of it.
    if (!m_timer.isActive() || m_agent->gate()->isBusy())
        return;
    QByteArray bytes;
    {
        AccessGate::Hold hold(m_agent->gate());
        try {
            bytes = m_agent->read(m_address, quint8(m_length), m_timeoutMs);
        } catch (const WrenError &error) {
            m_lastError = error;
            stop();
            emit failed(wrenErrorText(error, RegisterRange::readTimeoutText()));
            return;
        }
    }
    if (!m_timer.isActive()) // stopped while the read waited
        return;
    WatchSample sample = decode(bytes);
    sample.time = QDateTime::currentDateTime();
    sample.elapsedMs = m_clock.elapsed();
    emit sampled(sample);
}

WatchSample RegisterWatch::decode(const QByteArray &bytes)
{
    WatchSample sample;
    sample.bytes = bytes;
    if (m_register) {
        const quint64 raw = RegisterValue::fromBytes(bytes);
        const quint64 value = m_field >= 0 ? m_register->fields.at(m_field).extract(raw) : raw;
        sample.text = m_field >= 0 ? RegisterValue::format(m_register->fields.at(m_field), raw)
                                   : RegisterValue::format(*m_register, raw);
        if (m_numeric)
            sample.number = double(value);
        sample.changed = !m_previous || *m_previous != bytes;
        if (m_previous && m_field >= 0)
            sample.changed = m_register->fields.at(m_field).extract(
                                 RegisterValue::fromBytes(*m_previous)) != value;
    } else {
        sample.text = QString::fromLatin1(bytes.toHex().toUpper());
        if (m_numeric)
            sample.number = double(RegisterValue::fromBytes(bytes));
        sample.changed = !m_previous || *m_previous != bytes;
    }
    m_previous = bytes;
    return sample;
}

QString RegisterWatch::csvHeader()
{
    return QStringLiteral("time,seconds,target,value");
}

QString RegisterWatch::csvRow(const WatchSample &sample) const
{
    return sample.time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz")) + QLatin1Char(',') +
           QString::number(double(sample.elapsedMs) / 1000, 'f', 3) + QLatin1Char(',') +
           csvField(m_targetText) + QLatin1Char(',') + csvField(sample.text);
}
