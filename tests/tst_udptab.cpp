// The Control(UDP) tab against the emulator on loopback, driven through its form: the range and
// data rules, device failures, the hex dump written back, the history and what typing sends.
#include "settings/udptab.h"
#include "simclient.h"
#include "tabfixture.h"
#include "testtable.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

class TestUDPTab : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY((f = std::make_unique<TabFixture<UDPTab>>())->start()); }
    void cleanup() { f.reset(); }
    void accessRules_data()
    {
        // clang-format off
        // faults "port 0": the request is not sent; result: the access seen, or the error shown
        columns<bool, bool, QString, QString, QString, QString, QString>("write", "expert", "faults", "address", "length", "data", "result");
        const auto row = [](const char *name, bool write, bool expert, const char *faults, const char *address, const char *length, const char *data, const QString &result) { QTest::addRow("%s", name) << write << expert << faults << address << length << data << result; };
        const char *pastEnd = "Accessible range is 0x0 to 0xffffffff";
        const char *top = "Writing in domain after 0xFFFF0000 is not permitted";
        const char *end = "Writing in domain after 0xFFFFFFFF is not permitted";
        const QString notHex = "Written data is specified in hex number with a space";
        const bool w = true, x = true;
        row("read 255 bytes ending at the last address", !w, !x, "", "FFFFFF00", "255", "", "read ffffff00 255");
        row("read 255 bytes one past the end", !w, x, "", "FFFFFF01", "255", "", pastEnd);
        row("nine-digit address", !w, !x, "", "100000000", "4", "", "Set register address 8 character hex number");
        row("length 256", w, !x, "", "0", "256", "", "Data length must be 0 to 255");
        row("write 1 byte below the protected top", w, !x, "", "FFFEFFFF", "1", "5A", "write fffeffff 1 [5a]");
        row("write 1 byte at 0xFFFF0000", w, !x, "", "FFFF0000", "1", "5A", top);
        row("write 2 bytes reaching 0xFFFF0000", w, !x, "", "FFFEFFFF", "2", "5A 5A", top);
        row("expert: write 1 byte at the last address", w, x, "", "FFFFFFFF", "1", "5A", "write ffffffff 1 [5a]");
        row("expert: write 2 bytes at the last address", w, x, "", "FFFFFFFF", "2", "5A 5A", end);
        row("write 0 bytes at 0x10", w, !x, "", "10", "0", "", end);
        row("write 0 bytes at 0", w, !x, "", "0", "0", "", "write 00000000 0 []");
        row("two lines", w, !x, "", "1000", "3", "01 02\n03", "write 00001000 3 [010203]");
        row("a line as printed with its address", w, !x, "", "1000", "3", "00000010 : 01 02 03", "write 00001000 3 [010203]");
        row("one and two digits, either case", w, !x, "", "1000", "3", "0a A fF", "write 00001000 3 [0a0aff]");
        row("three digits", w, !x, "", "1000", "1", "100", notHex + ": \"100\" is not a hexadecimal byte");
        row("a colon stuck to the address", w, !x, "", "1000", "1", "00000010: 01", notHex + ": \"00000010:\" is not a hexadecimal byte");
        row("fewer bytes than the length", w, !x, "", "1000", "3", "01 02", "Written data length does not match (2 bytes typed, Data Length 3)");
        row("silent device on a write", w, !x, "drop", "1000", "2", "12 34", "UDP writing is timeout");
        row("read not sent", !w, !x, "port 0", "1000", "2", "12 34", "UDP read is timeout (The request could not be sent: Unable to send a message)");
        // clang-format on
    }
    void accessRules()
    {
        QFETCH(bool, write);
        QFETCH(bool, expert);
        QFETCH(QString, faults);
        QFETCH(QString, data);
        QFETCH(QString, result);
        f->tab.setExpertMode(expert);
        if (faults == u"port 0")
            f->agent.setTarget(QHostAddress(QHostAddress::LocalHost), 0);
        else
            f->sim()->setFaults(faultsFrom(faults.split(u' ', Qt::SkipEmptyParts)));
        QFETCH(QString, address);
        QFETCH(QString, length);
        setAccess(address, length, data);

        f->click(write ? "UDPWriteButton" : "UDPReadButton");

        if (!result.startsWith(u"read ") && !result.startsWith(u"write ")) {
            QCOMPARE(f->reports.errors, QStringList{result});
            QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 1"));
            QCOMPARE(shownData(), data); // nothing shown for what was not read
            if (faults.isEmpty())
                QCOMPARE(describe(f->accesses()), QStringList());
            return;
        }
        QCOMPARE(f->reports.errors, QStringList());
        QCOMPARE(describe(f->accesses()), QStringList{result});
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0"));
        QCOMPARE(f->reports.results,
                 QStringList{write ? "UDP writing successed" : "UDP read successed"});
    }
    void dump_data()
    {
        // clang-format off
        columns<bool, QString, QString>("showAddress", "length", "text");
        QTest::addRow("18 bytes with addresses") << true << "18" << "00000010 : 10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F \n00000020 : 20 21 \n";
        QTest::addRow("18 bytes without") << false << "18" << "10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F \n20 21 \n";
        QTest::addRow("nothing read empties the area") << true << "0" << "";
        // clang-format on
    }
    void dump()
    {
        QFETCH(bool, showAddress);
        QFETCH(QString, length);
        const QByteArray bytes = hex("101112131415161718191A1B1C1D1E1F2021");
        f->sim()->poke(0x10, bytes);
        f->child<QCheckBox>("UDPShowAddressCheckbox")->setChecked(showAddress);
        setAccess(QStringLiteral("00000010"), length, QStringLiteral("left over"));

        f->click("UDPReadButton");
        QTEST(shownData(), "text");
        if (length == u"0")
            return;

        // What the read printed is written back elsewhere without editing it.
        f->child<QComboBox>("UDPRegisterAddressCombobox")->setEditText(QStringLiteral("100"));
        f->click("UDPWriteButton");
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 2, failed 0"));
        QCOMPARE(f->sim()->peek(0x100, length.toInt()), bytes.left(length.toInt()));
    }
    void typedTextIsSentAsTyped_data()
    {
        // clang-format off
        columns<QString, QString, QString>("combo", "typed", "access");
        QTest::addRow("address 1 with 1000 in the history") << "UDPRegisterAddressCombobox" << "1" << "read 00000001 1";
        QTest::addRow("address FFFF with FFFFFF00 in the history") << "UDPRegisterAddressCombobox" << "FFFF" << "read 0000ffff 1";
        QTest::addRow("length 2 with 255 in the list") << "UDPDataLengthCombobox" << "2" << "read 00000000 2";
        // clang-format on
    }
    void typedTextIsSentAsTyped()
    {
        QFETCH(QString, combo);
        QFETCH(QString, typed);
        f->child<QComboBox>("UDPRegisterAddressCombobox")->addItems({"1000", "FFFFFF00"});
        setAccess(QStringLiteral("0"), QStringLiteral("1"), QString());
        QLineEdit *edit = f->child<QComboBox>(qPrintable(combo))->lineEdit();
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, typed);

        f->click("UDPReadButton");

        QTEST(describe(f->accesses()).join(u'\n'), "access");
    }
    void historyKeepsEachAddressOnce()
    {
        for (const char *address : {"0000FF00", "0000FF00", "0000ff00", "XYZ"}) {
            setAccess(QString::fromLatin1(address), QStringLiteral("4"), QString());
            f->click("UDPReadButton");
        }
        setAccess(QStringLiteral("2000"), QStringLiteral("999"), QString());
        f->click("UDPReadButton"); // a refused length does not keep a good address out
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 3, failed 2"));

        // Return in the address box adds what was typed there, once, without an access.
        f->sim()->clearAccessLog();
        auto *addresses = f->child<QComboBox>("UDPRegisterAddressCombobox");
        QLineEdit *edit = addresses->lineEdit();
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, QStringLiteral("FFFFFC00"));
        QTest::keyClick(edit, Qt::Key_Return);
        QTest::keyClick(edit, Qt::Key_Return);
        QStringList items;
        for (int i = 0; i < addresses->count(); ++i)
            items << addresses->itemText(i);
        QCOMPARE(items, (QStringList{"0000FF00", "0000ff00", "2000", "FFFFFC00"}));
        QVERIFY(f->accesses().isEmpty());
    }

private:
    void setAccess(const QString &address, const QString &length, const QString &data)
    {
        f->child<QComboBox>("UDPRegisterAddressCombobox")->setEditText(address);
        f->child<QComboBox>("UDPDataLengthCombobox")->setEditText(length);
        f->child<QTextEdit>("UDPDataTextarea")->setPlainText(data);
    }
    [[nodiscard]] QString shownData() const
    {
        return f->child<QTextEdit>("UDPDataTextarea")->toPlainText();
    }

    std::unique_ptr<TabFixture<UDPTab>> f;
};

QTEST_MAIN(TestUDPTab)
#include "tst_udptab.moc"
