// The Control(UDP) tab against the emulator on loopback, driven through its form: the range rules
// with and without expert mode, the hex dump, writing a dump back, the data tokens and the address
// history.
#include "settings/udptab.h"
#include "tabfixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTextEdit>

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
    void dataTokens_data();
    void dataTokens();
    void historyKeepsEachAddressOnce();

private:
    void setAccess(const QString &address, const QString &length, const QString &data = QString())
    {
        f->child<QComboBox>("UDPRegisterAddressCombobox")->setEditText(address);
        f->child<QComboBox>("UDPDataLengthCombobox")->setEditText(length);
        if (!data.isNull())
            f->child<QTextEdit>("UDPDataTextarea")->setPlainText(data);
    }
    [[nodiscard]] QString shownData() const
    {
        return f->child<QTextEdit>("UDPDataTextarea")->toPlainText();
    }

    std::unique_ptr<TabFixture<UDPTab>> f;
};

void TestUDPTab::init()
{
    f = std::make_unique<TabFixture<UDPTab>>();
    QVERIFY(f->start());
}

void TestUDPTab::cleanup()
{
    f.reset();
}

void TestUDPTab::rangeRules_data()
{
    QTest::addColumn<bool>("write");
    QTest::addColumn<bool>("expert");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("length");
    QTest::addColumn<QString>("refusal"); // empty: the access reaches the device

    const char *pastEnd = "Accessible range is 0x0 to 0xffffffff";
    const char *protectedTop = "Writing in domain after 0xFFFF0000 is not permitted";
    const char *endOfSpace = "Writing in domain after 0xFFFFFFFF is not permitted";
    const char *badAddress = "Set register address 8 character hex number";
    const char *badLength = "Data length must be 0 to 255";
    const auto row = [](const char *name, bool write, bool expert, const char *address,
                        const char *length, const char *refusal) {
        QTest::addRow("%s", name) << write << expert << QString::fromLatin1(address)
                                  << QString::fromLatin1(length) << QString::fromLatin1(refusal);
    };
    const bool read = false;
    const bool write = true;
    const bool expert = true;

    row("read 255 bytes ending at the last address", read, !expert, "FFFFFF00", "255", "");
    row("read 255 bytes one past the end", read, !expert, "FFFFFF01", "255", pastEnd);
    row("read past the end in expert mode too", read, expert, "FFFFFF01", "255", pastEnd);
    row("read 0 bytes at the last address", read, !expert, "ffffffff", "0", "");
    row("read with a nine-digit address", read, !expert, "100000000", "4", badAddress);
    row("read 256 bytes", read, !expert, "0", "256", badLength);

    row("write 1 byte just below the protected top", write, !expert, "FFFEFFFF", "1", "");
    row("write 1 byte at 0xFFFF0000", write, !expert, "FFFF0000", "1", protectedTop);
    row("write 2 bytes reaching 0xFFFF0000", write, !expert, "FFFEFFFF", "2", protectedTop);
    row("write at the settings image", write, !expert, "FFFFFF00", "4", protectedTop);
    row("expert: write 1 byte at 0xFFFF0000", write, expert, "FFFF0000", "1", "");
    row("expert: write 1 byte at the last address", write, expert, "FFFFFFFF", "1", "");
    row("expert: write 2 bytes at the last address", write, expert, "FFFFFFFF", "2", endOfSpace);
    row("write 0 bytes at 0x10", write, !expert, "10", "0", endOfSpace);
    row("write 0 bytes at 0", write, !expert, "0", "0", "");
    row("write with a non-hex address", write, expert, "12X4", "1", badAddress);
    row("write a negative length", write, !expert, "1000", "-1", badLength);
}

void TestUDPTab::rangeRules()
{
    QFETCH(bool, write);
    QFETCH(bool, expert);
    QFETCH(QString, address);
    QFETCH(QString, length);
    QFETCH(QString, refusal);
    f->tab.setExpertMode(expert);
    const int byteCount = qBound(0, length.toInt(), 255);
    setAccess(address, length, QString(QStringLiteral("5A ")).repeated(byteCount));

    f->click(write ? "UDPWriteButton" : "UDPReadButton");

    if (!refusal.isEmpty()) {
        QCOMPARE(f->reports.errors, QStringList{refusal});
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 1"));
        QVERIFY(f->accesses().isEmpty());
        return;
    }
    QCOMPARE(f->reports.errors, QStringList());
    QCOMPARE(f->reports.results, QStringList{write ? QStringLiteral("UDP writing successed")
                                                   : QStringLiteral("UDP read successed")});
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0"));
    const quint32 at = address.toUInt(nullptr, 16);
    QCOMPARE(describe(f->accesses()),
             QStringList{write ? writeOf(at, QByteArray(byteCount, 0x5A)) : readOf(at, byteCount)});
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
    QTest::addRow("exactly one line")
        << true << "16"
        << "00000010 : 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F \n";
    QTest::addRow("one byte") << false << "1"
                              << "00 \n";
    QTest::addRow("nothing read empties the area") << true << "0"
                                                   << "";
}

void TestUDPTab::dump()
{
    QFETCH(bool, showAddress);
    QFETCH(QString, length);
    f->sim()->poke(0x10, countingBytes(32));
    f->child<QCheckBox>("UDPShowAddressCheckbox")->setChecked(showAddress);
    setAccess(QStringLiteral("00000010"), length, QStringLiteral("left over"));

    f->click("UDPReadButton");

    QTEST(shownData(), "text");
    QCOMPARE(f->reports.results, QStringList{"UDP read successed"});
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0"));

    // What the read printed is written back elsewhere without editing it.
    setAccess(QStringLiteral("0"), length);
    f->click("UDPWriteButton");
    QCOMPARE(f->reports.errors, QStringList());
    QCOMPARE(f->sim()->peek(0, length.toInt()), countingBytes(length.toInt()));
}

void TestUDPTab::dataTokens_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("length");
    QTest::addColumn<QByteArray>("written"); // empty when refused
    QTest::addColumn<QString>("refusal");

    const char *notHex = "Written data is specified in hex number with a space";
    const char *mismatch = "Written data length does not match";
    const auto row = [](const char *name, const char *text, const char *length,
                        const char *writtenHex, const char *refusal) {
        QTest::addRow("%s", name) << QString::fromLatin1(text) << QString::fromLatin1(length)
                                  << QByteArray::fromHex(writtenHex)
                                  << QString::fromLatin1(refusal);
    };
    row("two lines", "01 02\n03", "3", "010203", "");
    row("a line as printed with its address", "00000010 : 01 02 03", "3", "010203", "");
    row("blank lines and repeated blanks", "\n  01    02 \n\n 03\n", "3", "010203", "");
    row("one and two digits, either case", "0a A ff Fe 7", "5", "0A0AFFFE07", "");
    row("three digits", "100", "1", "", notHex);
    row("a letter past F", "01 0g", "2", "", notHex);
    row("a colon stuck to the address", "00000010: 01", "1", "", notHex);
    row("a second colon on the line", "10 : 01 : 02", "2", "", notHex);
    row("fewer bytes than the length", "01 02", "3", "", mismatch);
    row("more bytes than the length", "01 02 03 04", "3", "", mismatch);
    row("no data for a non-zero length", "", "1", "", mismatch);
}

void TestUDPTab::dataTokens()
{
    QFETCH(QString, text);
    QFETCH(QString, length);
    QFETCH(QByteArray, written);
    QFETCH(QString, refusal);
    const QByteArray before(8, char(0xEE));
    f->sim()->poke(0x1000, before);
    setAccess(QStringLiteral("1000"), length, text);

    f->click("UDPWriteButton");

    QCOMPARE(f->reports.errors, refusal.isEmpty() ? QStringList() : QStringList{refusal});
    if (refusal.isEmpty()) {
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0"));
        QCOMPARE(f->sim()->peek(0x1000, int(written.size())), written);
    } else {
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 1"));
        QVERIFY(f->accesses().isEmpty());
        QCOMPARE(f->sim()->peek(0x1000, 8), before);
    }
}

void TestUDPTab::historyKeepsEachAddressOnce()
{
    auto *addresses = f->child<QComboBox>("UDPRegisterAddressCombobox");
    const auto items = [addresses] {
        QStringList texts;
        for (int i = 0; i < addresses->count(); ++i)
            texts << addresses->itemText(i);
        return texts;
    };
    setAccess(QStringLiteral("0000FF00"), QStringLiteral("4"));
    f->click("UDPReadButton");
    f->click("UDPReadButton");
    QCOMPARE(items(), QStringList{"0000FF00"});

    setAccess(QStringLiteral("0000ff00"), QStringLiteral("4"));
    f->click("UDPReadButton");
    setAccess(QStringLiteral("1000"), QStringLiteral("1"), QStringLiteral("AB"));
    f->click("UDPWriteButton");
    QCOMPARE(items(), (QStringList{"0000FF00", "0000ff00", "1000"}));

    // Refused addresses stay out; a refused length does not keep a good address out.
    setAccess(QStringLiteral("XYZ"), QStringLiteral("4"));
    f->click("UDPReadButton");
    setAccess(QStringLiteral("2000"), QStringLiteral("999"));
    f->click("UDPReadButton");
    QCOMPARE(f->failed.count(), 2);

    // Return in the address box adds what was typed there, once, without an access.
    f->sim()->clearAccessLog();
    addresses->setFocus();
    addresses->lineEdit()->selectAll();
    QTest::keyClicks(addresses->lineEdit(), QStringLiteral("FFFFFC00"));
    QTest::keyClick(addresses->lineEdit(), Qt::Key_Return);
    QTest::keyClick(addresses->lineEdit(), Qt::Key_Return);
    QCOMPARE(items(), (QStringList{"0000FF00", "0000ff00", "1000", "2000", "FFFFFC00"}));
    QCOMPARE(addresses->currentText(), QStringLiteral("FFFFFC00"));
    QVERIFY(f->accesses().isEmpty());
}

QTEST_MAIN(TestUDPTab)
#include "tst_udptab.moc"
