// What the register tab tests share: an emulator thread, an agent aimed at it, the tab shown with
// its outcome signals watched, and the reported texts; the General tab aims the agent itself.
#pragma once

#include "app/devicetarget.h"
#include "reportcollector.h"
#include "settings/generaltab.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QtTest>
#include <QtWidgets>

#include <type_traits>

// Accesses as the emulator recorded them, in a form QCOMPARE prints readably.
inline QString readOf(quint32 address, int length = 64)
{
    return QStringLiteral("read %1 %2").arg(address, 8, 16, QLatin1Char('0')).arg(length);
}
inline QString writeOf(quint32 address, const QByteArray &data)
{
    return QStringLiteral("write %1 %2 [%3]")
        .arg(address, 8, 16, QLatin1Char('0'))
        .arg(data.size())
        .arg(QString::fromLatin1(data.toHex()));
}
inline QStringList describe(const QList<SimAccess> &log)
{
    QStringList lines;
    for (const SimAccess &access : log)
        lines << (access.direction == SimAccess::Write ? writeOf(access.address, access.data)
                                                       : readOf(access.address, access.length));
    return lines;
}

// Every access of a tab under test waits this long: enough for the emulator, short to wait out.
inline constexpr int kTabTimeoutMs = 400;

template <typename Tab> class TabFixture
{
public:
    // aimAgent false leaves the agent following `target`, which the tab's target fields set.
    [[nodiscard]] bool start(bool aimAgent = true)
    {
        if (!simThread.start())
            return false;
        if (aimAgent)
            agent.setTarget(QHostAddress(QHostAddress::LocalHost), simThread.udpPort());
        else
            agent.follow(&target);
        if constexpr (std::is_base_of_v<GeneralTab, Tab>)
            tab.setDeviceTarget(&target);
        tab.setAgent(&agent);
        tab.setAccessTimeoutMs(kTabTimeoutMs);
        tab.show();
        return QTest::qWaitForWindowExposed(&tab);
    }
    template <typename T> T *child(const char *name) const
    {
        T *widget = tab.template findChild<T *>(QLatin1String(name));
        return widget ? widget : (qFatal("no widget %s", name), nullptr);
    }
    void click(const char *button) const
    {
        QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton);
    }
    [[nodiscard]] QString outcome() const
    {
        return QStringLiteral("succeeded %1, failed %2").arg(succeeded.count()).arg(failed.count());
    }
    [[nodiscard]] MavixSim *sim() const { return simThread.sim(); }
    [[nodiscard]] QList<SimAccess> accesses() const { return sim()->accessLog(); }

    SimThread simThread; // declared first: the emulator outlives everything that talks to it
    DeviceTarget target;
    WrenAgent agent;
    Tab tab;
    ReportCollector reports;
    QSignalSpy succeeded{&tab, &Tab::transmissionSuccessed};
    QSignalSpy failed{&tab, &Tab::transmissionFailed};
};

// A settings image whose every byte is known: the bytes the tool does not interpret differ from
// the emulator's own, so that a test sees whether they come back unchanged.
inline QByteArray knownImage(const char *ip, quint16 udpPort, quint16 tcpPort)
{
    QByteArray image = QByteArray::fromHex("303132333435363738393A3B3C3D3E3F A5 77 021122334455");
    image += QByteArray(24, '\0') + QByteArray::fromHex("E0E1E2E3E4E5E6E7E8E9EAEBECEDEEEF");
    qToBigEndian<quint32>(QHostAddress(QString::fromLatin1(ip)).toIPv4Address(), image.data() + 24);
    const quint16 values[] = {tcpPort, 8023, 1400, udpPort, 2000, 30000, 4000, 1000, 250, 125};
    for (int i = 0; i < 10; ++i)
        qToBigEndian<quint16>(values[i], image.data() + 28 + 2 * i);
    return image;
}

class GeneralTabFixture : public TabFixture<GeneralTab>
{
public:
    [[nodiscard]] bool start()
    {
        if (!TabFixture::start(false))
            return false;
        const QString udpPort = QString::number(simThread.udpPort());
        tab.setTargetFields(QStringLiteral("127.0.0.1"), QStringLiteral("24"), udpPort);
        setWriteFields(QStringLiteral("127.0.0.1"), QStringLiteral("24"), udpPort);
        runningBefore = knownImage("127.0.0.1", simThread.udpPort(), 24);
        eepromBefore = knownImage("127.0.0.7", 7777, 1024);
        sim()->poke(MavixSetting::kRunningBase, runningBefore);
        sim()->poke(MavixSetting::kEepromBase, eepromBefore);
        return true;
    }
    void setWriteFields(const QString &ip, const QString &tcpPort, const QString &udpPort) const
    {
        child<QLineEdit>("GenWriteIPAddressTextarea")->setText(ip);
        child<QLineEdit>("GenWriteTCPPortTextarea")->setText(tcpPort);
        child<QLineEdit>("GenWriteUDPPortTextarea")->setText(udpPort);
    }
    [[nodiscard]] QString text(const char *name) const { return child<QLineEdit>(name)->text(); }
    [[nodiscard]] QString outcome() const
    {
        return TabFixture::outcome() + QStringLiteral(", changed %1").arg(changed.count());
    }

    QSignalSpy changed{&tab, &GeneralTab::targetSettingChanged};
    QByteArray runningBefore;
    QByteArray eepromBefore;
};
