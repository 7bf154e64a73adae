// The Registers tab against the emulator: a map file added, the selection read, a change marked,
// a field typed by its named value and written by read-modify-write, a bad value refused.
#include "tabfixture.h"
#include "ui/registerstab.h"

class TestRegistersTab : public QObject
{
    Q_OBJECT

private slots:
    void readMarkEditWrite()
    {
        TabFixture<RegistersTab> f;
        QVERIFY(f.start());
        f.sim()->setRecording(true);
        QVERIFY(f.tab.addMapFile(MAVIX_DOCS_DIR "/scratch-map.toml"));
        f.sim()->poke(0x1000, QByteArray::fromHex("00000A11"));
        auto *tree = f.child<QTreeWidget>("registersTree");
        const auto item = [tree](const char *name) {
            return tree->findItems(QLatin1String(name), Qt::MatchExactly | Qt::MatchRecursive)
                .value(0);
        };
        f.click("registersReadButton"); // nothing selected
        QCOMPARE(f.reports.errors.last(), "Select the registers to read, or press Read All");
        item("scratch")->setSelected(true);
        f.click("registersReadButton");
        QCOMPARE(describe(f.accesses()), (QStringList{readOf(0x1000, 10), readOf(0x100C, 4)}));
        QCOMPARE(item("ctrl")->text(4), "0x00000A11");
        QCOMPARE(item("mode")->text(4), "run");
        QCOMPARE(item("divider")->text(4), "10");

        f.sim()->poke(0x1000, QByteArray::fromHex("00000B11"));
        f.click("registersReadButton");
        QCOMPARE(item("divider")->background(4).color(), QColor(255, 228, 160));
        QCOMPARE(item("mode")->background(4).style(), Qt::NoBrush);

        item("mode")->setText(4, "fast");
        QCOMPARE(f.reports.errors.last(),
                 "mode: \"fast\" is neither a number nor one of: idle, run, loopback, test");
        QCOMPARE(item("mode")->text(4), "run");
        item("mode")->setText(4, "loopback");
        item("enable")->setText(4, "0");
        f.sim()->clearAccessLog();
        f.click("registersWriteButton");
        QCOMPARE(describe(f.accesses()),
                 (QStringList{readOf(0x1000, 4), writeOf(0x1000, QByteArray::fromHex("00000B20")),
                              readOf(0x1000, 4)}));
        QCOMPARE(item("mode")->text(4), "loopback");
        QCOMPARE(f.outcome(), "succeeded 3, failed 0");

        item("status")->setText(4, "1"); // not editable in the view; the write rules refuse it too
        f.sim()->clearAccessLog();
        f.click("registersWriteButton");
        QCOMPARE(f.reports.errors.last(), "scratch.status is read-only");
        QCOMPARE(f.accesses().size(), 0);
    }
};

QTEST_MAIN(TestRegistersTab)
#include "tst_registerstab.moc"
