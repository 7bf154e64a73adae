// Whether showing a full-rate stream costs the recording anything, and how long the GUI event
// loop can be held up meanwhile.
//
// The emulator's data port streams its pattern without end at full speed on a thread of its own;
// the transfer worker records it into a file on its thread; the receive dialog shows the data on
// the GUI thread. A 10 ms timer on the GUI thread records how late each of its ticks comes. The
// same recording with "Show Data" off is the baseline. Prints the longest and the 99th-percentile
// stall and the recording rate of each run, and as its last line the ratio of the slower recording
// rate with display (text or hex) to the rate without (goal >= 0.5).
// Progress lambdas capture locals by reference; their context object is a local declared after
// those locals, so every connection ends before what it writes to.
// clazy:excludeall=lambda-in-connect
#include "app/appmodel.h"
#include "app/devicetarget.h"
#include "app/eventdispatcher.h"
#include "app/qtmessages.h"
#include "sim/simdataport.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcprecvinfodlg.h"
#include "tcp/tcpthread.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int kTickMs = 10;
constexpr int kRunMs = 3000;
constexpr int kStateWaitMs = 15000;

struct StallFigures
{
    const char *name = "";
    double maxMs = 0;
    double p99Ms = 0;
    qint64 bytes = 0;
    qint64 lines = 0;
    int ticks = 0;
};

// Runs the event loop until `done` holds or `timeoutMs` passes; false on time-out.
template <typename Condition> bool waitUntil(Condition done, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::usleep(500);
    }
    return true;
}

void setDisplay(TCPRecvInfoDlg *dialog, bool show, bool hex)
{
    auto *showBox = dialog->findChild<QCheckBox *>(QStringLiteral("DataShowCheckbox"));
    auto *hexBox = dialog->findChild<QCheckBox *>(QStringLiteral("ShowHexCheckbox"));
    showBox->setChecked(show);
    hexBox->setChecked(hex);
    dialog->applyShowDataFlag(show); // what a click on the box does
}

bool measure(TCPRecvInfoDlg *dialog, TCPThread *worker, StallFigures *figures)
{
    qint64 received = 0;
    QObject scope; // the connection ends with this function, before `received` does
    const QMetaObject::Connection progress = QObject::connect(
        worker, &TCPThread::recvProgress, &scope, [&received](qint64 bytes) { received = bytes; });

    dialog->beginReceive();
    if (!waitUntil([worker] { return worker->recvStatus() == TS_RUN; }, kStateWaitMs)) {
        std::fprintf(stderr, "%s: receiving did not start\n", figures->name);
        return false;
    }

    std::vector<double> latenessMs;
    latenessMs.reserve(kRunMs / kTickMs + 16);
    QElapsedTimer clock;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(kTickMs);
    qint64 lastTickNs = 0;
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        latenessMs.push_back(std::max(0.0, double(now - lastTickNs) / 1e6 - kTickMs));
        lastTickNs = now;
    });
    QEventLoop loop;
    QTimer::singleShot(kRunMs, &loop, &QEventLoop::quit);
    clock.start();
    ticker.start();
    loop.exec();
    ticker.stop();

    dialog->stopReceive();
    auto *recvButton = dialog->findChild<QPushButton *>(QStringLiteral("RecvButton"));
    const bool stopped = waitUntil(
        [worker, recvButton] {
            return worker->recvStatus() == TS_STOP && !worker->hasSocket() &&
                   recvButton->isEnabled();
        },
        kStateWaitMs);
    QObject::disconnect(progress);
    if (!stopped) {
        std::fprintf(stderr, "%s: the connection did not close\n", figures->name);
        return false;
    }

    std::sort(latenessMs.begin(), latenessMs.end());
    figures->ticks = int(latenessMs.size());
    figures->maxMs = latenessMs.empty() ? 0 : latenessMs.back();
    figures->p99Ms =
        latenessMs.empty() ? 0 : latenessMs[size_t(double(latenessMs.size() - 1) * 0.99)];
    figures->bytes = received;
    figures->lines =
        dialog->findChild<QPlainTextEdit *>(QStringLiteral("DataTextarea"))->blockCount();
    return true;
}

void print(const StallFigures &f)
{
    std::printf("%-22s max stall %7.1f ms   p99 %6.1f ms   ticks %4d   received %11lld bytes "
                "(%7.1f MB/s)   lines kept %lld\n",
                f.name, f.maxMs, f.p99Ms, f.ticks, static_cast<long long>(f.bytes),
                double(f.bytes) / 1e6 / (kRunMs / 1000.0), static_cast<long long>(f.lines));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QApplication app(argc, argv);
    installQtMessageHandler(nullptr); // as the program does: no font-engine noise in the figures
    registerThreadMetaTypes();

    AppModel model;
    QThread workerThread;
    workerThread.start();
    auto *worker = new TCPThread(&workerThread);

    auto *port = new SimDataPort;
    port->setMode(SimDataPort::Mode::Source);
    port->setSourceBytes(-1);
    port->setSourceRate(0);
    port->setKeepOpen(true);
    port->setHashing(false);
    const quint16 portNumber = port->start(QHostAddress::LocalHost, 0);
    if (portNumber == 0) {
        std::fprintf(stderr, "data port: %s\n", qPrintable(port->errorString()));
        return 1;
    }
    DeviceTarget target;
    target.set(QStringLiteral("127.0.0.1"), target.udpPort(), portNumber);

    QTemporaryDir dir;
    if (!dir.isValid())
        return 1;
    model.recvOption()->setFileName(dir.filePath(QStringLiteral("recording.bin")));

    auto *dialog = new TCPRecvInfoDlg(&model, worker, &target);
    dialog->resize(640, 480);
    dialog->show();

    std::printf("Recording a full-rate stream to a file for %d ms, GUI event loop stall "
                "(timer of %d ms)\n",
                kRunMs, kTickMs);
    StallFigures off{"show data off", 0, 0, 0, 0, 0};
    StallFigures raw{"show data (text)", 0, 0, 0, 0, 0};
    StallFigures hex{"show data (hex)", 0, 0, 0, 0, 0};
    bool ok = true;
    setDisplay(dialog, false, false);
    ok = ok && measure(dialog, worker, &off);
    if (ok)
        print(off);
    setDisplay(dialog, true, false);
    ok = ok && measure(dialog, worker, &raw);
    if (ok)
        print(raw);
    setDisplay(dialog, true, true);
    ok = ok && measure(dialog, worker, &hex);
    if (ok)
        print(hex);

    delete dialog;
    port->stop();
    delete port;
    workerThread.quit();
    workerThread.wait();
    delete worker;
    if (!ok)
        return 1;

    const double withDisplay = std::max(raw.maxMs, hex.maxMs);
    std::printf("longest stall with display %.1f ms (goal < 100 ms), without %.1f ms\n",
                withDisplay, off.maxMs);
    const qint64 slowerShown = std::min(raw.bytes, hex.bytes);
    std::printf("recording rate with display %.1f MB/s, without %.1f MB/s (goal: ratio >= 0.5)\n",
                double(slowerShown) / 1e6 / (kRunMs / 1000.0),
                double(off.bytes) / 1e6 / (kRunMs / 1000.0));
    std::printf("ratio: %.2f\n", double(slowerShown) / double(std::max<qint64>(off.bytes, 1)));
    return 0;
}
