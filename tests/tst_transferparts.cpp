// The transfer worker's parts on their own: the recorder and the receive stream with real files
// (and /dev/full as the full disk), the display tail, the progress throttle, the text decoder of
// the display, and the connection against the emulator's data port on loopback.
#include "app/utf8piecedecoder.h"
#include "sim/simdataport.h"
#include "tcp/displaytail.h"
#include "tcp/progressthrottle.h"
#include "tcp/recvrecorder.h"
#include "tcp/recvstream.h"
#include "tcp/tcpconnection.h"
#include "tcp/tcpoutputoption.h"
#include "testtable.h"

#include <QtNetwork>
#include <QtTest>

class TestTransferParts : public QObject
{
    Q_OBJECT

private slots:
    // Pieces fed to the recorder, raw or as hex text; "|" splits the pieces, "w" writes out, "B" is
    // a 64 KiB block of 'x' handed over whole.
    void recorder_data()
    {
        // clang-format off
        columns<QString, QString, bool, QByteArray, qint64, bool>("file", "pieces", "hexText", "written", "saved", "ok");
        QTest::addRow("raw, kept until written out") << "r.bin" << "ab|c" << false << QByteArray() << qint64(0) << true;
        QTest::addRow("raw, written out") << "r.bin" << "ab|c|w" << false << QByteArray("abc") << qint64(3) << true;
        QTest::addRow("hex text across pieces") << "h.txt" << "abc|de|w" << true << QByteArray("6162-6364\r\n65") << qint64(13) << true;
        QTest::addRow("a large block alone goes out at once") << "r.bin" << "B" << false << QByteArray(65536, 'x') << qint64(65536) << true;
        QTest::addRow("a large block after gathered bytes waits") << "r.bin" << "ab|B" << false << QByteArray() << qint64(0) << true;
        QTest::addRow("full disk: the system's reason") << "/dev/full" << "abc|w" << false << QByteArray() << qint64(0) << false;
        // clang-format on
    }
    void recorder()
    {
        QFETCH(QString, file);
        QFETCH(QString, pieces);
        QTemporaryDir dir;
        const QString path = file.startsWith('/') ? file : dir.filePath(file);
        RecvRecorder recorder;
        QVERIFY(recorder.open(path, cell<bool>("hexText"), HexLayout::parse("2-2")));
        bool ok = true;
        for (const QString &piece : pieces.split('|')) {
            const QByteArray bytes = piece.toLatin1();
            if (piece == "B")
                ok = ok && recorder.add(QByteArray(65536, 'x'));
            else
                ok = ok && (piece == "w" ? recorder.writeOut() : recorder.add(bytes, bytes.size()));
        }
        QTEST(ok, "ok");
        QTEST(recorder.savedBytes(), "saved");
        QCOMPARE(recorder.errorString(), ok ? QString() : QString("No space left on device"));
        if (!file.startsWith('/')) {
            QFile written(path);
            QVERIFY(written.open(QIODevice::ReadOnly));
            QTEST(written.readAll(), "written");
        }
    }
    void recorderOpenFailure()
    {
        RecvRecorder recorder;
        QVERIFY(!recorder.open("/nonexistent/r.bin", false, HexLayout()));
        QCOMPARE(recorder.errorString(), QString("No such file or directory"));
    }
    // keep(size@position) pieces into a tail of 4 bytes, then what one take of at most maxSize
    // hands out and what the next take of everything does.
    void displayTail_data()
    {
        // clang-format off
        columns<QString, qint64, bool, QByteArray, QByteArray>("pieces", "maxSize", "hex", "first", "rest");
        QTest::addRow("fits") << "abc@0" << qint64(-1) << false << QByteArray("abc") << QByteArray();
        QTest::addRow("newest four kept") << "abcdef@0" << qint64(-1) << false << QByteArray("<2>cdef") << QByteArray();
        QTest::addRow("gap counted") << "ab@0|cd@5" << qint64(-1) << false << QByteArray("<5>cd") << QByteArray();
        QTest::addRow("in pieces") << "abcd@0" << qint64(2) << false << QByteArray("ab") << QByteArray("cd");
        QTest::addRow("mark waits for room") << "abcdef@0" << qint64(2) << false << QByteArray() << QByteArray("<2>cdef");
        QTest::addRow("hex lines") << "abcd@0" << qint64(-1) << true << QByteArray("6162-6364\n") << QByteArray();
        QTest::addRow("hex, whole bytes only") << "abc@0" << qint64(5) << true << QByteArray("6162") << QByteArray("-63");
        // clang-format on
    }
    void displayTail()
    {
        QFETCH(QString, pieces);
        QFETCH(bool, hex);
        DisplayTail tail(4);
        for (const QString &piece : pieces.split('|')) {
            const QByteArray bytes = piece.section('@', 0, 0).toLatin1();
            tail.keep(bytes.constData(), bytes.size(), piece.section('@', 1).toLongLong());
        }
        const HexLayout layout = hex ? HexLayout::parse("2-2") : HexLayout();
        const auto take = [&](qint64 maxSize) {
            const QByteArray mark = "<" + QByteArray::number(tail.skipped()) + ">";
            return tail.take(maxSize, layout, "\n", tail.skipped() ? mark : QByteArray());
        };
        QTEST(take(cell<qint64>("maxSize")), "first");
        QTEST(take(-1), "rest");
        QVERIFY(tail.isEmpty());
    }
    // Bytes read from a device into a run's file ("" none, /dev/full the full disk) and display.
    void recvStream_data()
    {
        // clang-format off
        columns<QString, bool, int, bool, QByteArray, QString, QByteArray>("file", "hexFile", "display", "ok", "written", "end", "shown");
        QTest::addRow("raw to the file, shown as text") << "r.bin" << false << 1 << true << QByteArray("abcde") << "5 bytes were saved to" << QByteArray("abcde");
        QTest::addRow("hex to the file, shown as hex") << "h.txt" << true << 2 << true << QByteArray("6162-6364\r\n65") << "13 bytes were saved to" << QByteArray("6162-6364\r\n65");
        QTest::addRow("display only") << "" << false << 1 << true << QByteArray() << "Nothing was saved (Save To is empty)." << QByteArray("abcde");
        QTest::addRow("nothing shown") << "r.bin" << false << 0 << true << QByteArray("abcde") << "5 bytes were saved to" << QByteArray();
        QTest::addRow("full disk") << "/dev/full" << false << 1 << false << QByteArray() << "Receive file cannot be written: /dev/full (No space left on device). 0 bytes were saved to /dev/full." << QByteArray("abcde");
        // clang-format on
    }
    void recvStream()
    {
        QFETCH(QString, file);
        QTemporaryDir dir;
        TransferRun run;
        run.fileName = file.isEmpty() || file.startsWith('/') ? file : dir.filePath(file);
        run.hexFile = cell<bool>("hexFile");
        run.layout = HexLayout::parse("2-2");
        run.displayMode = cell<int>("display");
        RecvStream stream;
        QSignalSpy progressed(&stream, &RecvStream::progressed);
        (void)stream.start(run);
        QVERIFY(stream.openFile());
        QBuffer device;
        device.setData("abcde");
        QVERIFY(device.open(QIODevice::ReadOnly));
        const bool ok = stream.readFrom(&device) && stream.closeFile(); // the file gets it at close
        QTEST(ok, "ok");
        QVERIFY(stream.savedText().startsWith(cell<QString>("end")) ||
                stream.writeFailureText() == cell<QString>("end"));
        QCOMPARE(progressed.value(0).value(0).toLongLong(), 5);
        QTEST(stream.take(-1), "shown");
        if (!file.isEmpty() && !file.startsWith('/')) {
            QFile written(run.fileName);
            QVERIFY(written.open(QIODevice::ReadOnly));
            QTEST(written.readAll(), "written");
        }
    }
    // The connection to a listening port and to a refused one; close() when done.
    void connection_data()
    {
        columns<bool, bool, QString>("listening", "opened", "error");
        QTest::addRow("device listening") << true << true << "";
        QTest::addRow("refused") << false << false << "(Connection refused)";
    }
    void connection()
    {
        SimDataPort device;
        quint16 port = device.start(QHostAddress::LocalHost, 0);
        if (!cell<bool>("listening")) {
            QTcpServer closed; // free a moment ago, closed again
            QVERIFY(closed.listen(QHostAddress::LocalHost));
            port = closed.serverPort();
        }
        TcpConnection connection;
        QCOMPARE(connection.exists(), false);
        QTEST(connection.open("127.0.0.1", port, 2000), "opened");
        QTEST(connection.errorString().section(QLatin1Char(' '), -2), "error");
        QVERIFY(connection.exists()); // a failed socket stays until it is closed
        QVERIFY(connection.close(false, 2000));
        QCOMPARE(connection.exists(), false);
        QCOMPARE(connection.close(false, 2000), false);
    }
    // UTF-8 pieces ("|" splits them, "!" starts over) decoded one by one, then what the end gives.
    void pieceDecoder_data()
    {
        // clang-format off
        columns<QByteArray, QString, QString>("pieces", "text", "end");
        QTest::addRow("split character whole, once") << QByteArray("x\xE3|\x81|\x82y") << "x\u3042y" << "";
        QTest::addRow("incomplete at the end") << QByteArray("z\xE3\x81") << "z" << "\ufffd";
        QTest::addRow("not continued: nothing after it lost") << QByteArray("\xE3|ab") << "\ufffdab" << "";
        QTest::addRow("not continued: a whole character follows") << QByteArray("\xC3|\xC3\xA9") << "\ufffd\u00e9" << "";
        QTest::addRow("starting over forgets a held character") << QByteArray("x\xE3|!|a") << "xa" << "";
        QTest::addRow("a BOM is shown") << QByteArray("\xEF\xBB|\xBF" "a") << QStringLiteral("\ufeffa") << "";
        // clang-format on
    }
    void pieceDecoder()
    {
        QFETCH(QByteArray, pieces);
        Utf8PieceDecoder decoder;
        QString text;
        for (const QByteArray &piece : pieces.split('|')) {
            if (piece == "!")
                decoder.restart();
            else
                text += decoder.decode(piece);
        }
        QTEST(text, "text");
        QTEST(decoder.finish(), "end");
    }
    // A long interval: only the first figure and forced ones go out, never one already sent.
    void throttle_data()
    {
        columns<QString, QString>("calls", "sent");
        QTest::addRow("first goes out") << "1"
                                        << "1";
        QTest::addRow("the next waits") << "1 2 3"
                                        << "1";
        QTest::addRow("forced goes out") << "1 2 3!"
                                         << "1 3";
        QTest::addRow("never twice") << "1 1! 2! 2!"
                                     << "1 2";
    }
    void throttle()
    {
        QFETCH(QString, calls);
        ProgressThrottle throttle(3600 * 1000);
        throttle.restart();
        QStringList sent;
        for (const QString &call : calls.split(' ')) {
            const qint64 value = call.chopped(call.endsWith('!') ? 1 : 0).toLongLong();
            if (throttle.take(value, call.endsWith('!')))
                sent << QString::number(value);
        }
        QTEST(sent.join(' '), "sent");
    }

private:
    template <typename T> static T cell(const char *column)
    {
        return *static_cast<T *>(QTest::qData(column, qMetaTypeId<T>()));
    }
};

QTEST_GUILESS_MAIN(TestTransferParts)
#include "tst_transferparts.moc"
