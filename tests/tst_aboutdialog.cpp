// The product name and version read from version.txt beside the program at each opening of the
// About dialog. The test has a folder of its own: no other file lives there.
#include "ui/aboutdialog.h"

#include <QDir>
#include <QLabel>
#include <QTest>

class TestAboutDialog : public QObject
{
    Q_OBJECT

    const QString m_path = QCoreApplication::applicationDirPath() + "/version.txt";

private slots:
    void cleanup()
    {
        if (!QFile::remove(m_path))
            QDir().rmdir(m_path);
    }
    // The file's content ("folder": a folder in its place, "missing": none) and the version shown.
    void productText_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("version");
        QTest::addRow("no file") << QByteArray("missing") << "";
        QTest::addRow("folder") << QByteArray("folder") << "";
        QTest::addRow("name blank version")
            << QByteArray("Mavix Utility 1.2.3\n4.5.6\n") << "1.2.3";
        QTest::addRow("upper-case name glued") << QByteArray("MAVIX UTILITY2.0") << "2.0";
        QTest::addRow("trimmed") << QByteArray("  \tMavix Utility   3.4 beta \t\r\n") << "3.4 beta";
        QTest::addRow("another name kept") << QByteArray("Mavix Tool 1.0\n") << "Mavix Tool 1.0";
    }
    // Each row writes the file anew and opens a new dialog: the file is read at each opening.
    void productText()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, version);
        QFile file(m_path);
        if (content == "folder")
            QVERIFY(QDir().mkdir(m_path));
        else if (content != "missing")
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        const QString name = "<p><span style=\"font-size: 20px\">Mavix Utility";
        QCOMPARE(AboutDialog().findChild<QLabel *>("software_name_vesion")->text(),
                 version.isEmpty()
                     ? name + "</span></p>"
                     : name + " </span><span style=\"font-size: 13px\">" + version + "</span></p>");
    }
};

QTEST_MAIN(TestAboutDialog)
#include "tst_aboutdialog.moc"
