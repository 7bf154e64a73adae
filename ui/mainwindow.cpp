#include "ui/mainwindow.h"

#include "app/accessgate.h"
#include "app/devicetarget.h"
#include "app/productinfo.h"
#include "app/report.h"
#include "app/startupoptions.h"
#include "app/validators.h"
#include "modules/zelgpibtab.h"
#include "modules/zelrs232ctab.h"
#include "server/servertab.h"
#include "settings/experttab.h"
#include "settings/generaltab.h"
#include "settings/udptab.h"
#include "tcp/tcptab.h"
#include "ui/aboutdialog.h"
#include "ui/registerstab.h"
#include "ui_mainwindow.h"
#include "wren/wrenagent.h"

#include <QAbstractSocket>
#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDateTime>
#include <QKeyEvent>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTabBar>
#include <QTranslator>

namespace {

constexpr char kAnimationKeys[] = "Ctrl+Shift+A+N+I";

// The buttons that start a register access; disabled while one waits.
constexpr const char *kDeviceButtons[] = {"GenReadButton",     "GenWriteButton", "ExpertReadButton",
                                          "ExpertWriteButton", "UDPReadButton",  "UDPWriteButton"};

bool isUserInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
        return true;
    default:
        return false;
    }
}

// Qt reads "Ctrl+Shift+A+N+I" as one unknown key. What the user does is hold Ctrl+Shift and type
// A, N, I, so the text becomes the three-chord sequence Ctrl+Shift+A, Ctrl+Shift+N, Ctrl+Shift+I.
QKeySequence animationKeySequence()
{
    const QStringList parts = QString::fromLatin1(kAnimationKeys).split(QLatin1Char('+'));
    QStringList modifiers;
    QStringList chords;
    for (const QString &part : parts) {
        if (part.size() > 1)
            modifiers << part;
        else
            chords << (modifiers + QStringList{part}).join(QLatin1Char('+'));
    }
    return QKeySequence::fromString(chords.join(QStringLiteral(", ")), QKeySequence::PortableText);
}

} // namespace

MainWindow::MainWindow(bool expert, bool serverMode, int uiPort, bool noTranslation,
                       QWidget *parent, const QString &presetTarget, const Parts &parts)
    : QMainWindow(parent), m_ui(new Ui::MainWindow), m_parts(parts), m_expert(expert),
      m_serverMode(serverMode), m_uiPort(uiPort)
{
    if (!noTranslation)
        loadTranslation();

    m_aboutAction = new QAction(tr("About"), this);
    connect(m_aboutAction, &QAction::triggered, this, &MainWindow::actionAbout_triggered);

    m_ui->setupUi(this);
    m_ui->splitter->setStretchFactor(0, 3); // the working tabs get most of the height
    m_ui->splitter->setStretchFactor(1, 1);
    QFont normal = font();
    normal.setWeight(QFont::Normal);
    setFont(normal);

    connect(this, &MainWindow::showResult, this, &MainWindow::onShowResult);
    connect(this, &MainWindow::showError, this, &MainWindow::onShowError);
    setReportTarget(this);

    initTabs(presetTarget);
    connectTabs();

    m_animationShortcut = new QShortcut(animationKeySequence(), this);
    m_animationShortcut->setContext(Qt::WindowShortcut);
    connect(m_animationShortcut, &QShortcut::activated, m_ui->graphicsView,
            &LogoView::StartAnimation);

    m_ui->graphicsView->StartAnimation();
    m_ui->menuHelp->addAction(m_aboutAction);
    m_ui->ProductLabel->setText(productText());
}

MainWindow::~MainWindow()
{
    // The tabs outlive this body: a field losing the focus as they go must not reach this window.
    for (QObject *child : findChildren<QObject *>())
        disconnect(child, nullptr, this, nullptr);
    if (reportTarget() == this)
        setReportTarget(nullptr);
    delete m_ui;
}

GeneralTab *MainWindow::generalTab() const
{
    return m_ui->generalTab;
}

UDPTab *MainWindow::udpTab() const
{
    return m_ui->udpTab;
}

TCPTab *MainWindow::tcpTab() const
{
    return m_ui->tcpTab;
}

ZELRS232CTab *MainWindow::zelrs232cTab() const
{
    return m_ui->zelrs232cTab;
}

ZELGPIBTab *MainWindow::zelgpibTab() const
{
    return m_ui->zelgpibTab;
}

void MainWindow::loadTranslation()
{
    auto *translator = new QTranslator(qApp);
    const bool translated =
        translator->load(QStringLiteral(":/MavixUtilityApp_") + QLocale::system().name(), QString(),
                         QString(), QString());
    qApp->installTranslator(translator);

    // Qt's own texts (message box buttons, file dialogs) follow only a language we translate
    // into: a window in English keeps English buttons whatever Qt ships for the locale.
    if (!translated)
        return;
    auto *qtTranslator = new QTranslator(qApp);
    if (qtTranslator->load(QLocale::system(), QStringLiteral("qtbase"), QStringLiteral("_"),
                           QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        qApp->installTranslator(qtTranslator);
}

void MainWindow::initTabs(const QString &presetTarget)
{
    DeviceTarget *target = m_parts.target;
    m_agent = new WrenAgent(this);
    m_agent->follow(target);
    connect(m_agent->gate(), &AccessGate::busyChanged, this, &MainWindow::showBusy);
    generalTab()->setAgent(m_agent);
    generalTab()->setDeviceTarget(target);
    udpTab()->setAgent(m_agent);
    udpTab()->setExpertMode(m_expert);
    zelrs232cTab()->setAgent(m_agent);
    if (m_ui->expertTab && m_expert) {
        m_ui->expertTab->setAgent(m_agent);
        m_ui->expertTab->setDeviceTarget(target);
    }
    zelgpibTab()->setAgent(m_agent);
    zelgpibTab()->setDeviceTarget(target);
    tcpTab()->setup(m_parts.model, m_parts.worker, target);

    removeTabsOfOtherModes();
    if (m_serverTab) {
        m_serverTab->setAgent(m_agent);
        m_serverTab->setLogView(
            m_serverTab->findChild<QPlainTextEdit *>(QStringLiteral("serverLogTextarea")));
        m_serverTab->setPort(m_uiPort);
        m_serverTab->start();
    }

    // After the tabs of every mode: the register maps.
    auto *registersTab = new RegistersTab(m_ui->modeTab);
    registersTab->setAgent(m_agent);
    registersTab->setExpertMode(m_expert);
    m_ui->modeTab->addTab(registersTab, tr("Registers"));
    connect(registersTab, &RegistersTab::transmissionSuccessed, m_ui->graphicsView,
            &LogoView::StartAnimation);
    connect(registersTab, &RegistersTab::transmissionFailed, m_ui->graphicsView,
            &LogoView::CloseEye);

    applyPresetTarget(presetTarget);
    generalTab()->applyTargetFields(true);
}

// The form holds every tab; the mode decides which stay. Normal: General to ZEL-GPIB; expert adds
// Detail, server mode adds Server.
void MainWindow::removeTabsOfOtherModes()
{
    m_expertTab = m_ui->expertTab;
    m_serverTab = m_ui->serverTab;
    QTabWidget *tabs = m_ui->modeTab;
    if (!m_expert) {
        tabs->removeTab(tabs->indexOf(m_expertTab));
        delete m_expertTab;
        m_expertTab = nullptr;
    }
    if (!m_serverMode) {
        tabs->removeTab(tabs->indexOf(m_serverTab));
        delete m_serverTab;
        m_serverTab = nullptr;
    }
    m_ui->expertTab = nullptr;
    m_ui->serverTab = nullptr;
}

// "-target:HOST[:UDPPORT[:TCPPORT]]" sets the target before the first apply of its fields. Every
// valid part is kept and every invalid one reported. An invalid host becomes the target as typed,
// so that Read and Connect are refused until it is corrected: the tool never falls back to the
// factory address for a device the user named.
void MainWindow::applyPresetTarget(const QString &presetTarget)
{
    if (presetTarget.isEmpty())
        return;
    TargetParts parts = splitTarget(presetTarget);
    const auto refuse = [&presetTarget](const QString &problem) {
        reportError(tr("-target:%1 is ignored: %2").arg(presetTarget, problem));
    };
    if (!parts.udpPort.isEmpty() && !parsePort(parts.udpPort)) {
        refuse(tr("UDP Port number must be 0 to 65535"));
        parts.udpPort.clear();
    }
    if (!parts.tcpPort.isEmpty() && !parsePort(parts.tcpPort)) {
        refuse(tr("TCP Port number must be 0 to 65535"));
        parts.tcpPort.clear();
    }
    if (!parts.host.isEmpty() && checkTargetAddress(parts.host) != AddressProblem::None)
        refuse(tr("IP address is invalid"));
    DeviceTarget *target = m_parts.target;
    target->set(parts.host.isEmpty() ? target->host() : parts.host,
                parsePort(parts.udpPort).value_or(target->udpPort()),
                parsePort(parts.tcpPort).value_or(target->tcpPort()));
    generalTab()->fillUntouchedWriteFields(parts.host, parts.tcpPort, parts.udpPort);
}

void MainWindow::connectTabs()
{
    LogoView *logo = m_ui->graphicsView;
    connect(generalTab(), &GeneralTab::transmissionSuccessed, logo, &LogoView::StartAnimation);
    connect(generalTab(), &GeneralTab::transmissionFailed, logo, &LogoView::CloseEye);
    connect(udpTab(), &UDPTab::transmissionSuccessed, logo, &LogoView::StartAnimation);
    connect(udpTab(), &UDPTab::transmissionFailed, logo, &LogoView::CloseEye);
    connect(tcpTab(), &TCPTab::connectSuccessed, logo, &LogoView::StartAnimation);
    connect(tcpTab(), &TCPTab::connectFailed, logo, &LogoView::CloseEye);
    connectSerialBridgeTab();
    connectExpertTab();
    if (m_serverTab) {
        connect(m_serverTab, &ServerTab::transmissionSuccessed, logo, &LogoView::StartAnimation);
        connect(m_serverTab, &ServerTab::transmissionFailed, logo, &LogoView::CloseEye);
    }

    m_shownTab = m_ui->modeTab->currentWidget();
    connect(m_ui->modeTab, &QTabWidget::currentChanged, this, &MainWindow::regetNetworkInfo);
    connectZelGpibTab();
}

void MainWindow::connectZelGpibTab()
{
    ZELGPIBTab *tab = zelgpibTab();
    const auto button = [tab](const char *name) {
        return tab->findChild<QPushButton *>(QLatin1String(name));
    };
    connect(button("ZELGPIBSettingRead"), &QPushButton::clicked, tab, &ZELGPIBTab::readSetting);
    connect(button("ZELGPIBSettingWrite"), &QPushButton::clicked, tab, &ZELGPIBTab::writeSetting);
    connect(button("ZELGPIBConnectButton"), &QPushButton::clicked, tab,
            &ZELGPIBTab::toggleConnection);
    connect(button("ZELGPIBReceiveButton"), &QPushButton::clicked, tab, &ZELGPIBTab::receive);
    connect(button("ZELGPIBSendButton"), &QPushButton::clicked, tab, &ZELGPIBTab::sendCommand);
    connect(button("ZELGPIBIFCButton"), &QPushButton::clicked, tab, &ZELGPIBTab::IFC);
    connect(tab->findChild<QLineEdit *>(QStringLiteral("ZELGPIBMaxReceiveLength")),
            &QLineEdit::editingFinished, tab, &ZELGPIBTab::maxReceiveLengthCheck);
    connect(tab, &ZELGPIBTab::transmissionSuccessed, m_ui->graphicsView, &LogoView::StartAnimation);
    connect(tab, &ZELGPIBTab::transmissionFailed, m_ui->graphicsView, &LogoView::CloseEye);
}

// A settings record read or written on the ZEL-RS232C tab or the General and Detail tabs reaches
// the other two: the target it names, the module's ports, the Detail fields.
void MainWindow::connectSerialBridgeTab()
{
    ZELRS232CTab *serial = zelrs232cTab();
    LogoView *logo = m_ui->graphicsView;
    connect(serial, &ZELRS232CTab::transmissionSuccessed, logo, &LogoView::StartAnimation);
    connect(serial, &ZELRS232CTab::transmissionFailed, logo, &LogoView::CloseEye);
    connect(generalTab(), &GeneralTab::targetSettingChanged, serial,
            &ZELRS232CTab::applyTargetSettingChange);
    connect(serial, &ZELRS232CTab::targetSettingChanged, generalTab(),
            &GeneralTab::applyTargetSettingChange);
    if (!m_expertTab)
        return;
    connect(serial, &ZELRS232CTab::targetSettingChanged, m_expertTab,
            &ExpertTab::applyTargetSettingChange);
    connect(m_expertTab, &ExpertTab::targetSettingChanged, serial,
            &ZELRS232CTab::applyTargetSettingChange);
}

// The Detail tab edits the same device as the General tab: target fields, EEPROM box and the
// settings record travel both ways.
void MainWindow::connectExpertTab()
{
    connect(generalTab()->eepromAccessCheckbox(), &QCheckBox::toggled, this,
            &MainWindow::setEEPROMAccessCheck);
    for (const char *name :
         {"GenTargetIPAddressTextarea", "GenTargetTCPPortTextarea", "GenTargetUDPPortTextarea"})
        connect(generalTab()->findChild<QLineEdit *>(QLatin1String(name)),
                &QLineEdit::editingFinished, this, &MainWindow::applyGeneralTargetInfoToExpert);
    if (!m_expertTab)
        return;

    connect(m_expertTab->eepromAccessCheckbox(), &QCheckBox::toggled, this,
            &MainWindow::setEEPROMAccessCheck);
    for (const char *name : {"ExpertTargetIPAddressTextarea", "ExpertTargetTCPPortTextarea",
                             "ExpertTargetUDPPortTextarea"})
        connect(m_expertTab->findChild<QLineEdit *>(QLatin1String(name)),
                &QLineEdit::editingFinished, this, &MainWindow::applyExpertTargetInfoToGeneral);

    connect(generalTab(), &GeneralTab::targetSettingChanged, m_expertTab,
            &ExpertTab::applyTargetSettingChange);
    connect(m_expertTab, &ExpertTab::targetSettingChanged, generalTab(),
            &GeneralTab::applyTargetSettingChange);
    // The ZEL-RS232C tab's part of this routing is in connectSerialBridgeTab().

    LogoView *logo = m_ui->graphicsView;
    connect(m_expertTab, &ExpertTab::transmissionSuccessed, logo, &LogoView::StartAnimation);
    connect(m_expertTab, &ExpertTab::transmissionFailed, logo, &LogoView::CloseEye);
}

void MainWindow::applyGeneralTargetInfoToExpert()
{
    if (!m_expertTab)
        return;
    m_expertTab->setTargetFields(generalTab()->targetIPAddressText(),
                                 generalTab()->targetTCPPortText(),
                                 generalTab()->targetUDPPortText());
    generalTab()->applyTargetFields(false);
}

void MainWindow::applyExpertTargetInfoToGeneral()
{
    if (!m_expertTab)
        return;
    generalTab()->setTargetFields(m_expertTab->targetIPAddressText(),
                                  m_expertTab->targetTCPPortText(),
                                  m_expertTab->targetUDPPortText());
    m_expertTab->applyTargetFields(false);
}

void MainWindow::setEEPROMAccessCheck(bool checked)
{
    generalTab()->setEEPROMAccessChecked(checked);
    if (m_expertTab)
        m_expertTab->setEEPROMAccessChecked(checked);
}

// The window keeps painting during a wait; what the user clicks meanwhile is dropped rather than
// replayed once the access is over.
void MainWindow::showBusy(bool busy)
{
    if (busy) {
        setCursor(Qt::WaitCursor);
        qApp->installEventFilter(this);
    } else {
        unsetCursor();
        qApp->removeEventFilter(this);
    }
    m_ui->modeTab->tabBar()->setEnabled(!busy);
    for (const char *name : kDeviceButtons) {
        if (auto *button = findChild<QPushButton *>(QLatin1String(name)))
            button->setEnabled(!busy);
    }
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    const auto *widget = qobject_cast<QWidget *>(watched);
    if (!isUserInput(event->type()) || !widget || widget->window() != this)
        return QMainWindow::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
        m_agent->gate()->abort();
    return true;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_agent)
        m_agent->gate()->abort();
    QMainWindow::closeEvent(event);
}

void MainWindow::regetNetworkInfo(int index)
{
    // Target text typed on one settings tab follows the user to the other, even when the tab bar
    // was clicked before the field reported its editing finished.
    QWidget *shown = m_ui->modeTab->widget(index);
    if (m_expertTab && m_shownTab == m_expertTab)
        applyExpertTargetInfoToGeneral();
    else if (m_expertTab && shown == m_expertTab)
        applyGeneralTargetInfoToExpert();
    m_shownTab = shown;
    // The other tabs follow the target itself; only what was typed needs applying (and an invalid
    // target is reported on each change).
    generalTab()->applyTargetFields(true);
}

void MainWindow::actionAbout_triggered()
{
    AboutDialog dialog(nullptr);
    dialog.exec();
}

// Reports carry text from the command line, files and devices: it is shown as typed, never as
// markup.
void MainWindow::onShowResult(const QString &text)
{
    const QString line = QStringLiteral("%1 | %2").arg(
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy/MM/dd hh:mm:ss")),
        text.toHtmlEscaped());
    appendMessage(QStringLiteral("<br><span style=\"color:#0000c0;\">%1</span>").arg(line));
}

void MainWindow::onShowError(const QString &text)
{
    const QString line =
        tr("%1 | Error:%2")
            .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyy/MM/dd hh:mm:ss")),
                 text.toHtmlEscaped());
    appendMessage(QStringLiteral("<br><span style=\"color:#ff0000;\">%1</span>").arg(line));
}

void MainWindow::appendMessage(const QString &html)
{
    QTextEdit *area = m_ui->errorLabel;
    area->moveCursor(QTextCursor::End);
    area->insertHtml(html);
    area->moveCursor(QTextCursor::End);
    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
}
