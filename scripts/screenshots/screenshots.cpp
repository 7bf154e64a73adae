// Takes the screenshots shown in the README: the main window's tabs after a read and the two
// transfer dialogs mid-transfer, against an emulated device on 127.0.0.1. The language follows the
// locale, so run it once with LANG=en_US.UTF-8 and once with LANG=ja_JP.UTF-8.
//   mavix-screenshots OUTPUT_FOLDER
#include "app/appcontext.h"
#include "app/log.h"
#include "server/servertab.h"
#include "sim/mavixsim.h"
#include "sim/simdataport.h"
#include "sim/simthread.h"
#include "tcp/tcprecvinfodlg.h"
#include "tcp/tcpsendinfodlg.h"
#include "tcp/tcptab.h"
#include "ui/aboutdialog.h"
#include "ui/mainwindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTabWidget>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>

namespace {

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

// A short remote-control session, as a user would type it into nc.
void serverSession(quint16 port)
{
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, port);
    settle(300);
    for (const char *line :
         {"help\r\n", "read 0 16\r\n", "write 1000 DEADBEEF\r\n", "read 1000 4\r\n", "quit\r\n"}) {
        client.write(line);
        settle(300);
    }
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
    serverSession(window->serverTab()->serverPort());
    save(window, QStringLiteral("server"));
    window->close();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: mavix-screenshots OUTPUT_FOLDER\n");
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

    QTemporaryDir files;
    const QString sendPath = files.filePath(QStringLiteral("firmware-image.bin"));
    makeFile(sendPath, 256 * 1024 * 1024);

    serverScreenshot(device.udpPort(), tcpPort);
    if (qEnvironmentVariableIsSet("MAVIX_SCREENSHOT_SERVER_ONLY"))
        return 0;

    AppContext context(false, false, 0, false, nullptr,
                       QStringLiteral("127.0.0.1:%1:%2").arg(device.udpPort()).arg(tcpPort));
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

    // Receiving a paced stream, shown as hex.
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
    settle(2600);
    save(recv, QStringLiteral("recv-dialog"));
    click(recv, "StopButton");
    settle(1500);
    recv->close();

    // Sending a large file, caught half-way.
    dataPort.setMode(SimDataPort::Mode::Sink);
    tcpTab->openSendInfoDialog();
    QWidget *send = tcpTab->sendDialog();
    click(send, "SendButton");
    QElapsedTimer sending;
    sending.start();
    while (sending.elapsed() < 600)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    save(send, QStringLiteral("send-dialog"), 100);
    click(send, "StopButton");
    settle(2000);
    send->close();

    tabs->setCurrentIndex(0);
    save(window, QStringLiteral("messages"));

    AboutDialog about(nullptr);
    about.show();
    save(&about, QStringLiteral("about"));
    about.close();

    window->close();
    dataPort.stop();
    device.stop();
    return 0;
}
