// The About dialog built from its form: its objects and texts, the product name and version read
// from version.txt beside the program at each opening, Ok ending a modal run, and Qt's own About
// box.
#include "app/productinfo.h"
#include "ui/aboutdialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

enum class Place { Missing, File, Folder };

class TestAboutDialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase();
    void formHasItsObjects();
    void productText_data();
    void productText();
    void okButtonEndsModalRun();
    void licenseButtonShowsAboutQt();
};

namespace {

template <typename T> T *child(QObject &parent, const char *name)
{
    T *object = parent.findChild<T *>(QLatin1String(name));
    if (!object)
        qFatal("no object %s", name);
    return object;
}

// version.txt beside the program. The test has a folder of its own: no other file lives there.
QString versionFilePath()
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("version.txt"));
}

void removeVersionFile()
{
    QFile::remove(versionFilePath());
    QDir().rmdir(versionFilePath());
}

} // namespace

void TestAboutDialog::cleanupTestCase()
{
    removeVersionFile();
}

void TestAboutDialog::formHasItsObjects()
{
    AboutDialog dialog;
    QCOMPARE(dialog.objectName(), QStringLiteral("AboutDialog"));
    QCOMPARE(dialog.windowTitle(), QStringLiteral("About"));
    QVERIFY(!(dialog.windowFlags() & Qt::WindowContextHelpButtonHint));
    QVERIFY(child<QGridLayout>(dialog, "gridLayout"));
    QVERIFY(child<QLabel>(dialog, "ORXLogo")
                ->text()
                .contains(QStringLiteral("<img src=\":/logo/image/orxlogo.s.png\"")));
    QVERIFY(!QImage(QStringLiteral(":/logo/image/orxlogo.s.png")).isNull());
    QCOMPARE(child<QLabel>(dialog, "software_name_vesion")->font().family(),
             QStringLiteral("Arial"));
    QCOMPARE(child<QPushButton>(dialog, "LicenseButton")->text(),
             QStringLiteral("This Software uses Qt LGPL. About Qt ..."));
    auto *box = child<QDialogButtonBox>(dialog, "buttonBox");
    QCOMPARE(box->orientation(), Qt::Vertical);
    QCOMPARE(box->standardButtons(), QDialogButtonBox::Ok);
    QVERIFY(child<QLabel>(dialog, "HomepageLabel")->text().contains(QStringLiteral("<a href=")));

    QStringList texts;
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        texts << label->text();
    const QStringList heading = texts.filter(QStringLiteral("About Mavix Utility and versions"));
    QCOMPARE(heading.size(), 1);
    QVERIFY(heading.first().contains(QStringLiteral("font-size:14pt")));
}

void TestAboutDialog::productText_data()
{
    QTest::addColumn<Place>("place");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("version");
    const auto row = [](const char *name, Place place, const char *content, const char *version) {
        QTest::addRow("%s", name) << place << QByteArray(content) << QString::fromLatin1(version);
    };
    row("no version.txt shows the name alone", Place::Missing, "", "");
    row("a folder in its place shows the name alone", Place::Folder, "", "");
    row("empty file gives no version", Place::File, "", "");
    row("name blank version", Place::File, "Mavix Utility 1.2.3\n", "1.2.3");
    row("version alone", Place::File, "1.2.3\n", "1.2.3");
    row("lower-case name blank version", Place::File, "mavix utility 2.0\n", "2.0");
    row("upper-case name glued to the version", Place::File, "MAVIX UTILITY2.0", "2.0");
    row("empty first line gives no version", Place::File, "\nMavix Utility 1.2.3\n", "");
    row("blank first line gives no version", Place::File, " \t \n1.2.3\n", "");
    row("only the first line counts", Place::File,
        "Mavix Utility 1.2.3\nMavix Utility 9.9.9\n4.5.6\n", "1.2.3");
    row("white space trimmed around name and version", Place::File,
        "  \tMavix Utility   3.4 beta \t\r\n", "3.4 beta");
    row("no line feed at the end", Place::File, "Mavix Utility 1.0.0", "1.0.0");
    row("name without version gives no version", Place::File, "Mavix Utility\n", "");
    row("another name is kept whole", Place::File, "Mavix Tool 1.0\n", "Mavix Tool 1.0");
    row("name inside the line is kept", Place::File, "build 7 of Mavix Utility\n",
        "build 7 of Mavix Utility");
}

// Each row rewrites the file and opens a new dialog: the file is read afresh at each opening.
void TestAboutDialog::productText()
{
    QFETCH(Place, place);
    QFETCH(QByteArray, content);
    QFETCH(QString, version);
    removeVersionFile();
    QFile file(versionFilePath());
    if (place == Place::File)
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    if (place == Place::Folder)
        QVERIFY(QDir().mkdir(versionFilePath()));

    QCOMPARE(productInformation(), (QStringList{"Mavix Utility", version}));
    const QString expected =
        version.isEmpty()
            ? QStringLiteral("<p><span style=\"font-size: 20px\">Mavix Utility</span></p>")
            : QStringLiteral("<p><span style=\"font-size: 20px\">Mavix Utility </span>"
                             "<span style=\"font-size: 13px\">%1</span></p>")
                  .arg(version);
    QCOMPARE(::productText(), expected);
    AboutDialog dialog;
    QCOMPARE(child<QLabel>(dialog, "software_name_vesion")->text(), expected);
}

void TestAboutDialog::okButtonEndsModalRun()
{
    AboutDialog dialog;
    bool pressed = false;
    QTimer::singleShot(0, &dialog, [&] {
        if (QApplication::activeModalWidget() == &dialog) {
            auto *ok = child<QDialogButtonBox>(dialog, "buttonBox")->button(QDialogButtonBox::Ok);
            QTest::mouseClick(ok, Qt::LeftButton);
            pressed = true;
        }
    });
    QTimer::singleShot(5000, &dialog, &QDialog::reject); // ends the run should the press miss
    dialog.exec();
    QVERIFY(pressed);
    QVERIFY(!dialog.isVisible());
}

void TestAboutDialog::licenseButtonShowsAboutQt()
{
    AboutDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QString boxTitle;
    QTimer::singleShot(0, &dialog, [&boxTitle] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            boxTitle = box->windowTitle();
            box->button(QMessageBox::Ok)->click();
        }
    });
    QTimer::singleShot(5000, &dialog, [] { // ends the box should the answer above miss it
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            box->close();
    });

    QTest::mouseClick(child<QPushButton>(dialog, "LicenseButton"), Qt::LeftButton);

    QCOMPARE(boxTitle, QStringLiteral("About Qt"));
    QVERIFY(dialog.isVisible());
}

QTEST_MAIN(TestAboutDialog)
#include "tst_aboutdialog.moc"
