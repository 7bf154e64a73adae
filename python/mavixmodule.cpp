// The Python extension mavix._mavix: thin bindings over the engines of the window and the
// command-line tool. The package mavix (mavix/__init__.py) re-exports what is here.
#include "modules/gpibmodulesetting.h"
#include "python/pythondevice.h"
#include "python/pythongpib.h"
#include "python/pythonregisters.h"
#include "python/pythonserial.h"
#include "tcp/transferrunner.h"

#include "python/pybind.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace py = pybind11;

namespace {

QString qs(const std::string &text)
{
    return QString::fromStdString(text);
}

py::bytes toBytes(const QByteArray &data)
{
    return {data.constData(), size_t(data.size())};
}

// bytes, bytearray or str (UTF-8) as the bytes to send.
QByteArray fromData(const py::object &data)
{
    if (py::isinstance<py::str>(data))
        return QByteArray::fromStdString(data.cast<std::string>());
    const std::string bytes = py::bytes(py::module_::import("builtins").attr("bytes")(data));
    return QByteArray(bytes.data(), qsizetype(bytes.size()));
}

QByteArray fromBytesLike(const py::object &data)
{
    if (py::isinstance<py::str>(data))
        throw PythonFailure(
            PythonFailure::Kind::Refused,
            QCoreApplication::translate("PythonDevice", "The data must be bytes, not text"));
    const std::string bytes = py::bytes(py::module_::import("builtins").attr("bytes")(data));
    return QByteArray(bytes.data(), qsizetype(bytes.size()));
}

// A register address: 0 to 0xFFFFFFFF.
quint32 address(long long value)
{
    if (value < 0 || value > 0xFFFFFFFFLL)
        throw PythonFailure(
            PythonFailure::Kind::Refused,
            QCoreApplication::translate("PythonDevice", "The address %1 is outside 0 to 0xFFFFFFFF")
                .arg(value));
    return quint32(value);
}

// A length or limit given as None or a whole number from 1; -1 for None.
qint64 limit(const py::object &value, const char *name, qint64 scale)
{
    if (value.is_none())
        return -1;
    const double number = value.cast<double>();
    if (!(number > 0) || number * double(scale) > 9.0e15)
        throw PythonFailure(
            PythonFailure::Kind::Refused,
            QCoreApplication::translate("PythonDevice", "%1 must be a number above 0, not %2")
                .arg(QLatin1String(name), qs(py::str(value))));
    return qint64(number * double(scale));
}

QString settingsText(const MavixSetting &setting)
{
    static const QRegularExpression lineEnd(QStringLiteral(" ?\r\n"));
    return setting.textReport().replace(lineEnd, QStringLiteral("\n")).trimmed();
}

// What dev.regs[name] gives: the name resolved once, read and written through the maps.
struct RegisterHandle
{
    PythonRegisters *regs;
    RegisterTarget target;
    std::string name;
};

void translateFailure(std::exception_ptr failure)
{
    try {
        if (failure)
            std::rethrow_exception(failure);
    } catch (const PythonFailure &f) {
        const py::object type = py::module_::import("mavix._errors").attr(f.className());
        PyErr_SetString(type.ptr(), f.what());
    }
}

void bindSettings(py::module_ &m)
{
    py::class_<MavixSetting>(m, "Settings",
                             "The device's network settings as read from its running or EEPROM "
                             "copy. str() gives the report the General tab shows.")
        .def_property_readonly("ip_address",
                               [](const MavixSetting &s) { return s.ipAddress.toStdString(); })
        .def_property_readonly(
            "mac_address", [](const MavixSetting &s) { return s.macAddressText().toStdString(); })
        .def_readonly("tcp_data_port", &MavixSetting::tcpDataPort)
        .def_readonly("tcp_command_port", &MavixSetting::tcpCommandPort)
        .def_readonly("udp_port", &MavixSetting::udpPort)
        .def_readonly("tcp_max_segment_size", &MavixSetting::tcpMaxSegmentSize)
        .def_readonly("tcp_keep_alive_enabled", &MavixSetting::tcpKeepAliveEnabled)
        .def_readonly("tcp_keep_alive_buffer_not_empty_ms",
                      &MavixSetting::tcpKeepAliveBufferNotEmptyMs)
        .def_readonly("tcp_keep_alive_buffer_empty_ms", &MavixSetting::tcpKeepAliveBufferEmptyMs)
        .def_readonly("tcp_timeout_connecting_ms", &MavixSetting::tcpTimeoutConnectingMs)
        .def_property_readonly("tcp_timeout_disconnect_ms", &MavixSetting::tcpTimeoutDisconnectMs)
        .def_readonly("tcp_reconnect_interval_ms", &MavixSetting::tcpReconnectIntervalMs)
        .def_readonly("tcp_retransmission_timer_ms", &MavixSetting::tcpRetransmissionTimerMs)
        .def("__str__", [](const MavixSetting &s) { return settingsText(s).toStdString(); })
        .def("__repr__", [](const MavixSetting &s) {
            return QStringLiteral("<mavix.Settings ip_address=%1 tcp_data_port=%2 udp_port=%3>")
                .arg(s.ipAddress)
                .arg(s.tcpDataPort)
                .arg(s.udpPort)
                .toStdString();
        });

    py::class_<TransferResult>(m, "Transfer", "The figures of a finished recv() or send().")
        .def_property_readonly("file", [](const TransferResult &t) { return t.file.toStdString(); })
        .def_readonly("bytes", &TransferResult::bytes, "Bytes received into the file, or sent.")
        .def_readonly("elapsed_ms", &TransferResult::elapsedMs,
                      "Milliseconds from the connection to the end of the run.")
        .def_property_readonly(
            "file_size",
            [](const TransferResult &t) -> py::object {
                if (t.fileSize < 0)
                    return py::none();
                return py::int_(t.fileSize);
            },
            "The size of the file sent; None for a receive.")
        .def("__repr__", [](const TransferResult &t) {
            return QStringLiteral("<mavix.Transfer file=%1 bytes=%2 elapsed_ms=%3>")
                .arg(t.file)
                .arg(t.bytes)
                .arg(t.elapsedMs)
                .toStdString();
        });
}

void bindModules(py::module_ &m)
{
    py::class_<PythonGpib>(m, "Gpib", "The ZEL-GPIB module: its settings and its GPIB bus.")
        .def(
            "settings",
            [](PythonGpib &g) {
                const GpibModuleSetting s = g.settings();
                return py::dict(py::arg("controller") = s.controllerAddress,
                                py::arg("timeout_ms") = s.timeoutMs());
            },
            "The module's settings: {'controller': its own GPIB address, 'timeout_ms': the bus "
            "time-out}.")
        .def(
            "set",
            [](PythonGpib &g, const py::object &controller, const py::object &timeoutMs) {
                const auto text = [](const py::object &v) {
                    return v.is_none() ? QString() : qs(py::str(v));
                };
                const GpibModuleSetting s = g.set(text(controller), text(timeoutMs));
                return py::dict(py::arg("controller") = s.controllerAddress,
                                py::arg("timeout_ms") = s.timeoutMs());
            },
            py::arg("controller") = py::none(), py::arg("timeout_ms") = py::none(),
            "Writes the module's settings (what is not given keeps the module's value), with the "
            "tab's checks.")
        .def(
            "send",
            [](PythonGpib &g, int address, const py::object &message,
               const std::string &delimiter) { g.send(address, fromData(message), qs(delimiter)); },
            py::arg("address"), py::arg("message"), py::arg("delimiter") = "crlf",
            "Sends message (str or bytes) and the delimiter (crlf, cr, lf or none) to the "
            "instrument at GPIB address `address`.")
        .def(
            "recv",
            [](PythonGpib &g, int address, const std::string &delimiter, qint64 max) {
                return toBytes(g.receive(address, qs(delimiter), max));
            },
            py::arg("address"), py::arg("delimiter") = "crlf", py::arg("max") = 0,
            "Receives from the instrument until the delimiter (removed), END, or `max` bytes.")
        .def(
            "query",
            [](PythonGpib &g, int address, const py::object &message, const std::string &delimiter,
               qint64 max) {
                return toBytes(g.query(address, fromData(message), qs(delimiter), max));
            },
            py::arg("address"), py::arg("message"), py::arg("delimiter") = "crlf",
            py::arg("max") = 0, "send() and then recv(); returns the answer as bytes.")
        .def("clear", &PythonGpib::clear, "Interface Clear of the GPIB bus.")
        .def("disconnect", &PythonGpib::disconnect, "Closes the data connection to the module.");

    py::class_<PythonSerial>(m, "Serial", "The ZEL-RS232C module's connectors, dte and dce.")
        .def(
            "send",
            [](PythonSerial &s, const std::string &connector, const py::object &data) {
                s.send(qs(connector), fromData(data));
            },
            py::arg("connector"), py::arg("data"),
            "Sends data (bytes, or str as UTF-8) into the connector 'dte' or 'dce'.")
        .def(
            "recv",
            [](PythonSerial &s, const std::string &connector, qint64 max) {
                return toBytes(s.receive(qs(connector), max));
            },
            py::arg("connector"), py::arg("max") = 0,
            "What the connector delivered (at most `max` bytes); Timeout when nothing arrives.")
        .def("disconnect", &PythonSerial::disconnect, "Closes the connectors' connections.");

    py::class_<RegisterHandle>(m, "Register", "One named register or field of the maps.")
        .def_readonly("name", &RegisterHandle::name)
        .def(
            "read", [](RegisterHandle &r) { return r.regs->read(r.target); },
            "Reads the register; a field's value is its bits alone.")
        .def(
            "text",
            [](RegisterHandle &r) {
                return r.regs->text(r.target, r.regs->read(r.target)).toStdString();
            },
            "Reads the register and gives the value as the map shows it (a named value by its "
            "name, an address dotted).")
        .def(
            "write",
            [](RegisterHandle &r, const py::object &value) {
                r.regs->write(r.target, qs(py::str(value)));
            },
            py::arg("value"),
            "Writes a number or a named value: one read and one write of the register, only the "
            "field's bits change.")
        .def("__repr__", [](const RegisterHandle &r) { return "<mavix.Register " + r.name + ">"; });

    py::class_<PythonRegisters>(m, "Registers",
                                "The register maps: the built-in one, the files of MAVIX_MAPS and "
                                "those loaded. regs['block.register'] or "
                                "regs['block.register.field'] gives a Register.")
        .def(
            "__getitem__",
            [](PythonRegisters &regs, const std::string &name) {
                return RegisterHandle{&regs, regs.resolve(qs(name)), name};
            },
            py::keep_alive<0, 1>())
        .def(
            "load", [](PythonRegisters &regs, const std::string &file) { regs.load(qs(file)); },
            py::arg("file"), "Adds a map file (TOML or IP-XACT); a wrong one is refused whole.")
        .def(
            "names",
            [](const PythonRegisters &regs) {
                std::vector<std::string> names;
                for (const QString &name : regs.names())
                    names.push_back(name.toStdString());
                return names;
            },
            "The names of every register of the maps.");
}

void bindDevice(py::module_ &m)
{
    py::class_<PythonDevice>(m, "Device",
                             "A Mavix device reached over its UDP register protocol and its TCP "
                             "data port. Use it from the thread that made it. Every wait releases "
                             "the interpreter's lock; Ctrl+C ends it with KeyboardInterrupt.")
        .def(py::init([](const py::object &target, int timeoutMs, bool expert) {
                 const QString text = target.is_none() ? qEnvironmentVariable("MAVIX_TARGET")
                                                       : qs(target.cast<std::string>());
                 return std::make_unique<PythonDevice>(text, timeoutMs, expert);
             }),
             py::arg("target") = py::none(), py::arg("timeout_ms") = 10000,
             py::arg("expert") = false,
             "target is HOST[:UDP[:TCP]] (an IPv6 host in brackets; default: the environment "
             "variable MAVIX_TARGET, as for the mavix tool); timeout_ms limits every wait "
             "for the device; expert allows writes into the top 64 KiB of the register space.")
        .def_property_readonly("target",
                               [](const PythonDevice &d) { return d.targetText().toStdString(); })
        .def_property_readonly("timeout_ms", &PythonDevice::timeoutMs)
        .def(
            "read",
            [](PythonDevice &d, long long addr, int length) {
                return toBytes(d.read(address(addr), length));
            },
            py::arg("address"), py::arg("length"), "Reads `length` bytes (1 to 255) at `address`.")
        .def(
            "write",
            [](PythonDevice &d, long long addr, const py::object &data) {
                d.write(address(addr), fromBytesLike(data));
            },
            py::arg("address"), py::arg("data"),
            "Writes the bytes (1 to 255) at `address`; the top 64 KiB only with expert=True.")
        .def("settings", &PythonDevice::settings, py::arg("eeprom") = false,
             "Reads the network settings from the running copy, or the EEPROM copy.")
        .def(
            "set",
            [](PythonDevice &d, bool eeprom, bool yes, const py::kwargs &fields) {
                QList<std::pair<QString, QString>> typed;
                for (const auto &[key, value] : fields) {
                    const QString name = qs(py::str(key));
                    QString text = qs(py::str(value));
                    if (py::isinstance<py::bool_>(value))
                        text = value.cast<bool>() ? QStringLiteral("1") : QStringLiteral("0");
                    typed.append({name, text});
                }
                return d.set(eeprom, yes, typed);
            },
            py::arg("eeprom") = false, py::arg("yes") = false,
            "Changes the settings given by keyword (the names of Settings' attributes but "
            "mac_address), with the window's checks; the others keep the device's values. "
            "eeprom=True writes the EEPROM copy with the permission steps. A change of the "
            "running copy's UDP port is refused unless yes=True. Returns the settings written.")
        .def(
            "recv",
            [](PythonDevice &d, const std::string &path, const py::object &bytes,
               const py::object &seconds) {
                return d.receive(qs(path), limit(bytes, "bytes", 1),
                                 limit(seconds, "seconds", 1000));
            },
            py::arg("path"), py::arg("bytes") = py::none(), py::arg("seconds") = py::none(),
            "Records what the device sends on its data port into the file at `path`, until "
            "`bytes` bytes, `seconds` seconds or the device's close.")
        .def(
            "send", [](PythonDevice &d, const std::string &path) { return d.send(qs(path)); },
            py::arg("path"), "Sends the file at `path` to the device's data port.")
        .def_property_readonly("gpib", &PythonDevice::gpib,
                               py::return_value_policy::reference_internal)
        .def_property_readonly("serial", &PythonDevice::serial,
                               py::return_value_policy::reference_internal)
        .def_property_readonly("regs", &PythonDevice::regs,
                               py::return_value_policy::reference_internal)
        .def("__repr__", [](const PythonDevice &d) {
            return "<mavix.Device " + d.targetText().toStdString() + ">";
        });
}

} // namespace

PYBIND11_MODULE(_mavix, m)
{
    m.doc() = "Bindings of the Mavix engines; import mavix instead.";
    py::register_exception_translator(&translateFailure);
    bindSettings(m);
    bindModules(m);
    bindDevice(m);
}
