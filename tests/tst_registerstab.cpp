// The Registers tab against the emulator: a map file added, the selection read, a change marked,
// a field typed by its named value and written by read-modify-write, a bad value refused; the
// watch.
#include "tabfixture.h"
#include "testtable.h"
#include "ui/plotwidget.h"
#include "ui/registerstab.h"

template <typename T> static T cell(const char *column)
{
    return *static_cast<T *>(QTest::qData(column, qMetaTypeId<T>()));
}

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
    // A watch started from the form: what the device holds meanwhile (poke) appears in the change
    // list and the plot, or a fault stops it with its reason in red.
    void watch_data()
    {
        // clang-format off
        columns<QString, QString, QString, QString, QString, int>("target", "poke", "fault", "changes", "error", "style");
        QTest::addRow("a range: a value written meanwhile") << "1000" << "00000A11" << "" << "00000000 00000A11" << "" << int(PlotWidget::Style::Line);
        QTest::addRow("a numeric field as a line") << "scratch.ctrl.divider" << "00000A11" << "" << "0 10" << "" << int(PlotWidget::Style::Line);
        QTest::addRow("named values as marks") << "scratch.ctrl.mode" << "00000020" << "" << "idle loopback" << "" << int(PlotWidget::Style::Marks);
        QTest::addRow("a bus error stops it") << "1000" << "" << "bus" << "00000000" << "WREN Recv, Bus Error occured" << int(PlotWidget::Style::Line);
        QTest::addRow("a time-out stops it") << "1000" << "" << "drop" << "00000000" << "UDP read is timeout" << int(PlotWidget::Style::Line);
        QTest::addRow("an unknown name is refused") << "scratch.nothing" << "" << "" << "" << "No register is named scratch.nothing; see: mavix regs" << int(PlotWidget::Style::Line);
        // clang-format on
    }
    void watch()
    {
        QFETCH(QString, poke);
        QFETCH(QString, fault);
        TabFixture<RegistersTab> f;
        QVERIFY(f.start());
        QVERIFY(f.tab.addMapFile(MAVIX_DOCS_DIR "/scratch-map.toml"));
        f.child<QLineEdit>("registersWatchTargetLineEdit")->setText(cell<QString>("target"));
        f.child<QSpinBox>("registersWatchIntervalSpinBox")->setValue(50);
        auto *changes = f.child<QTreeWidget>("registersWatchChangesTree");
        auto *error = f.child<QLabel>("registersWatchErrorLabel");
        f.click("registersWatchStartButton");
        if (error->text().isEmpty()) {
            QTRY_COMPARE_WITH_TIMEOUT(changes->topLevelItemCount(), 1, 5000);
            QVERIFY(!f.child<QPushButton>("registersWatchStartButton")->isEnabled());
        }
        if (!poke.isEmpty()) {
            f.sim()->poke(0x1000, QByteArray::fromHex(poke.toLatin1()));
            QTRY_COMPARE_WITH_TIMEOUT(changes->topLevelItemCount(), 2, 5000);
        }
        if (!fault.isEmpty()) {
            SimFaults faults;
            faults.busError = fault == "bus";
            faults.dropEveryNth = fault == "drop" ? 1 : 0;
            f.sim()->setFaults(faults);
            QTRY_VERIFY_WITH_TIMEOUT(!error->text().isEmpty(), 5000);
        }
        QStringList values;
        for (int i = 0; i < changes->topLevelItemCount(); ++i)
            values << changes->topLevelItem(i)->text(1);
        QTEST(values.join(' '), "changes");
        QTEST(error->text(), "error");
        QTEST(int(f.child<PlotWidget>("registersWatchPlot")->style()), "style");
        f.click("registersWatchStopButton");
        QVERIFY(f.child<QPushButton>("registersWatchStartButton")->isEnabled());

        QTemporaryDir dir;
        QVERIFY(f.tab.exportWatchCsv(dir.filePath("w.csv")));
        QFile csv(dir.filePath("w.csv"));
        QVERIFY(csv.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = csv.readAll().split('\n');
        QCOMPARE(lines.first(), "time,seconds,target,value");
        QCOMPARE(lines.size(), values.size() + 2); // the header, a row a change, the last line end
        if (values.size() > 0)
            QVERIFY(lines[1].endsWith(("," + values.first()).toUtf8()));
        QVERIFY(!f.tab.exportWatchCsv("/nonexistent/w.csv"));
    }
};

QTEST_MAIN(TestRegistersTab)
#include "tst_registerstab.moc"
