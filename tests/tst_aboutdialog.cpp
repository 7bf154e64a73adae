#include "app/productinfo.h"
#include "ui/aboutdialog.h"
#include "versionfileguard.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <memory>

class TestAboutDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void formHasItsObjects();
    void showsProductTextReadAtEachOpening();
    void okButtonClosesTheDialog();
    void okButtonEndsModalRun();
    void licenseButtonShowsAboutQt();

private:
    std::unique_ptr<VersionFileGuard> m_versionFile;
};

namespace {

template <typename T> T *child(QObject &parent, const char *name)
{
    return parent.findChild<T *>(QLatin1String(name));
}

QPushButton *okButton(AboutDialog &dialog)
{
    auto *box = child<QDialogButtonBox>(dialog, "buttonBox");
    return box ? box->button(QDialogButtonBox::Ok) : nullptr;
}

} // namespace

void TestAboutDialog::initTestCase()
{
    m_versionFile = std::make_unique<VersionFileGuard>();
}

void TestAboutDialog::cleanupTestCase()
{
    m_versionFile.reset();
}

void TestAboutDialog::formHasItsObjects()
{
    AboutDialog dialog;
    QCOMPARE(dialog.objectName(), QStringLiteral("AboutDialog"));
    QCOMPARE(dialog.windowTitle(), QStringLiteral("About"));
    QVERIFY(!(dialog.windowFlags() & Qt::WindowContextHelpButtonHint));
    QVERIFY(child<QGridLayout>(dialog, "gridLayout"));

    auto *logo = child<QLabel>(dialog, "ORXLogo");
    QVERIFY(logo);
    QVERIFY(logo->text().contains(QStringLiteral("<img src=\":/logo/image/orxlogo.s.png\"")));

    auto *product = child<QLabel>(dialog, "software_name_vesion");
    QVERIFY(product);
    QCOMPARE(product->font().family(), QStringLiteral("Arial"));

    auto *license = child<QPushButton>(dialog, "LicenseButton");
    QVERIFY(license);
    QCOMPARE(license->text(), QStringLiteral("This Software uses Qt LGPL. About Qt ..."));

    auto *box = child<QDialogButtonBox>(dialog, "buttonBox");
    QVERIFY(box);
    QCOMPARE(box->orientation(), Qt::Vertical);
    QCOMPARE(box->buttons().size(), 1);
    QVERIFY(okButton(dialog));

    auto *homepage = child<QLabel>(dialog, "HomepageLabel");
    QVERIFY(homepage);
    QVERIFY(homepage->text().contains(QStringLiteral("<a href=")));

    const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
    const auto heading = std::find_if(labels.cbegin(), labels.cend(), [](const QLabel *label) {
        return label->text().contains(QStringLiteral("About Mavix Utility and versions"));
    });
    QVERIFY(heading != labels.cend());
    QVERIFY((*heading)->text().contains(QStringLiteral("font-size:14pt")));
}

void TestAboutDialog::showsProductTextReadAtEachOpening()
{
    QVERIFY(m_versionFile->write("Mavix Utility 9.8.7\n"));
    {
        AboutDialog dialog;
        auto *product = child<QLabel>(dialog, "software_name_vesion");
        QCOMPARE(product->text(), productText());
        QVERIFY(product->text().contains(QStringLiteral(">9.8.7</span>")));
    }

    m_versionFile->removeAny();
    AboutDialog dialog;
    QCOMPARE(child<QLabel>(dialog, "software_name_vesion")->text(),
             QStringLiteral("<p><span style=\"font-size: 20px\">Mavix Utility</span></p>"));
}

void TestAboutDialog::okButtonClosesTheDialog()
{
    AboutDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QTest::mouseClick(okButton(dialog), Qt::LeftButton);
    QTRY_VERIFY(!dialog.isVisible());
}

void TestAboutDialog::okButtonEndsModalRun()
{
    AboutDialog dialog;
    bool pressed = false;
    QTimer::singleShot(0, &dialog, [&] {
        if (QApplication::activeModalWidget() == &dialog) {
            QTest::mouseClick(okButton(dialog), Qt::LeftButton);
            pressed = true;
        }
    });
    // Should the dialog not have come up as the modal one, the run still ends.
    QTimer::singleShot(5000, &dialog, &QDialog::reject);
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
    QTimer::singleShot(0, this, [&boxTitle] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        boxTitle = box->windowTitle();
        box->button(QMessageBox::Ok)->click();
    });
    // Ends the box should the answer above have missed it.
    QTimer::singleShot(5000, &dialog, [] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            box->close();
    });
    QTest::mouseClick(child<QPushButton>(dialog, "LicenseButton"), Qt::LeftButton);

    QCOMPARE(boxTitle, QStringLiteral("About Qt"));
    QVERIFY(dialog.isVisible());
}

QTEST_MAIN(TestAboutDialog)
#include "tst_aboutdialog.moc"
