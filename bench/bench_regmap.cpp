// bench_regmap: a generated map of 1,000 consecutive 32-bit registers dumped by name (grouped
// reads of up to 255 bytes, then the snapshot text) against 1,000 single 4-byte reads through the
// agent, both against the same in-process mavix-sim. Prints the median seconds of each over five
// runs and, last, "ratio: X" (single reads' seconds / dump's seconds).
#include "app/eventdispatcher.h"
#include "regs/registercatalog.h"
#include "regs/registerio.h"
#include "regs/registermapparser.h"
#include "regs/registersnapshot.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int kRegisters = 1000;
constexpr int kRepetitions = 5;
constexpr int kTimeoutMs = 2000;
constexpr quint32 kBase = 0x00100000;

QByteArray generatedMap()
{
    QByteArray text =
        "# generated: 1,000 registers of 4 bytes\n[bench]\nbase = " + QByteArray::number(kBase) +
        "\n";
    for (int i = 0; i < kRegisters; ++i)
        text += "r" + QByteArray::number(i) + " = { offset = " + QByteArray::number(i * 4) + " }\n";
    return text;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QCoreApplication app(argc, argv);
    SimThread sim;
    if (!sim.start()) {
        std::fprintf(stderr, "mavix-sim: %s\n", qPrintable(sim.errorString()));
        return 1;
    }
    WrenAgent agent;
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), sim.udpPort());

    QElapsedTimer parsing;
    parsing.start();
    MapResult parsed = RegisterMapParser::parse(generatedMap(), QStringLiteral("generated"));
    if (const MapError *error = std::get_if<MapError>(&parsed)) {
        std::fprintf(stderr, "%s\n", qPrintable(error->text()));
        return 1;
    }
    RegisterCatalog catalog;
    if (catalog.add(std::get<RegisterMap>(parsed)))
        return 1;
    const QList<int> entries = catalog.match(QStringLiteral("bench"));
    std::printf("map: %d registers parsed and checked in %.4f s\n", int(entries.size()),
                parsing.nsecsElapsed() / 1e9);

    std::vector<double> dumpSeconds, readSeconds, singleSeconds;
    int failed = 0;
    qsizetype snapshotBytes = 0;
    for (int run = 0; run < kRepetitions; ++run) {
        QElapsedTimer timer;
        timer.start();
        try {
            RegisterIo io(catalog, &agent, kTimeoutMs);
            const QHash<int, quint64> values = io.read(entries);
            readSeconds.push_back(timer.nsecsElapsed() / 1e9);
            snapshotBytes =
                RegisterSnapshot::format(catalog, values, QStringLiteral("bench")).size();
        } catch (const WrenError &) {
            ++failed;
        }
        dumpSeconds.push_back(timer.nsecsElapsed() / 1e9);

        timer.restart();
        for (int i = 0; i < kRegisters; ++i) {
            try {
                (void)agent.read(kBase + quint32(i) * 4, 4, kTimeoutMs);
            } catch (const WrenError &) {
                ++failed;
            }
        }
        singleSeconds.push_back(timer.nsecsElapsed() / 1e9);
    }
    const int accesses = int(RegisterIo::plan(catalog, entries).size());
    const double dump = median(dumpSeconds);
    const double single = median(singleSeconds);
    std::printf("dump by name: %.4f s (%d accesses, %.4f s of them reading; %lld bytes of "
                "snapshot)\n",
                dump, accesses, median(readSeconds), qlonglong(snapshotBytes));
    std::printf("single reads: %.4f s (%d accesses)\n", single, kRegisters);
    std::printf("failed accesses: %d\n", failed);
    std::printf("ratio: %.1f\n", single / dump);
    return failed ? 1 : 0;
}
