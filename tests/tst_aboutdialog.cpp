// The product name and version read from version.txt beside the program at each opening of the
// About dialog.
#include "app/productinfo.h"
#include "ui/aboutdialog.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>

class TestAboutDialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase() { removeVersionFile(); }
    void productText_data();
    void productText();

private:
    // The test has a folder of its own: no other file lives there.
    static QString versionFilePath()
    {
        return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("version.txt"));
    }
    static void removeVersionFile()
    {
        QFile::remove(versionFilePath());
        QDir().rmdir(versionFilePath());
    }
};

// The file's content ("folder": a folder in its place, "missing": none) and the version shown.
void TestAboutDialog::productText_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("version");
    QTest::addRow("no file") << QByteArray("missing") << "";
    QTest::addRow("folder") << QByteArray("folder") << "";
    QTest::addRow("empty file") << QByteArray() << "";
    QTest::addRow("name blank version") << QByteArray("Mavix Utility 1.2.3\n") << "1.2.3";
    QTest::addRow("upper-case name glued") << QByteArray("MAVIX UTILITY2.0") << "2.0";
    QTest::addRow("first line only") << QByteArray("Mavix Utility 1.2.3\n4.5.6\n") << "1.2.3";
    QTest::addRow("trimmed") << QByteArray("  \tMavix Utility   3.4 beta \t\r\n") << "3.4 beta";
    QTest::addRow("another name kept") << QByteArray("Mavix Tool 1.0\n") << "Mavix Tool 1.0";
}

// Each row rewrites the file and opens a new dialog: the file is read afresh at each opening.
void TestAboutDialog::productText()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, version);
    removeVersionFile();
    if (content == "folder") {
        QVERIFY(QDir().mkdir(versionFilePath()));
    } else if (content != "missing") {
        QFile file(versionFilePath());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    const QString expected =
        version.isEmpty()
            ? QStringLiteral("<p><span style=\"font-size: 20px\">Mavix Utility</span></p>")
            : QStringLiteral("<p><span style=\"font-size: 20px\">Mavix Utility </span>"
                             "<span style=\"font-size: 13px\">%1</span></p>")
                  .arg(version);
    AboutDialog dialog;
    QCOMPARE(dialog.findChild<QLabel *>("software_name_vesion")->text(), expected);
}

QTEST_MAIN(TestAboutDialog)
#include "tst_aboutdialog.moc"
