// The Control(UDP) tab against the emulator on loopback, driven through its form: the range rules
// with and without expert mode, the hex dump, writing a dump back, the data tokens and the address
// history.
#include "reportcollector.h"
#include "settings/udptab.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTextEdit>
#include <QtTest>

#include <memory>

namespace {

QByteArray countingBytes(int count, int first = 0)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(char(first + i));
    return bytes;
}
} // namespace

class TestUDPTab : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void rangeRules_data();
    void rangeRules();
    void dump_data();
    void dump();
    void dumpWrittenBackUnchanged();
    void dataTokens_data();
    void dataTokens();
    void historyKeepsEachAddressOnce();
    void returnInTheAddressBoxAddsIt();
    void focusOrder();

private:
    template <typename T> T *child(const char *name) const
    {
        T *widget = m_tab->findChild<T *>(QLatin1String(name));
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    void setAccess(const QString &address, const QString &length);
    void click(const char *button);
    [[nodiscard]] QList<SimAccess> accesses() const { return m_sim.sim()->accessLog(); }

    SimThread m_sim;
    std::unique_ptr<WrenAgent> m_agent;
    std::unique_ptr<UDPTab> m_tab;
    std::unique_ptr<ReportCollector> m_reports;
    std::unique_ptr<QSignalSpy> m_succeeded;
    std::unique_ptr<QSignalSpy> m_failed;
};

void TestUDPTab::init()
{
    QVERIFY2(m_sim.start(), qPrintable(m_sim.errorString()));
    m_agent = std::make_unique<WrenAgent>();
    m_agent->setTarget(QHostAddress(QHostAddress::LocalHost), m_sim.udpPort());
    m_tab = std::make_unique<UDPTab>();
    m_tab->setAgent(m_agent.get());
    m_tab->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_tab.get()));
    m_reports = std::make_unique<ReportCollector>();
    m_succeeded = std::make_unique<QSignalSpy>(m_tab.get(), &UDPTab::transmissionSuccessed);
    m_failed = std::make_unique<QSignalSpy>(m_tab.get(), &UDPTab::transmissionFailed);
}

void TestUDPTab::cleanup()
{
    m_failed.reset();
    m_succeeded.reset();
    m_reports.reset();
    m_tab.reset();
    m_agent.reset();
    m_sim.stop();
}

void TestUDPTab::setAccess(const QString &address, const QString &length)
{
    child<QComboBox>("UDPRegisterAddressCombobox")->setEditText(address);
    child<QComboBox>("UDPDataLengthCombobox")->setEditText(length);
}

void TestUDPTab::click(const char *button)
{
    QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton);
}

void TestUDPTab::rangeRules_data()
{
    QTest::addColumn<bool>("write");
    QTest::addColumn<bool>("expert");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("length");
    QTest::addColumn<QString>("refusal"); // empty: the access reaches the device

    const QString pastEnd = QStringLiteral("Accessible range is 0x0 to 0xffffffff");
    const QString protectedTop =
        QStringLiteral("Writing in domain after 0xFFFF0000 is not permitted");
    const QString endOfSpace =
        QStringLiteral("Writing in domain after 0xFFFFFFFF is not permitted");
    const QString badAddress = QStringLiteral("Set register address 8 character hex number");
    const QString badLength = QStringLiteral("Data length must be 0 to 255");

    QTest::addRow("read 255 bytes ending at the last address") << false << false << "FFFFFF00"
                                                               << "255"
                                                               << "";
    QTest::addRow("read 255 bytes one past the end") << false << false << "FFFFFF01"
                                                     << "255" << pastEnd;
    QTest::addRow("read past the end in expert mode too") << false << true << "FFFFFF01"
                                                          << "255" << pastEnd;
    QTest::addRow("read 0 bytes at the last address") << false << false << "ffffffff"
                                                      << "0"
                                                      << "";
    QTest::addRow("read at address 0") << false << false << "0"
                                       << "16"
                                       << "";
    QTest::addRow("read with a nine-digit address") << false << false << "100000000"
                                                    << "4" << badAddress;
    QTest::addRow("read with a non-hex address") << false << false << "12X4"
                                                 << "4" << badAddress;
    QTest::addRow("read 256 bytes") << false << false << "0"
                                    << "256" << badLength;
    QTest::addRow("read a negative length") << false << false << "0"
                                            << "-1" << badLength;

    QTest::addRow("write 1 byte just below the protected top") << true << false << "FFFEFFFF"
                                                               << "1"
                                                               << "";
    QTest::addRow("write 1 byte at 0xFFFF0000") << true << false << "FFFF0000"
                                                << "1" << protectedTop;
    QTest::addRow("write 2 bytes reaching 0xFFFF0000") << true << false << "FFFEFFFF"
                                                       << "2" << protectedTop;
    QTest::addRow("write at the settings image") << true << false << "FFFFFF00"
                                                 << "4" << protectedTop;
    QTest::addRow("expert: write 1 byte at 0xFFFF0000") << true << true << "FFFF0000"
                                                        << "1"
                                                        << "";
    QTest::addRow("expert: write 1 byte at the last address") << true << true << "FFFFFFFF"
                                                              << "1"
                                                              << "";
    QTest::addRow("expert: write 2 bytes at the last address") << true << true << "FFFFFFFF"
                                                               << "2" << endOfSpace;
    QTest::addRow("write 0 bytes at 0x10") << true << false << "10"
                                           << "0" << endOfSpace;
    QTest::addRow("expert: write 0 bytes at 0x10") << true << true << "10"
                                                   << "0" << endOfSpace;
    QTest::addRow("write 0 bytes at 0") << true << false << "0"
                                        << "0"
                                        << "";
    QTest::addRow("write with a nine-digit address") << true << true << "100000000"
                                                     << "1" << badAddress;
    QTest::addRow("write 300 bytes") << true << false << "1000"
                                     << "300" << badLength;
}

void TestUDPTab::rangeRules()
{
    QFETCH(bool, write);
    QFETCH(bool, expert);
    QFETCH(QString, address);
    QFETCH(QString, length);
    QFETCH(QString, refusal);

    m_tab->setExpertMode(expert);
    setAccess(address, length);
    const int byteCount = qBound(0, length.toInt(), 255);
    child<QTextEdit>("UDPDataTextarea")
        ->setPlainText(QString(QStringLiteral("5A ")).repeated(byteCount));
    click(write ? "UDPWriteButton" : "UDPReadButton");

    if (!refusal.isEmpty()) {
        QCOMPARE(m_reports->errors, QStringList{refusal});
        QCOMPARE(m_failed->count(), 1);
        QCOMPARE(m_succeeded->count(), 0);
        QVERIFY(accesses().isEmpty());
        return;
    }
    QCOMPARE(m_reports->errors, QStringList());
    QCOMPARE(m_reports->results, QStringList{write ? QStringLiteral("UDP writing successed")
                                                   : QStringLiteral("UDP read successed")});
    QCOMPARE(m_succeeded->count(), 1);
    QCOMPARE(m_failed->count(), 0);
    const QList<SimAccess> log = accesses();
    QCOMPARE(log.size(), 1);
    QCOMPARE(log.first().direction, write ? SimAccess::Write : SimAccess::Read);
    QCOMPARE(log.first().address, address.toUInt(nullptr, 16));
    QCOMPARE(int(log.first().length), byteCount);
    if (write)
        QCOMPARE(log.first().data, QByteArray(byteCount, 0x5A));
}

void TestUDPTab::dump_data()
{
    QTest::addColumn<bool>("showAddress");
    QTest::addColumn<QString>("length");
    QTest::addColumn<QString>("text");

    QTest::addRow("18 bytes with addresses")
        << true << "18"
        << "00000010 : 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F \n"
           "00000020 : 10 11 \n";
    QTest::addRow("18 bytes without addresses")
        << false << "18"
        << "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F \n"
           "10 11 \n";
    QTest::addRow("exactly one line") << true << "16"
                                      << "00000010 : 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D "
                                         "0E 0F \n";
    QTest::addRow("one byte") << false << "1"
                              << "00 \n";
    QTest::addRow("nothing read empties the area") << true << "0"
                                                   << "";
}

void TestUDPTab::dump()
{
    QFETCH(bool, showAddress);
    QFETCH(QString, length);
    m_sim.sim()->poke(0x10, countingBytes(32));
    child<QTextEdit>("UDPDataTextarea")->setPlainText(QStringLiteral("left over"));
    child<QCheckBox>("UDPShowAddressCheckbox")->setChecked(showAddress);
    setAccess(QStringLiteral("00000010"), length);

    click("UDPReadButton");

    QTEST(child<QTextEdit>("UDPDataTextarea")->toPlainText(), "text");
    QCOMPARE(m_reports->results, QStringList{"UDP read successed"});
    QCOMPARE(m_succeeded->count(), 1);
}

// What a read with "Show Address" prints can be written elsewhere without editing it.
void TestUDPTab::dumpWrittenBackUnchanged()
{
    const QByteArray pattern = countingBytes(40, 0xC0);
    m_sim.sim()->poke(0x2000, pattern);
    child<QCheckBox>("UDPShowAddressCheckbox")->setChecked(true);
    setAccess(QStringLiteral("2000"), QStringLiteral("40"));
    click("UDPReadButton");
    QCOMPARE(m_succeeded->count(), 1);

    setAccess(QStringLiteral("3000"), QStringLiteral("40"));
    click("UDPWriteButton");

    QCOMPARE(m_reports->errors, QStringList());
    QCOMPARE(m_succeeded->count(), 2);
    QCOMPARE(m_sim.sim()->peek(0x3000, 40), pattern);
}

void TestUDPTab::dataTokens_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("length");
    QTest::addColumn<QByteArray>("written"); // empty when refused
    QTest::addColumn<QString>("refusal");

    const QString notHex = QStringLiteral("Written data is specified in hex number with a space");
    const QString mismatch = QStringLiteral("Written data length does not match");
    const QByteArray bytes123 = QByteArray::fromHex("010203");

    QTest::addRow("two lines") << "01 02\n03"
                               << "3" << bytes123 << "";
    QTest::addRow("a line as printed with its address") << "00000010 : 01 02 03"
                                                        << "3" << bytes123 << "";
    QTest::addRow("blank lines and repeated blanks") << "\n  01    02 \n\n 03\n"
                                                     << "3" << bytes123 << "";
    QTest::addRow("one and two digits, either case")
        << "0a A ff Fe 7"
        << "5" << QByteArray::fromHex("0A0AFFFE07") << "";
    QTest::addRow("three digits") << "100"
                                  << "1" << QByteArray() << notHex;
    QTest::addRow("a letter past F") << "01 0g"
                                     << "2" << QByteArray() << notHex;
    QTest::addRow("a colon stuck to the address") << "00000010: 01"
                                                  << "1" << QByteArray() << notHex;
    QTest::addRow("a second colon on the line") << "10 : 01 : 02"
                                                << "2" << QByteArray() << notHex;
    QTest::addRow("fewer bytes than the length") << "01 02"
                                                 << "3" << QByteArray() << mismatch;
    QTest::addRow("more bytes than the length") << "01 02 03 04"
                                                << "3" << QByteArray() << mismatch;
    QTest::addRow("no data for a non-zero length") << ""
                                                   << "1" << QByteArray() << mismatch;
}

void TestUDPTab::dataTokens()
{
    QFETCH(QString, text);
    QFETCH(QString, length);
    QFETCH(QByteArray, written);
    QFETCH(QString, refusal);
    const QByteArray before = QByteArray(8, char(0xEE));
    m_sim.sim()->poke(0x1000, before);
    setAccess(QStringLiteral("1000"), length);
    child<QTextEdit>("UDPDataTextarea")->setPlainText(text);

    click("UDPWriteButton");

    if (refusal.isEmpty()) {
        QCOMPARE(m_reports->errors, QStringList());
        QCOMPARE(m_succeeded->count(), 1);
        QCOMPARE(m_sim.sim()->peek(0x1000, int(written.size())), written);
    } else {
        QCOMPARE(m_reports->errors, QStringList{refusal});
        QCOMPARE(m_failed->count(), 1);
        QVERIFY(accesses().isEmpty());
        QCOMPARE(m_sim.sim()->peek(0x1000, 8), before);
    }
}

void TestUDPTab::historyKeepsEachAddressOnce()
{
    auto *addresses = child<QComboBox>("UDPRegisterAddressCombobox");
    const auto items = [addresses] {
        QStringList texts;
        for (int i = 0; i < addresses->count(); ++i)
            texts << addresses->itemText(i);
        return texts;
    };
    QCOMPARE(items(), QStringList());

    setAccess(QStringLiteral("0000FF00"), QStringLiteral("4"));
    click("UDPReadButton");
    click("UDPReadButton");
    QCOMPARE(items(), QStringList{"0000FF00"});

    setAccess(QStringLiteral("0000ff00"), QStringLiteral("4"));
    click("UDPReadButton");
    setAccess(QStringLiteral("1000"), QStringLiteral("1"));
    child<QTextEdit>("UDPDataTextarea")->setPlainText(QStringLiteral("AB"));
    click("UDPWriteButton");
    QCOMPARE(items(), (QStringList{"0000FF00", "0000ff00", "1000"}));

    // Refused addresses stay out; a refused length does not keep a good address out.
    setAccess(QStringLiteral("XYZ"), QStringLiteral("4"));
    click("UDPReadButton");
    setAccess(QStringLiteral("2000"), QStringLiteral("999"));
    click("UDPReadButton");
    QCOMPARE(items(), (QStringList{"0000FF00", "0000ff00", "1000", "2000"}));
    QCOMPARE(m_failed->count(), 2);
}

void TestUDPTab::returnInTheAddressBoxAddsIt()
{
    auto *addresses = child<QComboBox>("UDPRegisterAddressCombobox");
    addresses->setFocus();
    addresses->lineEdit()->selectAll();
    QTest::keyClicks(addresses->lineEdit(), QStringLiteral("FFFFFC00"));
    QTest::keyClick(addresses->lineEdit(), Qt::Key_Return);
    QTest::keyClick(addresses->lineEdit(), Qt::Key_Return);
    QCOMPARE(addresses->count(), 1);
    QCOMPARE(addresses->itemText(0), QStringLiteral("FFFFFC00"));
    QCOMPARE(addresses->currentText(), QStringLiteral("FFFFFC00"));
    QVERIFY(accesses().isEmpty());
}

void TestUDPTab::focusOrder()
{
    const QStringList expected{
        "UDPRegisterAddressCombobox", "UDPDataLengthCombobox", "UDPReadButton", "UDPWriteButton",
        "UDPShowAddressCheckbox",     "UDPDataTextarea"};
    QStringList chain;
    QWidget *widget = child<QWidget>("UDPRegisterAddressCombobox");
    for (int i = 0; i < 50 && chain.size() < expected.size(); ++i) {
        if ((widget->focusPolicy() & Qt::TabFocus) && !widget->objectName().isEmpty() &&
            expected.contains(widget->objectName()))
            chain << widget->objectName();
        widget = widget->nextInFocusChain();
    }
    QCOMPARE(chain, expected);
}

QTEST_MAIN(TestUDPTab)
#include "tst_udptab.moc"
