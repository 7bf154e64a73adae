// What the General tab tests share: an emulator on its own thread, an agent, the tab pointed at the
// emulator through its target fields, a known settings image in the emulator, and the answering of
// the UDP-port warning box.
#pragma once

#include "reportcollector.h"
#include "settings/generaltab.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QtEndian>
#include <QTimer>
#include <QtTest>
#include <QUdpSocket>

#include <memory>

// A settings image whose every byte is known: the bytes the tool does not interpret are distinct
// from the emulator's own, so that a test sees whether they come back unchanged.
inline QByteArray knownImage(const QString &ip, quint16 udpPort, quint16 tcpPort)
{
    QByteArray image(64, '\0');
    for (int i = 0; i < 16; ++i)
        image[i] = char(0x30 + i);
    image[16] = char(0xA5); // keep-alive on, with other bits set
    image[17] = char(0x77);
    image.replace(18, 6, QByteArray::fromHex("021122334455"));
    qToBigEndian<quint32>(QHostAddress(ip).toIPv4Address(), image.data() + 24);
    const quint16 values[] = {tcpPort, 8023, 1400, udpPort, 2000, 30000, 4000, 1000, 250, 125};
    for (int i = 0; i < 10; ++i)
        qToBigEndian<quint16>(values[i], image.data() + 28 + 2 * i);
    for (int i = 48; i < 64; ++i)
        image[i] = char(0xE0 + (i - 48));
    return image;
}

// A UDP port nobody uses at the moment, for moving the emulator to.
inline quint16 freeUdpPort()
{
    QUdpSocket probe;
    if (!probe.bind(QHostAddress(QHostAddress::LocalHost), 0))
        return 0;
    return probe.localPort();
}

// How the warning box looked and which button the test pressed.
struct BoxAnswer
{
    bool shown = false;
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
};

// Waits (bounded) for a modal message box to appear and presses `answer` on it. A poll still
// pending when `context` is deleted (at the end of the test) is dropped with it.
inline void answerNextBox(QObject *context, QMessageBox::StandardButton answer,
                          std::shared_ptr<BoxAnswer> seen, int triesLeft = 300)
{
    QTimer::singleShot(10, context, [context, answer, seen, triesLeft] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box) {
            if (triesLeft > 0)
                answerNextBox(context, answer, seen, triesLeft - 1);
            return;
        }
        seen->shown = true;
        seen->title = box->windowTitle();
        seen->text = box->text();
        seen->icon = box->icon();
        seen->buttons = box->standardButtons();
        seen->defaultButton = box->standardButton(box->defaultButton());
        box->button(answer)->click();
    });
}

class GeneralTabFixture
{
public:
    bool start()
    {
        if (!m_sim.start())
            return false;
        m_agent = std::make_unique<WrenAgent>();
        m_tab = std::make_unique<GeneralTab>();
        m_tab->setAgent(m_agent.get());
        m_tab->setTargetFields(QStringLiteral("127.0.0.1"), QStringLiteral("24"),
                               QString::number(m_sim.udpPort()));
        setWriteFields(QStringLiteral("127.0.0.1"), QStringLiteral("24"),
                       QString::number(m_sim.udpPort()));
        m_runningBefore = knownImage(QStringLiteral("127.0.0.1"), m_sim.udpPort(), 24);
        m_eepromBefore = knownImage(QStringLiteral("127.0.0.7"), 7777, 1024);
        sim()->poke(MavixSetting::kRunningBase, m_runningBefore);
        sim()->poke(MavixSetting::kEepromBase, m_eepromBefore);
        m_tab->show();
        m_boxContext = std::make_unique<QObject>();
        m_reports = std::make_unique<ReportCollector>();
        m_changed = std::make_unique<QSignalSpy>(m_tab.get(), &GeneralTab::targetSettingChanged);
        m_succeeded = std::make_unique<QSignalSpy>(m_tab.get(), &GeneralTab::transmissionSuccessed);
        m_failed = std::make_unique<QSignalSpy>(m_tab.get(), &GeneralTab::transmissionFailed);
        return QTest::qWaitForWindowExposed(m_tab.get());
    }

    void stop()
    {
        m_failed.reset();
        m_succeeded.reset();
        m_changed.reset();
        m_reports.reset();
        m_boxContext.reset();
        m_tab.reset();
        m_agent.reset();
        m_sim.stop();
        MavixSetting::setCurrent(MavixSetting());
    }

    template <typename T> T *child(const char *name) const
    {
        T *widget = m_tab->findChild<T *>(QLatin1String(name));
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    QString text(const char *lineEdit) const { return child<QLineEdit>(lineEdit)->text(); }

    void setWriteFields(const QString &ip, const QString &tcpPort, const QString &udpPort)
    {
        child<QLineEdit>("GenWriteIPAddressTextarea")->setText(ip);
        child<QLineEdit>("GenWriteTCPPortTextarea")->setText(tcpPort);
        child<QLineEdit>("GenWriteUDPPortTextarea")->setText(udpPort);
    }
    void click(const char *button) const
    {
        QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton);
    }
    // Drops the reply to the n-th request from now on (1 = the next one).
    void dropReplyTo(int n) const
    {
        SimFaults faults;
        faults.dropEveryNth = quint32(sim()->counters().requests) + quint32(n);
        sim()->setFaults(faults);
    }

    MavixSim *sim() const { return m_sim.sim(); }
    QList<SimAccess> accesses() const { return sim()->accessLog(); }

    SimThread m_sim;
    std::unique_ptr<WrenAgent> m_agent;
    std::unique_ptr<GeneralTab> m_tab;
    std::unique_ptr<QObject> m_boxContext; // owns the pending polls of answerNextBox()
    std::unique_ptr<ReportCollector> m_reports;
    std::unique_ptr<QSignalSpy> m_changed;
    std::unique_ptr<QSignalSpy> m_succeeded;
    std::unique_ptr<QSignalSpy> m_failed;
    QByteArray m_runningBefore;
    QByteArray m_eepromBefore;
};

// One access as the emulator recorded it, in a form QCOMPARE prints readably.
inline QString describeAccess(const SimAccess &access)
{
    return QStringLiteral("%1 %2 %3 [%4]")
        .arg(access.direction == SimAccess::Read ? QStringLiteral("read") : QStringLiteral("write"))
        .arg(access.address, 8, 16, QLatin1Char('0'))
        .arg(access.length)
        .arg(access.direction == SimAccess::Write ? QString::fromLatin1(access.data.toHex())
                                                  : QString());
}

inline QStringList describeAccesses(const QList<SimAccess> &log)
{
    QStringList lines;
    for (const SimAccess &access : log)
        lines << describeAccess(access);
    return lines;
}
