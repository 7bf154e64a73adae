// Takes the screenshots shown in the README: the main window's tabs after a read and the two
// transfer dialogs mid-transfer, against an emulated device on 127.0.0.1. The language follows the
// locale, so run it once with LANG=en_US.UTF-8 and once with LANG=ja_JP.UTF-8.
//   mavix-screenshots OUTPUT_FOLDER [-expert]
// With -expert it takes only the Detail tab, which exists in expert mode alone.
#include "app/accessgate.h"
#include "app/appcontext.h"
#include "app/devicetarget.h"
#include "app/log.h"
#include "modules/zelgpibtab.h"
#include "server/allowrule.h"
#include "server/servertab.h"
#include "settings/experttab.h"
#include "sim/mavixsim.h"
#include "sim/simdataport.h"
#include "sim/simgpib.h"
#include "sim/simserialbridge.h"
#include "sim/simthread.h"
#include "tcp/tcprecvinfodlg.h"
#include "tcp/tcpsendinfodlg.h"
#include "tcp/tcptab.h"
#include "ui/aboutdialog.h"
#include "ui/mainwindow.h"
#include "ui/registerstab.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>

namespace {

// Long enough for the send dialog's plot to have a few samples.
constexpr int kSendShotMs = 3500;

QString g_outputFolder;
QString g_language;

void settle(int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(10);
    }
}

// By default waits until the logo's blink is over.
void save(QWidget *widget, const QString &name, int settleMs = 1400)
{
    settle(settleMs);
    const QString path =
        QDir(g_outputFolder).filePath(name + QLatin1Char('-') + g_language + ".png");
    if (!widget->grab().save(path))
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
    else
        std::printf("%s\n", qPrintable(path));
}

template <typename T> T *child(QWidget *root, const char *name)
{
    T *widget = root->findChild<T *>(QLatin1String(name));
    if (!widget)
        qFatal("no widget %s", name);
    return widget;
}

void click(QWidget *root, const char *name)
{
    child<QAbstractButton>(root, name)->click();
}

void makeFile(const QString &path, qint64 size)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(SimDataPort::pattern(0, size));
}

// The Detail tab as an expert uses it: read the running copy, switch keep-alive on and change the
// time-outs, write them into the EEPROM copy, reset the fields and read the EEPROM copy back.
int takeDetailShot(const QString &target)
{
    AppContext context(true, false, 0, false, nullptr, target);
    MainWindow *window = context.mainWindow();
    window->resize(800, 660);
    window->show();
    settle(1500);
    child<QTabWidget>(window, "modeTab")->setCurrentWidget(window->expertTab());
    click(window, "ExpertReadButton");
    settle(300);

    child<QComboBox>(window, "ExpertTCPKeepAliveEnabledCombobox")->setCurrentIndex(1);
    child<QLineEdit>(window, "ExpertTCPKeepAliveBETextarea")->setText(QStringLiteral("30000"));
    child<QLineEdit>(window, "ExpertTCPTimeoutConTextarea")->setText(QStringLiteral("3000"));
    child<QLineEdit>(window, "ExpertTCPTimeoutDicTextarea")->setText(QStringLiteral("600000"));
    child<QCheckBox>(window, "ExpertEEPROMAccessCheckbox")->setChecked(true);
    click(window, "ExpertWriteButton");
    settle(300);
    click(window, "ExpertResetButton");
    settle(300);
    click(window, "ExpertReadButton");
    save(window, QStringLiteral("detail"));
    window->close();
    return 0;
}

// A short remote-control session, as a user would type it into nc, then a script's batch.
void serverSession(quint16 port)
{
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, port);
    settle(300);
    for (const char *line : {"help\r\n", "read 0 16\r\n", "read 10 4 /etc/x\r\n", "quit\r\n"}) {
        client.write(line);
        settle(300);
    }
    QTcpSocket script;
    script.connectToHost(QHostAddress::LocalHost, port);
    settle(300);
    script.write("write 1000 DEADBEEF\nread 1000 4 dump.txt\nquit\n");
    settle(500);
}

// The main window in server mode, its Server tab after a session.
void serverScreenshot(quint16 udpPort, quint16 tcpPort)
{
    AppContext context(false, true, 0, false, nullptr,
                       QStringLiteral("127.0.0.1:%1:%2").arg(udpPort).arg(tcpPort));
    MainWindow *window = context.mainWindow();
    window->resize(800, 660);
    window->show();
    settle(1500);
    child<QTabWidget>(window, "modeTab")->setCurrentWidget(window->serverTab());
    // As started with -uiallow:192.168.1.0/24,10.0.0.5 -uiroot:/tmp/mavix-server-files
    const QString folder = QDir::temp().filePath(QStringLiteral("mavix-server-files"));
    QDir().mkpath(folder);
    window->serverTab()->setAllowRule(*AllowRule::parse(QStringLiteral("192.168.1.0/24,10.0.0.5")));
    (void)window->serverTab()->setFileFolder(folder);
    serverSession(window->serverTab()->serverPort());
    save(window, QStringLiteral("server"));
    window->close();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: mavix-screenshots OUTPUT_FOLDER [-expert]\n");
        return 2;
    }
    g_outputFolder = QString::fromLocal8Bit(argv[1]);
    g_language = QLocale::system().name().startsWith(QLatin1String("ja")) ? QStringLiteral("ja")
                                                                          : QStringLiteral("en");
    QDir().mkpath(g_outputFolder);

    SimThread device;
    if (!device.start()) {
        std::fprintf(stderr, "emulator: %s\n", qPrintable(device.errorString()));
        return 1;
    }
    SimDataPort dataPort;
    const quint16 tcpPort = dataPort.start(QHostAddress::LocalHost, 0);
    device.sim()->setTcpPort(tcpPort);
    const QString target = QStringLiteral("127.0.0.1:%1:%2").arg(device.udpPort()).arg(tcpPort);
    if (argc > 2 && QString::fromLocal8Bit(argv[2]) == QLatin1String("-expert")) {
        const int result = takeDetailShot(target);
        dataPort.stop();
        device.stop();
        return result;
    }

    QTemporaryDir files;
    const QString sendPath = files.filePath(QStringLiteral("firmware-image.bin"));
    makeFile(sendPath, 256 * 1024 * 1024);

    serverScreenshot(device.udpPort(), tcpPort);
    if (qEnvironmentVariableIsSet("MAVIX_SCREENSHOT_SERVER_ONLY"))
        return 0;

    AppContext context(false, false, 0, false, nullptr, target);
    MainWindow *window = context.mainWindow();
    window->resize(800, 660);
    window->show();
    settle(1500);

    click(window, "GenReadButton");
    save(window, QStringLiteral("general"));

    auto *tabs = child<QTabWidget>(window, "modeTab");
    tabs->setCurrentIndex(1);
    child<QComboBox>(window, "UDPRegisterAddressCombobox")
        ->setCurrentText(QStringLiteral("FFFFFF00"));
    child<QComboBox>(window, "UDPDataLengthCombobox")->setCurrentText(QStringLiteral("255"));
    child<QCheckBox>(window, "UDPShowAddressCheckbox")->setChecked(true);
    click(window, "UDPReadButton");
    save(window, QStringLiteral("udp"));

    tabs->setCurrentIndex(2);
    child<QLineEdit>(window, "TCPRecvPathTextarea")
        ->setText(files.filePath(QStringLiteral("received.txt")));
    child<QLineEdit>(window, "TCPSendPathTextarea")->setText(sendPath);
    click(window, "TCPRecvFileTextConvertCheckbox");
    save(window, QStringLiteral("tcp"));

    // Receiving a paced stream, shown as hex; the rate plot has a few seconds to draw.
    dataPort.setMode(SimDataPort::Mode::Source);
    dataPort.setSourceBytes(-1);
    dataPort.setSourceRate(400 * 1000);
    TCPTab *tcpTab = window->tcpTab();
    tcpTab->openReceiveInfoDialog();
    QWidget *recv = tcpTab->recvDialog();
    if (!child<QCheckBox>(recv, "DataShowCheckbox")->isChecked())
        click(recv, "DataShowCheckbox");
    if (!child<QCheckBox>(recv, "ShowHexCheckbox")->isChecked())
        click(recv, "ShowHexCheckbox");
    click(recv, "RecvButton");
    settle(7600);
    save(recv, QStringLiteral("recv-dialog"));
    click(recv, "StopButton");
    settle(1500);
    recv->close();

    // Sending a large file, caught half-way, with the rate of its first seconds.
    dataPort.setMode(SimDataPort::Mode::Sink);
    tcpTab->openSendInfoDialog();
    QWidget *send = tcpTab->sendDialog();
    click(send, "SendButton");
    QElapsedTimer sending;
    sending.start();
    while (sending.elapsed() < kSendShotMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    save(send, QStringLiteral("send-dialog"), 100);
    click(send, "StopButton");
    settle(2000);
    send->close();

    tabs->setCurrentIndex(0);
    save(window, QStringLiteral("messages"));

    // A slow device: the window keeps painting while the read waits, and says it is busy.
    tabs->setCurrentIndex(0);
    SimFaults slow;
    slow.delayMs = 3000;
    device.sim()->setFaults(slow);
    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, &ticker, [&ticks] { ++ticks; });
    ticker.start(20);
    QTimer::singleShot(1500, window, [window] { save(window, QStringLiteral("busy"), 0); });
    QElapsedTimer waited;
    waited.start();
    click(window, "GenReadButton");
    std::printf("read from a device 3 s slow: %lld ms, 20 ms timer fired %d times meanwhile\n",
                waited.elapsed(), ticks);

    // A silent device: Esc gives the wait up, and the message area says so in red.
    SimFaults silent;
    silent.dropEveryNth = 1;
    device.sim()->setFaults(silent);
    QTimer::singleShot(800, window, [window] {
        QCoreApplication::postEvent(
            window->focusWidget() ? window->focusWidget() : window,
            new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    });
    waited.restart();
    click(window, "GenReadButton");
    std::printf("Esc gave up the wait after %lld ms\n", waited.elapsed());
    device.sim()->setFaults(SimFaults());
    save(window, QStringLiteral("failure"), 600);
    // The ZEL-GPIB tab against the emulator's GPIB module: the meter's identification as text,
    // then what the echo box sends back, as hex.
    SimGpib gpib;
    DeviceTarget *deviceTarget = context.target();
    deviceTarget->set(deviceTarget->host(), deviceTarget->udpPort(),
                      gpib.start(QHostAddress::LocalHost, 0));
    device.sim()->poke(SimGpib::kSettingsAddress, SimGpib::startSettings());
    tabs->setCurrentIndex(4);
    click(window, "ZELGPIBSettingRead");
    click(window, "ZELGPIBConnectButton");
    click(window, "ZELGPIBSendButton");
    click(window, "ZELGPIBReceiveButton");
    child<QLineEdit>(window, "ZELGPIBTargetAddress")->setText(QStringLiteral("2"));
    child<QLineEdit>(window, "ZELGPIBCommand")->setText(QStringLiteral("MEAS:VOLT?"));
    click(window, "ZELGPIBSendButton");
    click(window, "ZELGPIBShowAsHexCheckBox");
    click(window, "ZELGPIBReceiveButton");
    save(window, QStringLiteral("gpib"));
    // Query: the meter's identification in one click.
    click(window, "ZELGPIBReceivedDataClear");
    click(window, "ZELGPIBShowAsHexCheckBox");
    child<QLineEdit>(window, "ZELGPIBTargetAddress")->setText(QStringLiteral("1"));
    child<QLineEdit>(window, "ZELGPIBCommand")->setText(QStringLiteral("*IDN?"));
    click(window, "ZELGPIBQueryButton");
    save(window, QStringLiteral("gpib-query"));
    click(window, "ZELGPIBConnectButton");
    gpib.stop();

    AboutDialog about(nullptr);
    about.show();
    save(&about, QStringLiteral("about"));
    about.close();

    // The serial bridge: "hello" typed on the DTE connector, received on the DCE connector.
    MavixSim *sim = device.sim();
    QMetaObject::invokeMethod(
        sim, [sim] { (void)(new SimSerialBridge(sim, sim))->start(0, 0); },
        Qt::BlockingQueuedConnection);
    tabs->setCurrentIndex(3);
    click(window, "ZELRS232cRead");
    click(window, "ZELRS232cConnectButton");
    auto *connector = child<QComboBox>(window, "ZELRS232cConnectorComboBox");
    connector->setCurrentIndex(1);
    click(window, "ZELRS232cConnectButton");
    connector->setCurrentIndex(0);
    child<QComboBox>(window, "ZELRS232CDelimiterComboBox")->setCurrentIndex(3);
    child<QLineEdit>(window, "ZELRS232cSendDataLineEdit")->setText(QStringLiteral("hello"));
    click(window, "ZELRS232cSendButton");
    connector->setCurrentIndex(1);
    click(window, "ZELRS232cReceiveButton");
    save(window, QStringLiteral("rs232c"));
    // The Monitor page: both connectors watched, lines sent each way with escapes, time-stamped.
    child<QTabWidget>(window, "ZELRS232cDataTabs")->setCurrentIndex(1);
    click(window, "ZELRS232cMonitorDTEButton");
    click(window, "ZELRS232cMonitorDCEButton");
    click(window, "ZELRS232cMonitorTimeStampCheckBox");
    auto *sendTo = child<QComboBox>(window, "ZELRS232cMonitorSendConnectorComboBox");
    auto *line = child<QLineEdit>(window, "ZELRS232cMonitorSendLineEdit");
    for (const char *text :
         {"AT\\r\\n", "OK\\r\\n", "ATI\\r\\n", "MAVIX\\x01 v1.0\\r\\nOK\\r\\n"}) {
        line->setText(QLatin1String(text));
        click(window, "ZELRS232cMonitorSendButton");
        settle(150);
        sendTo->setCurrentIndex(1 - sendTo->currentIndex());
    }
    line->setText(QStringLiteral("AT+BAUD?\\r"));
    save(window, QStringLiteral("rs232c-monitor"));

    // The Registers tab: the example map beside the device's own, read twice with a change
    // between (marked), and a field value typed, waiting for Write.
    auto *registers = child<RegistersTab>(window, "RegistersTab");
    tabs->setCurrentWidget(registers);
    (void)registers->addMapFile(QDir(g_outputFolder).filePath(QStringLiteral("scratch-map.toml")));
    device.sim()->poke(0x1000, QByteArray::fromHex("00000A11"));
    device.sim()->poke(0x100C, QByteArray::fromHex("4D560001"));
    click(window, "registersReadAllButton");
    device.sim()->poke(0x1004, QByteArray::fromHex("00000301"));
    click(window, "registersReadAllButton");
    auto *tree = child<QTreeWidget>(window, "registersTree");
    const QList<QTreeWidgetItem *> mode =
        tree->findItems(QStringLiteral("mode"), Qt::MatchExactly | Qt::MatchRecursive);
    if (!mode.isEmpty())
        mode.first()->setText(4, QStringLiteral("loopback"));
    tree->scrollToItem(tree->findItems(QStringLiteral("scratch"), Qt::MatchExactly).value(0),
                       QAbstractItemView::PositionAtTop);
    save(window, QStringLiteral("registers"));

    // A watch on a field while the device's value moves: the line, and the changes with their
    // time.
    child<QLineEdit>(window, "registersWatchTargetLineEdit")
        ->setText(QStringLiteral("scratch.ctrl.divider"));
    child<QSpinBox>(window, "registersWatchIntervalSpinBox")->setValue(200);
    click(window, "registersWatchStartButton");
    for (const char *value : {"00000A11", "00001411", "00001E11", "00001911", "00002811"}) {
        settle(900);
        device.sim()->poke(0x1000, QByteArray::fromHex(value));
    }
    save(window, QStringLiteral("register-watch"), 900);
    click(window, "registersWatchStopButton");

    window->close();
    dataPort.stop();
    device.stop();
    return 0;
}
