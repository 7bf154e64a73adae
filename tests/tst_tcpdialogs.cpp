// The transfer dialogs and the Data(TCP) tab, driven by their widgets against the emulator.
#include "tcpfixture.h"
#include "testtable.h"

#include "tcp/tcprecvinfodlg.h"
#include "tcp/tcpsendinfodlg.h"
#include "tcp/tcptab.h"

#include <QtTest>
#include <QtWidgets>

class TestTcpDialogs : public QObject
{
    Q_OBJECT

public slots:
    void openedInShell(const QUrl &url) { m_opened << url; }

private slots:
    void init()
    {
        m_rig.start();
        m_tab = new TCPTab;
        m_tab->setup(m_rig.model.get(), m_rig.worker, &m_rig.target);
        m_tab->show();
    }
    void cleanup() { delete m_tab, m_rig.stop(); }
    void receiveShowsAndSavesFormatAlike()
    {
        m_rig.port->setMode(SimDataPort::Mode::Source);
        m_rig.port->setSourceBytes(10);
        const QString path = m_rig.dir.filePath("received.txt");
        type("TCPRecvPathTextarea", path);
        type("TCPRecvFormatTextarea", "1\u00b71");
        QTest::keyClick(child(m_tab, "TCPRecvFormatTextarea"), Qt::Key_Return);
        click(m_tab, "TCPRecvFileTextConvertCheckbox");
        QDialog *dialog = open(false);
        click(dialog, "ShowHexCheckbox");
        QSignalSpy connected(m_tab, &TCPTab::connectSuccessed);
        click(dialog, "RecvButton");
        QTRY_VERIFY_WITH_TIMEOUT(m_rig.reports->results.size() == 3, kTransferTimeoutMs);
        QVERIFY(enabled(dialog, "RecvButton") && connected.count() == 1);
        QTRY_COMPARE(child<QPlainTextEdit>(dialog, "DataTextarea")->toPlainText().trimmed(),
                     "7A\u00b748\n21\u00b79A\nE2\u00b7B3\n83\u00b70D\n67\u00b79D");
        QCOMPARE(readFile(path),
                 "7A\u00b748\r\n21\u00b79A\r\nE2\u00b7B3\r\n83\u00b70D\r\n67\u00b79D\r\n");
        const QString end =
            "The device closed the connection. 40 bytes were saved to " + path + ".";
        QCOMPARE(m_rig.reports->results,
                 (QStringList{"Receiving began", end, "Receiving finished"}));
        QCOMPARE(text(dialog, "FileLabel"), "Saving to " + path + "\n" + end);
        QCOMPARE(text(dialog, "ErrorLabel") + text(dialog, "SizeTextarea"), "10");
    }
    // The dialog of the failed run says why, and no blue "finished" follows the red line.
    void failureShownInsideDialog_data()
    {
        // clang-format off
        // reason: %1: the file, or the port that refuses
        columns<bool, QString, QString>("sending", "file", "reason");
        const QString missing = "%1 (No such file or directory)";
        const QString none, send = "Send file cannot open: ";
        QTest::addRow("refused") << false << none << "Fail to connect to device: 127.0.0.1:%1 (Connection refused)";
        QTest::addRow("no folder") << false << "gone/r" << "Receive file cannot open: " + missing;
        QTest::addRow("no send file") << true << "gone.bin" << send + missing;
        QTest::addRow("none chosen") << true << none << send + "no send file is chosen";
        // clang-format on
    }
    void failureShownInsideDialog()
    {
        QFETCH(bool, sending);
        QFETCH(QString, file);
        QFETCH(QString, reason);
        const QString path = file.isEmpty() ? QString() : m_rig.dir.filePath(file);
        if (!sending && file.isEmpty())
            m_rig.pointWorkerAt(0);
        sending ? m_rig.model->setSendFileName(path) : m_rig.model->setRecvFileName(path);
        QSignalSpy failed(m_tab, &TCPTab::connectFailed);
        QDialog *dialog = open(sending);
        click(dialog, sending ? "SendButton" : "RecvButton");
        const QString port = QString::number(m_rig.target.tcpPort());
        reason = reason.contains("%1") ? reason.arg(file.isEmpty() ? port : path) : reason;
        QTRY_COMPARE_WITH_TIMEOUT(text(dialog, "ErrorLabel"), reason, kTransferTimeoutMs);
        QTRY_VERIFY(enabled(dialog, sending ? "SendButton" : "RecvButton"));
        QCOMPARE(m_rig.reports->errors, QStringList{reason});
        QCOMPARE(m_rig.reports->results.join(""), sending ? "Sending began" : "Receiving began");
        QCOMPARE(m_rig.logCount("[ ERR] " + reason.toUtf8()), 1);
        QCOMPARE(failed.count(), reason.startsWith("Fail to connect") ? 1 : 0);
        QTRY_VERIFY(!m_rig.worker->hasSocket());
    }
    // A character whose bytes arrive in two passes is shown once, whole; one left incomplete at a
    // change of display mode is dropped, and at the end of the run shown as U+FFFD.
    void splitCharacterShownWhole()
    {
        m_rig.port->setMode(SimDataPort::Mode::Echo);
        QDialog *recvDialog = open(false);
        QDialog *sendDialog = open(true);
        auto *area = child<QPlainTextEdit>(recvDialog, "DataTextarea");
        click(recvDialog, "RecvButton");
        QTRY_VERIFY(enabled(recvDialog, "StopButton"));
        QCOMPARE(text(recvDialog, "FileLabel"), "Nothing is being saved: Save To is empty.");
        auto sendPiece = [&](const QString &name, const QByteArray &bytes) {
            m_rig.model->setSendFileName(m_rig.file(name, bytes));
            const auto finished = m_rig.reports->results.count("Sending finished");
            click(sendDialog, "SendButton");
            QTRY_COMPARE_WITH_TIMEOUT(m_rig.reports->results.count("Sending finished"),
                                      finished + 1, kTransferTimeoutMs);
        };
        sendPiece("first.txt", "x\xE3");
        QTRY_COMPARE(area->toPlainText(), "x");
        QSignalSpy ticks(recvDialog->findChild<QTimer *>("progressTimer"), &QTimer::timeout);
        QTRY_VERIFY(ticks.count() >= 2); // refreshes come while the rest is on its way
        QCOMPARE(area->toPlainText(), "x");
        sendPiece("second.txt", "\x81\x82y\nz\xE3");
        QTRY_COMPARE(area->toPlainText(), "x\u3042y\nz");
        click(recvDialog, "ShowHexCheckbox"); // hex text does not end a character begun as text
        sendPiece("third.txt", "\x81");
        QTRY_COMPARE(area->toPlainText(), "x\u3042y\nz 81");
        click(recvDialog, "ShowHexCheckbox");
        sendPiece("fourth.txt", "\xE3");
        QTRY_COMPARE(text(recvDialog, "SizeTextarea"), "10"); // all of it received
        click(recvDialog, "StopButton");
        QTRY_COMPARE(area->toPlainText(), "x\u3042y\nz 81\ufffd");
    }
    void sendReachesDeviceAndFillsBar()
    {
        type("TCPSendPathTextarea", m_rig.file("send.bin", QByteArray(4194304, '\x01')));
        QDialog *dialog = open(true);
        auto *bar = child<QProgressBar>(dialog, "sendProgressBar");
        QSignalSpy barValues(bar, &QProgressBar::valueChanged);
        click(dialog, "SendButton");
        QTRY_VERIFY(!enabled(m_tab, "TCPSendOptionGroupBox"));
        QTRY_VERIFY_WITH_TIMEOUT(m_rig.reports->results.size() == 2, kTransferTimeoutMs);
        QVERIFY(enabled(m_tab, "TCPSendOptionGroupBox") && bar->value() == 4194304); // stays full
        QCOMPARE(barValues.last().at(0).toInt(), 4194304);
        QCOMPARE(text(dialog, "SizeTextarea") + text(dialog, "FileLabel"),
                 "4.1943Sending " + m_rig.dir.filePath("send.bin"));
        // The next run starts from zero, and its figures move within a second although the
        // device takes nothing.
        m_rig.port->setStuck(true);
        click(dialog, "SendButton");
        QCOMPARE(text(dialog, "SizeTextarea") + ' ' + text(dialog, "RateTextarea"), "0 0");
        QTRY_VERIFY(enabled(dialog, "StopButton"));
        QTRY_VERIFY_WITH_TIMEOUT(text(dialog, "TimeTextarea").toDouble() >= 0.5, 2000);
        click(dialog, "StopButton");
        QTRY_VERIFY_WITH_TIMEOUT(enabled(dialog, "SendButton"), 3000);
    }
    // Stop reaches the send loop within 100 ms although the device takes nothing; a second stop
    // reports nothing more, no time-out follows, and the unsent bytes are dropped, not waited for.
    void stopOnStuckDeviceReportsLossOnce()
    {
        m_rig.port->setStuck(true);
        type("TCPSendPathTextarea", m_rig.file("stopped.bin", QByteArray(32000000, 'x')));
        auto *dialog = static_cast<TCPSendInfoDlg *>(open(true));
        click(dialog, "SendButton");
        QTRY_VERIFY(enabled(dialog, "StopButton"));
        QTest::qWait(200); // the socket buffers fill up and the loop waits for the device
        QElapsedTimer timer;
        timer.start();
        click(dialog, "StopButton");
        QVERIFY(QTest::qWaitFor([this] { return m_rig.logCount("reserve to close socket"); }));
        QVERIFY2(timer.elapsed() < 100 && !enabled(dialog, "StopButton"),
                 qPrintable(QString::number(timer.elapsed())));
        dialog->stopSend();
        QCOMPARE(m_rig.logCount("[ WRN] Invalid send status: TS_STOPPING"), 1);
        QTRY_VERIFY_WITH_TIMEOUT(enabled(dialog, "SendButton"), 3000); // still stuck
        static const QRegularExpression loss(
            "^loss [1-9][0-9]* / 32000000 bytes \\([1-9][0-9.]*%\\)$");
        QVERIFY(m_rig.reports->errors.join('|').contains(loss));
        // A stopped run is not announced as finished; its loss agrees with its Send Size.
        QVERIFY(!m_rig.reports->results.contains("Sending finished"));
        const qint64 lost = m_rig.reports->errors.last().section(' ', 1, 1).toLongLong();
        QCOMPARE(QString::number((32000000 - lost) / 1e6, 'g', 6), text(dialog, "SizeTextarea"));
        QVERIFY(m_rig.port->totals().bytes < 32000000);
    }
    // Typing says nothing and touches no file; the name is checked once editing is finished.
    void pathCheckedWhenEditingFinished_data()
    {
        // clang-format off
        // reports: red | blue; %1: the path, %2: its folder
        columns<QByteArray, QString, QString>("field", "name", "reports");
        const QByteArray r("TCPRecvPathTextarea"), s("TCPSendPathTextarea");
        const QString ok = "|", cannotOpen = "File cannot open: %1 ";
        QTest::addRow("Save To: new file") << r << "new.bin" << ok;
        QTest::addRow("Save To: no folder") << r << "gone/n" << cannotOpen + "(the folder %2 does not exist)|";
        QTest::addRow("Save To: emptied") << r << "" << ok + "Save To is empty: received data will not be saved.";
        QTest::addRow("Send File: missing") << s << "n" << cannotOpen + "(No such file or directory)|";
        QTest::addRow("Send File: emptied") << s << QString() << "Send file is not chosen." + ok;
        // clang-format on
    }
    void pathCheckedWhenEditingFinished()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, name);
        QFETCH(QString, reports);
        QTemporaryDir folder;
        QVERIFY(QFile(folder.filePath("old.bin")).open(QIODevice::WriteOnly));
        const QString path = name.isEmpty() ? QString() : folder.filePath(name);
        type(field, path.isEmpty() ? "x" : path);
        if (path.isEmpty())
            QTest::keyClick(child(m_tab, field), Qt::Key_Backspace);
        QVERIFY(m_rig.reports->errors.isEmpty() && m_rig.reports->results.isEmpty());
        QTest::keyClick(child(m_tab, field), Qt::Key_Return);
        QTest::keyClick(child(m_tab, field), Qt::Key_Return); // checked once only
        QCOMPARE(m_rig.reports->errors.join(' ') + '|' + m_rig.reports->results.join(' '),
                 reports.contains("%1") ? reports.arg(path, folder.filePath("gone")) : reports);
        QCOMPARE(QDir(folder.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
                 QStringList{"old.bin"});
    }
    void openTakesRelativePath()
    {
        QDesktopServices::setUrlHandler("file", this, "openedInShell");
        type("TCPSendPathTextarea", "relative.bin");
        click(m_tab, "TCPSendPathOpenButton");
        QDesktopServices::unsetUrlHandler("file");
        QCOMPARE(m_opened,
                 QList<QUrl>{QUrl::fromLocalFile(QDir::current().filePath("relative.bin"))});
    }

private:
    template <typename T = QWidget> T *child(QWidget *parent, const char *name)
    {
        T *widget = parent->findChild<T *>(QLatin1String(name));
        return widget ? widget : (qFatal("no widget %s", name), nullptr);
    }
    bool enabled(QWidget *w, const char *name) { return child(w, name)->isEnabled(); }
    QString text(QWidget *w, const char *n) { return child(w, n)->property("text").toString(); }
    void click(QWidget *parent, const char *name)
    {
        auto *button = child<QAbstractButton>(parent, name);
        QVERIFY2(button->isEnabled(), name);
        // Near the left edge: a check box takes clicks on its box and label only.
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(6, button->height() / 2));
    }
    void type(const char *field, const QString &text)
    {
        auto *edit = child<QLineEdit>(m_tab, field);
        edit->setFocus();
        edit->clear();
        QTest::keyClicks(edit, text);
    }
    // The tab's buttons open the dialogs without blocking.
    QDialog *open(bool sending)
    {
        QTest::mouseClick(child(m_tab, sending ? "TCPSendDlgOpenButton" : "TCPRecvDlgOpenButton"),
                          Qt::LeftButton);
        QDialog *shown = sending ? (QDialog *)m_tab->sendDialog() : m_tab->recvDialog();
        return shown->isVisible() ? shown : nullptr;
    }

    TcpFixture m_rig;
    TCPTab *m_tab = nullptr;
    QList<QUrl> m_opened;
};

QTEST_MAIN(TestTcpDialogs)
#include "tst_tcpdialogs.moc"
