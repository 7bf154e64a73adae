#include "regs/devicemap.h"

#include "modules/gpibmodulesetting.h"
#include "modules/rs232clayout.h"
#include "settings/mavixsetting.h"

#include <QCoreApplication>

namespace {

using Access = RegisterAccessMode;

Register reg(const char *name, quint32 offset, int size, ValueFormat format,
             const char *description, QList<RegisterField> fields = {})
{
    Register r;
    r.name = QLatin1String(name);
    r.offset = offset;
    r.size = size;
    r.format = format;
    r.description = QCoreApplication::translate("DeviceMap", description);
    r.fields = std::move(fields);
    return r;
}

RegisterField field(const char *name, int msb, int lsb, QList<NamedValue> values = {},
                    Access access = Access::ReadWrite)
{
    RegisterField f;
    f.name = QLatin1String(name);
    f.msb = msb;
    f.lsb = lsb;
    f.values = std::move(values);
    f.access = access;
    return f;
}

NamedValue named(const char *name, quint64 value)
{
    return {QLatin1String(name), value, QString()};
}

// Descriptions are shown in the user's language (context "DeviceMap").

// The fields of the settings image, at their offsets in the 64-byte image.
QList<Register> settingsImage()
{
    using F = ValueFormat;
    return {
        reg("flags", 0x10, 1, F::Hex, QT_TRANSLATE_NOOP("DeviceMap", "Flag byte"),
            {field("keep_alive", 2, 2, {named("off", 0), named("on", 1)})}),
        reg("mac_address", 0x12, 6, F::Mac, QT_TRANSLATE_NOOP("DeviceMap", "MAC address")),
        reg("ip_address", 0x18, 4, F::Ipv4, QT_TRANSLATE_NOOP("DeviceMap", "IPv4 address")),
        reg("tcp_data_port", 0x1C, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap",
                              "TCP data port; with ZEL-RS232C, the DTE connector's port")),
        reg("tcp_command_port", 0x1E, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap",
                              "TCP command port; with ZEL-RS232C, the DCE connector's port")),
        reg("tcp_max_segment_size", 0x20, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap", "TCP max segment size")),
        reg("udp_port", 0x22, 2, F::Decimal, QT_TRANSLATE_NOOP("DeviceMap", "UDP port")),
        reg("keep_alive_busy_ms", 0x24, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap",
                              "TCP keep-alive while the send buffer is not empty, ms")),
        reg("keep_alive_idle_ms", 0x26, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap", "TCP keep-alive while the send buffer is empty, ms")),
        reg("connect_timeout_ms", 0x28, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap", "TCP time-out, connecting, ms")),
        reg("disconnect_timeout_256ms", 0x2A, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap", "TCP time-out, disconnect, in units of 256 ms")),
        reg("reconnect_interval_ms", 0x2C, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap", "TCP re-connect interval, ms")),
        reg("retransmission_timer_ms", 0x2E, 2, F::Decimal,
            QT_TRANSLATE_NOOP("DeviceMap", "TCP re-transmission timer, ms")),
    };
}

QList<NamedValue> activeLow()
{
    return {named("on", 0), named("off", 1)};
}

QList<NamedValue> flowTypes()
{
    return {named("manual", 0), named("auto_ignoring", 2), named("auto_considering", 3)};
}

// Byte 0 is bits 31..24 of the 4-byte value, byte 3 bits 7..0.
QList<RegisterField> serialConfigFields()
{
    QList<RegisterField> fields{
        field("baud", 31, 28,
              {named("b460800", 1), named("b230400", 2), named("b115200", 3), named("b57600", 4),
               named("b36400", 5), named("b19200", 6), named("b9600", 7), named("b4800", 8),
               named("b2400", 9), named("b1200", 10)}),
        field("data_width", 27, 26,
              {named("bits8", 0), named("bits7", 1), named("bits6", 2), named("bits5", 3)}),
        field("stop_bits", 25, 25, {named("one", 0), named("two", 1)}),
        field("parity", 23, 16,
              {named("none", 0), named("mark", 4), named("space", 5), named("odd", 6),
               named("even", 7)}),
        field("dte_flow", 10, 9, flowTypes()),
        field("dte_wait", 8, 8, {named("off", 0), named("on", 1)}),
        field("dce_flow", 2, 1, flowTypes()),
        field("dce_wait", 0, 0, {named("off", 0), named("on", 1)}),
    };
    static const char *const lineNames[Rs232c::kLineCount] = {"rts", "cts", "dtr", "ri",
                                                              "dsr", "txd", "rxd", "cd"};
    for (const Rs232c::LineBits &bits : Rs232c::kLineTable) {
        if (bits.outputBit < 0)
            continue;
        const bool dte = bits.driver == Rs232c::Connector::Dte;
        const int bit = bits.outputBit + (dte ? 8 : 0);
        const QByteArray name = QByteArray(dte ? "dte_" : "dce_") + lineNames[int(bits.line)];
        fields.append(field(name.constData(), bit, bit, activeLow()));
    }
    return fields;
}

QList<RegisterField> lineStateFields()
{
    static const char *const lineNames[Rs232c::kLineCount] = {"rts", "cts", "dtr", "ri",
                                                              "dsr", "txd", "rxd", "cd"};
    QList<RegisterField> fields;
    for (int connector = 0; connector < Rs232c::kConnectorCount; ++connector)
        for (const Rs232c::LineBits &bits : Rs232c::kLineTable) {
            const int bit = bits.stateBit + (connector == 0 ? 8 : 0);
            const QByteArray name =
                QByteArray(connector == 0 ? "dte_" : "dce_") + lineNames[int(bits.line)];
            fields.append(field(name.constData(), bit, bit, activeLow(), Access::ReadOnly));
        }
    return fields;
}

RegisterBlock block(const char *name, quint32 base, const char *description,
                    QList<Register> registers)
{
    RegisterBlock b;
    b.name = QLatin1String(name);
    b.base = base;
    b.description = QCoreApplication::translate("DeviceMap", description);
    b.registers = std::move(registers);
    return b;
}

} // namespace

RegisterMap DeviceMap::map()
{
    RegisterMap map;
    map.source = QLatin1String(kSource);
    QList<Register> eeprom = settingsImage();
    eeprom.append(reg("write_permission",
                      MavixSetting::kEepromPermission - MavixSetting::kEepromBase, 1,
                      ValueFormat::Hex, QT_TRANSLATE_NOOP("DeviceMap", "EEPROM write permission"),
                      {field("state", 7, 0, {named("granted", 0x00), named("released", 0xFF)})}));
    Register lineState =
        reg("line_state", Rs232c::kLineStateAddress, Rs232c::kLineStateSize, ValueFormat::Hex,
            QT_TRANSLATE_NOOP("DeviceMap", "Line states, byte 0 DTE, byte 1 DCE; 0 = on"),
            lineStateFields());
    lineState.access = Access::ReadOnly;
    map.blocks = {
        block("settings", MavixSetting::kRunningBase,
              QT_TRANSLATE_NOOP("DeviceMap", "Settings image, running copy"), settingsImage()),
        block("eeprom", MavixSetting::kEepromBase,
              QT_TRANSLATE_NOOP("DeviceMap", "Settings image, EEPROM copy"), eeprom),
        block("rs232c", 0, QT_TRANSLATE_NOOP("DeviceMap", "ZEL-RS232C serial bridge"),
              {reg("config", Rs232c::kConfigAddress, Rs232c::kConfigSize, ValueFormat::Hex,
                   QT_TRANSLATE_NOOP("DeviceMap", "Serial configuration, running copy"),
                   serialConfigFields()),
               reg("config_eeprom", Rs232c::kConfigAddress - Rs232c::kEepromOffset,
                   Rs232c::kConfigSize, ValueFormat::Hex,
                   QT_TRANSLATE_NOOP("DeviceMap", "Serial configuration, EEPROM copy"),
                   serialConfigFields()),
               lineState}),
        block("gpib", GpibModuleSetting::kAddress,
              QT_TRANSLATE_NOOP("DeviceMap", "ZEL-GPIB bridge settings"),
              {reg("controller_address", 0, 1, ValueFormat::Decimal,
                   QT_TRANSLATE_NOOP("DeviceMap", "Controller address, 0 to 30")),
               reg("timeout_10ms", 2, 2, ValueFormat::Decimal,
                   QT_TRANSLATE_NOOP("DeviceMap", "Bus time-out in units of 10 ms"))}),
    };
    const auto alias = [&map](const char *name, const char *target) {
        map.aliases.insert(QLatin1String(name), QLatin1String(target));
    };
    alias("rs232c.dte_port", "settings.tcp_data_port");
    alias("rs232c.dce_port", "settings.tcp_command_port");
    alias("rs232c.dte_port_eeprom", "eeprom.tcp_data_port");
    alias("rs232c.dce_port_eeprom", "eeprom.tcp_command_port");
    (void)map.check();
    return map;
}
