// mavix-sim: the emulated Mavix device as a console program. Prints the address and ports it
// bound on one line, serves until SIGINT or SIGTERM, then prints its totals.
#include "app/eventdispatcher.h"
#include "app/signalwatcher.h"
#include "app/validators.h"
#include "sim/mavixsim.h"
#include "sim/simdataport.h"
#include "sim/simgpib.h"
#include "sim/simserialbridge.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <cstdio>
#include <optional>

namespace {

constexpr int kExitOk = 0;
constexpr int kExitUsage = 1;
constexpr int kExitPortInUse = 2;
constexpr int kStatsIntervalMs = 1000;
constexpr quint64 kMaxDelayMs = 600000;

QString tr(const char *text)
{
    return QCoreApplication::translate("mavix-sim", text);
}

void printLine(FILE *stream, const QString &line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stream);
    std::fflush(stream); // scripts read the output through a pipe
}

struct Settings
{
    SimOptions options;
    SimFaults faults;
    bool verbose = false;
    bool stats = false;
    // TCP data port
    SimDataPort::Mode tcpMode = SimDataPort::Mode::Sink;
    qint64 sourceBytes = -1;
    QString sourceFile;
    qint64 sourceRate = 0;
    QString sinkFile;
    bool stuck = false;
    bool keepOpen = false;
    bool hashing = true;
};

struct OptionSet
{
    QCommandLineOption address{QStringLiteral("address"),
                               tr("Address to answer on (default 127.0.0.1)."), tr("address"),
                               QStringLiteral("127.0.0.1")};
    QCommandLineOption udpPort{QStringLiteral("udp-port"),
                               tr("WREN register-access port, 0 for any free one (default 4660)."),
                               tr("port"), QStringLiteral("4660")};
    QCommandLineOption tcpPort{QStringLiteral("tcp-port"),
                               tr("TCP data port shown in the settings image (default 2424)."),
                               tr("port"), QStringLiteral("2424")};
    QCommandLineOption eeprom{QStringLiteral("eeprom"),
                              tr("Keep the EEPROM copy in this 64-byte file across runs."),
                              tr("file")};
    QCommandLineOption verbose{QStringLiteral("verbose"), tr("Print one line per request.")};
    QCommandLineOption stats{QStringLiteral("stats"), tr("Print the request counts every second.")};
    QCommandLineOption dropEvery{QStringLiteral("drop-every"),
                                 tr("Fault: do not answer every Nth request."), tr("n")};
    QCommandLineOption delay{QStringLiteral("delay"), tr("Fault: delay every reply by this long."),
                             tr("ms")};
    QCommandLineOption wrongVerType{QStringLiteral("wrong-vertype"),
                                    tr("Fault: reply with a VerType other than 0xFF.")};
    QCommandLineOption noAck{QStringLiteral("no-ack"),
                             tr("Fault: reply with the acknowledge bit clear.")};
    QCommandLineOption wrongId{QStringLiteral("wrong-id"),
                               tr("Fault: reply with another packet ID.")};
    QCommandLineOption flipRw{QStringLiteral("flip-rw"),
                              tr("Fault: reply with the R/W bit flipped.")};
    QCommandLineOption busError{QStringLiteral("bus-error"),
                                tr("Fault: refuse every access with the bus-error bit.")};
    QCommandLineOption busErrorRange{
        QStringLiteral("bus-error-range"),
        tr("Fault: refuse accesses that touch this hexadecimal range, e.g. FFFE0000-FFFEFFFF."),
        tr("first-last")};
    QCommandLineOption shortReply{QStringLiteral("short-reply"),
                                  tr("Fault: reply with fewer data bytes than the length.")};
    QCommandLineOption stale{QStringLiteral("stale"),
                             tr("Fault: send a copy of the previous reply before each reply.")};
    QCommandLineOption randomReplies{QStringLiteral("random-replies"),
                                     tr("Fault: replace replies by random or mutated bytes.")};
    QCommandLineOption tcpMode{QStringLiteral("tcp-mode"),
                               tr("TCP data port: sink, source or echo (default sink)."),
                               tr("mode"), QStringLiteral("sink")};
    QCommandLineOption sourceBytes{QStringLiteral("source-bytes"),
                                   tr("Source: bytes to send on each connection (default: "
                                      "without end, or the whole source file)."),
                                   tr("n")};
    QCommandLineOption sourceFile{QStringLiteral("source-file"),
                                  tr("Source: send this file instead of the test pattern."),
                                  tr("file")};
    QCommandLineOption sourceRate{QStringLiteral("source-rate"),
                                  tr("Source: send at this many bytes per second (default: "
                                     "full speed)."),
                                  tr("bytes-per-s")};
    QCommandLineOption sinkFile{QStringLiteral("sink-file"),
                                tr("Sink: write what arrives into this file."), tr("file")};
    QCommandLineOption stuck{QStringLiteral("stuck"),
                             tr("Sink: read nothing, like a device that is stuck.")};
    QCommandLineOption keepOpen{QStringLiteral("keep-open"),
                                tr("Source: keep the connection open after the last byte.")};
    QCommandLineOption noHash{QStringLiteral("no-hash"),
                              tr("TCP data port: skip the SHA-256 of the data, which is slower "
                                 "than loopback.")};

    void addTo(QCommandLineParser &parser) const
    {
        parser.addOptions({address,    udpPort,       tcpPort,  eeprom,        verbose,
                           stats,      dropEvery,     delay,    wrongVerType,  noAck,
                           wrongId,    flipRw,        busError, busErrorRange, shortReply,
                           stale,      randomReplies, tcpMode,  sourceBytes,   sourceFile,
                           sourceRate, sinkFile,      stuck,    keepOpen,      noHash});
    }
};

std::optional<quint64> parseNumber(const QString &text, quint64 max)
{
    bool ok = false;
    const quint64 value = text.trimmed().toULongLong(&ok, 10);
    if (!ok || value > max)
        return std::nullopt;
    return value;
}

bool parseRange(const QString &text, quint32 *first, quint32 *last)
{
    const QStringList parts = text.split(QLatin1Char('-'));
    if (parts.size() != 2)
        return false;
    const auto from = parseHex32(parts[0]);
    const auto to = parseHex32(parts[1]);
    if (!from || !to || *from > *to)
        return false;
    *first = *from;
    *last = *to;
    return true;
}

// A file the data port cannot use is refused at start, not at the first connection.
std::optional<QString> checkDataFiles(const Settings &settings)
{
    if (!settings.sourceFile.isEmpty()) {
        QFile source(settings.sourceFile);
        if (!QFileInfo(source).isFile() || !source.open(QIODevice::ReadOnly))
            return tr("--source-file: cannot read %1").arg(settings.sourceFile);
    }
    if (!settings.sinkFile.isEmpty()) {
        QFile sink(settings.sinkFile);
        const bool usable = (!sink.exists() || QFileInfo(sink).isFile()) &&
                            sink.open(QIODevice::WriteOnly | QIODevice::Append);
        if (!usable)
            return tr("--sink-file: cannot write %1").arg(settings.sinkFile);
    }
    return std::nullopt;
}

// Reads the command line into settings; on a bad value returns the message to show.
std::optional<QString> readSettings(const QCommandLineParser &parser, const OptionSet &o,
                                    Settings *settings)
{
    SimOptions &options = settings->options;
    // The device's own address and ports follow the tool's rules for a device address.
    if (checkTargetAddress(parser.value(o.address)) != AddressProblem::None)
        return tr("--address: %1 is not an IP address").arg(parser.value(o.address));
    options.address.setAddress(parser.value(o.address));
    const auto udpPort = parsePort(parser.value(o.udpPort));
    if (!udpPort)
        return tr("--udp-port must be 0 to 65535, not %1").arg(parser.value(o.udpPort));
    const auto tcpPort = parsePort(parser.value(o.tcpPort));
    if (!tcpPort)
        return tr("--tcp-port must be 0 to 65535, not %1").arg(parser.value(o.tcpPort));
    options.udpPort = *udpPort;
    options.tcpPort = *tcpPort;
    options.eepromPath = parser.value(o.eeprom);
    settings->verbose = parser.isSet(o.verbose);
    settings->stats = parser.isSet(o.stats);

    SimFaults &faults = settings->faults;
    if (parser.isSet(o.dropEvery)) {
        const auto n = parseNumber(parser.value(o.dropEvery), 0xFFFFFFFFu);
        if (!n || *n == 0)
            return tr("--drop-every must be a whole number from 1, not %1")
                .arg(parser.value(o.dropEvery));
        faults.dropEveryNth = quint32(*n);
    }
    if (parser.isSet(o.delay)) {
        const auto ms = parseNumber(parser.value(o.delay), kMaxDelayMs);
        if (!ms)
            return tr("--delay must be 0 to %1 ms, not %2")
                .arg(kMaxDelayMs)
                .arg(parser.value(o.delay));
        faults.delayMs = int(*ms);
    }
    if (parser.isSet(o.busErrorRange)) {
        if (!parseRange(parser.value(o.busErrorRange), &faults.busErrorFirst, &faults.busErrorLast))
            return tr("--bus-error-range must be FIRST-LAST in hexadecimal, not %1")
                .arg(parser.value(o.busErrorRange));
        faults.busErrorRange = true;
    }
    faults.wrongVerType = parser.isSet(o.wrongVerType);
    faults.ackClear = parser.isSet(o.noAck);
    faults.wrongPacketId = parser.isSet(o.wrongId);
    faults.flipReadWrite = parser.isSet(o.flipRw);
    faults.busError = parser.isSet(o.busError);
    faults.shortReply = parser.isSet(o.shortReply);
    faults.staleReply = parser.isSet(o.stale);
    faults.randomReply = parser.isSet(o.randomReplies);

    if (!SimDataPort::parseMode(parser.value(o.tcpMode), &settings->tcpMode))
        return tr("--tcp-mode must be sink, source or echo, not %1").arg(parser.value(o.tcpMode));
    if (parser.isSet(o.sourceBytes)) {
        const auto n = parseNumber(parser.value(o.sourceBytes), quint64(1) << 62);
        if (!n)
            return tr("--source-bytes must be a whole number, not %1")
                .arg(parser.value(o.sourceBytes));
        settings->sourceBytes = qint64(*n);
    }
    if (parser.isSet(o.sourceRate)) {
        const auto n = parseNumber(parser.value(o.sourceRate), quint64(1) << 40);
        if (!n)
            return tr("--source-rate must be a whole number of bytes per second, not %1")
                .arg(parser.value(o.sourceRate));
        settings->sourceRate = qint64(*n);
    }
    settings->sourceFile = parser.value(o.sourceFile);
    settings->sinkFile = parser.value(o.sinkFile);
    if (const auto problem = checkDataFiles(*settings))
        return problem;
    settings->stuck = parser.isSet(o.stuck);
    settings->keepOpen = parser.isSet(o.keepOpen);
    settings->hashing = !parser.isSet(o.noHash);
    return std::nullopt;
}

QString endpoint(const QHostAddress &address, quint16 port)
{
    const QString host = address.protocol() == QAbstractSocket::IPv6Protocol
                             ? QStringLiteral("[%1]").arg(address.toString())
                             : address.toString();
    return QStringLiteral("%1:%2").arg(host).arg(port);
}

QString totalsLine(const SimCounters &c)
{
    return tr("mavix-sim: totals: %1 requests (%2 reads, %3 writes), %4 ignored, %5 replies "
              "dropped, %6 bus errors, %7 delayed replies over the limit")
        .arg(c.requests)
        .arg(c.reads)
        .arg(c.writes)
        .arg(c.ignored)
        .arg(c.dropped)
        .arg(c.busErrors)
        .arg(c.delayOverflow);
}

void startStats(MavixSim *sim)
{
    auto *timer = new QTimer(sim);
    auto previous = std::make_shared<SimCounters>();
    QObject::connect(timer, &QTimer::timeout, sim, [sim, previous] {
        const SimCounters now = sim->counters();
        printLine(stdout, tr("mavix-sim: %1 requests/s (%2 reads, %3 writes), %4 ignored, %5 "
                             "dropped, %6 bus errors, %7 delayed replies over the limit")
                              .arg(now.requests - previous->requests)
                              .arg(now.reads - previous->reads)
                              .arg(now.writes - previous->writes)
                              .arg(now.ignored - previous->ignored)
                              .arg(now.dropped - previous->dropped)
                              .arg(now.busErrors - previous->busErrors)
                              .arg(now.delayOverflow - previous->delayOverflow));
        *previous = now;
    });
    timer->start(kStatsIntervalMs);
}

// --gpib: the ZEL-GPIB module with its instruments serves the data port instead of the plain modes.
struct GpibOptions
{
    QCommandLineOption gpib{QStringLiteral("gpib"),
                            tr("TCP data port: the ZEL-GPIB module, with a meter that answers "
                               "*IDN? at GPIB address 1 and an echo box at address 2.")};
    QCommandLineOption fault{QStringLiteral("gpib-fault"),
                             tr("GPIB fault: answer the Nth unit of each connection with an error "
                                "packet, not at all or twice (error-packet:N, no-reply:N or "
                                "duplicate:N)."),
                             tr("kind:n")};
};

// Returns the exit code to end with, or 0 once the module serves the data port.
int startGpib(const QCommandLineParser &parser, const GpibOptions &o, const SimOptions &options,
              MavixSim *sim, SimGpib *gpib)
{
    SimGpib::Fault fault = SimGpib::Fault::None;
    int request = 0;
    if (parser.isSet(o.fault) && !SimGpib::parseFault(parser.value(o.fault), &fault, &request)) {
        printLine(stderr,
                  tr("mavix-sim: --gpib-fault must be error-packet:N, no-reply:N or duplicate:N, "
                     "not %1")
                      .arg(parser.value(o.fault)));
        return kExitUsage;
    }
    gpib->setFault(fault, request);
    if (!gpib->listen(options.address, options.tcpPort)) {
        printLine(stderr, tr("mavix-sim: %1").arg(gpib->errorString()));
        return kExitPortInUse;
    }
    sim->setTcpPort(gpib->port());
    sim->poke(SimGpib::kSettingsAddress, SimGpib::startSettings());
    printLine(stdout, tr("mavix-sim: gpib: meter at address %1, echo box at address %2")
                          .arg(SimGpib::kMeterAddress)
                          .arg(SimGpib::kEchoAddress));
    return kExitOk;
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("mavix-sim"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("An emulated Mavix device: answers WREN register reads and writes over UDP."));
    parser.addHelpOption();
    const OptionSet options;
    options.addTo(parser);
    const QCommandLineOption rs232cOption(
        QStringLiteral("rs232c"),
        tr("Serial bridge module: its DTE connector takes the TCP data port, its DCE connector "
           "the next one (any free one with --tcp-port 0); the two are wired to each other."));
    parser.addOption(rs232cOption);
    const GpibOptions gpibOptions;
    parser.addOptions({gpibOptions.gpib, gpibOptions.fault});
    parser.process(app);
    // Both modules sit on the TCP data port; one device carries one of them.
    const bool rs232c = parser.isSet(rs232cOption);
    const bool gpibModule = parser.isSet(gpibOptions.gpib);
    if (rs232c && gpibModule) {
        printLine(stderr, tr("mavix-sim: --rs232c and --gpib both take the TCP data port"));
        return kExitUsage;
    }

    Settings settings;
    if (const auto error = readSettings(parser, options, &settings)) {
        printLine(stderr, tr("mavix-sim: %1").arg(*error));
        return kExitUsage;
    }

    SignalWatcher signalWatcher;
    MavixSim sim;
    if (!sim.start(settings.options)) {
        printLine(stderr, tr("mavix-sim: %1").arg(sim.errorString()));
        return sim.startError() == SimStartError::AddressInUse ? kExitPortInUse : kExitUsage;
    }
    SimGpib gpib;
    if (gpibModule) {
        if (const int exitCode = startGpib(parser, gpibOptions, settings.options, &sim, &gpib))
            return exitCode;
    }
    SimDataPort dataPort;
    dataPort.setMode(settings.tcpMode);
    dataPort.setSourceBytes(settings.sourceBytes);
    dataPort.setSourceFile(settings.sourceFile);
    dataPort.setSourceRate(settings.sourceRate);
    dataPort.setSinkFile(settings.sinkFile);
    dataPort.setStuck(settings.stuck);
    dataPort.setKeepOpen(settings.keepOpen);
    dataPort.setHashing(settings.hashing);
    // A module (serial bridge or GPIB) takes the place of the data port.
    if (!rs232c && !gpibModule) {
        if (!dataPort.listen(settings.options.address, settings.options.tcpPort)) {
            printLine(stderr, tr("mavix-sim: %1").arg(dataPort.errorString()));
            return kExitPortInUse;
        }
        sim.setTcpPort(dataPort.port());
    }
    auto *bridge = rs232c ? new SimSerialBridge(&sim, &sim) : nullptr;
    const quint16 tcpPort = settings.options.tcpPort;
    if (bridge && !bridge->start(tcpPort, tcpPort == 0 ? 0 : quint16(tcpPort + 1))) {
        printLine(stderr, tr("mavix-sim: %1").arg(bridge->errorString()));
        return kExitPortInUse;
    }
    QObject::connect(&dataPort, &SimDataPort::connectionFinished, &sim,
                     [](qint64 bytes, const QByteArray &sha256, double seconds) {
                         printLine(stdout, tr("mavix-sim: tcp: %1 bytes in %2 s, sha256 %3")
                                               .arg(bytes)
                                               .arg(seconds, 0, 'f', 3)
                                               .arg(QString::fromLatin1(sha256.toHex())));
                     });
    sim.setFaults(settings.faults);
    sim.setRecording(false); // nobody reads the access log here
    sim.setVerbose(settings.verbose);

    QObject::connect(&sim, &MavixSim::requestServed, &sim,
                     [](const QString &line) { printLine(stdout, line); });
    QObject::connect(&sim, &MavixSim::problemOccurred, &sim,
                     [](const QString &text) { printLine(stderr, tr("mavix-sim: %1").arg(text)); });
    QObject::connect(&sim, &MavixSim::udpPortMoved, &sim, [](quint16 port) {
        printLine(stdout, tr("mavix-sim: moved to UDP port %1").arg(port));
    });
    QObject::connect(&signalWatcher, &SignalWatcher::signalReceived, &app, [&sim] {
        printLine(stdout, totalsLine(sim.counters()));
        QCoreApplication::exit(kExitOk);
    });
    if (settings.stats)
        startStats(&sim);

    // Machine-read by scripts and tests: not translated.
    printLine(stdout, QStringLiteral("mavix-sim: udp %1 tcp %2")
                          .arg(endpoint(sim.address(), sim.udpPort()),
                               endpoint(sim.address(), sim.tcpPort())));
    if (bridge) {
        QObject::connect(bridge, &SimSerialBridge::problemOccurred, &sim, [](const QString &text) {
            printLine(stderr, tr("mavix-sim: %1").arg(text));
        });
        printLine(stdout, QStringLiteral("mavix-sim: rs232c dte %1 dce %2")
                              .arg(endpoint(sim.address(), bridge->port(Rs232c::Connector::Dte)),
                                   endpoint(sim.address(), bridge->port(Rs232c::Connector::Dce))));
    }
    return app.exec();
}
