#include "app/productinfo.h"
#include "versionfileguard.h"

#include <QDir>
#include <QTest>

#include <memory>

class TestProductInfo : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void versionFile_data();
    void versionFile();
    void fileIsReadAfreshEachTime();

private:
    std::unique_ptr<VersionFileGuard> m_versionFile;
};

namespace {

enum class Place { Missing, File, Folder };

QString expectedText(const QString &version)
{
    if (version.isEmpty())
        return QStringLiteral("<p><span style=\"font-size: 20px\">Mavix Utility</span></p>");
    return QStringLiteral("<p><span style=\"font-size: 20px\">Mavix Utility </span>"
                          "<span style=\"font-size: 13px\">%1</span></p>")
        .arg(version);
}

} // namespace

void TestProductInfo::initTestCase()
{
    m_versionFile = std::make_unique<VersionFileGuard>();
}

void TestProductInfo::cleanupTestCase()
{
    m_versionFile.reset();
}

void TestProductInfo::versionFile_data()
{
    QTest::addColumn<Place>("place");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("version");

    QTest::addRow("no version.txt shows the name alone") << Place::Missing << QByteArray() << "";
    QTest::addRow("a folder in its place shows the name alone")
        << Place::Folder << QByteArray() << "";
    QTest::addRow("empty file gives no version") << Place::File << QByteArray() << "";
    QTest::addRow("name blank version")
        << Place::File << QByteArray("Mavix Utility 1.2.3\n") << "1.2.3";
    QTest::addRow("version alone") << Place::File << QByteArray("1.2.3\n") << "1.2.3";
    QTest::addRow("lower-case name blank version")
        << Place::File << QByteArray("mavix utility 2.0\n") << "2.0";
    QTest::addRow("upper-case name glued to the version")
        << Place::File << QByteArray("MAVIX UTILITY2.0") << "2.0";
    QTest::addRow("empty first line gives no version")
        << Place::File << QByteArray("\nMavix Utility 1.2.3\n") << "";
    QTest::addRow("blank first line gives no version")
        << Place::File << QByteArray(" \t \n1.2.3\n") << "";
    QTest::addRow("only the first line counts")
        << Place::File << QByteArray("Mavix Utility 1.2.3\nMavix Utility 9.9.9\n4.5.6\n")
        << "1.2.3";
    QTest::addRow("white space trimmed around name and version")
        << Place::File << QByteArray("  \tMavix Utility   3.4 beta \t\r\n") << "3.4 beta";
    QTest::addRow("no line feed at the end")
        << Place::File << QByteArray("Mavix Utility 1.0.0") << "1.0.0";
    QTest::addRow("name without version gives no version")
        << Place::File << QByteArray("Mavix Utility\n") << "";
    QTest::addRow("another name is kept whole")
        << Place::File << QByteArray("Mavix Tool 1.0\n") << "Mavix Tool 1.0";
    QTest::addRow("name inside the line is kept")
        << Place::File << QByteArray("build 7 of Mavix Utility\n") << "build 7 of Mavix Utility";
}

void TestProductInfo::versionFile()
{
    QFETCH(Place, place);
    QFETCH(QByteArray, content);
    QFETCH(QString, version);

    m_versionFile->removeAny();
    if (place == Place::File)
        QVERIFY(m_versionFile->write(content));
    if (place == Place::Folder)
        QVERIFY(QDir().mkdir(m_versionFile->path()));

    const QStringList information = productInformation();
    QCOMPARE(information.size(), 2);
    QCOMPARE(information.at(0), QStringLiteral("Mavix Utility"));
    QCOMPARE(information.at(1), version);
    QCOMPARE(productText(), expectedText(version));
}

void TestProductInfo::fileIsReadAfreshEachTime()
{
    QVERIFY(m_versionFile->write("Mavix Utility 1.0\n"));
    QCOMPARE(productInformation().at(1), QStringLiteral("1.0"));
    QVERIFY(m_versionFile->write("Mavix Utility 1.1\n"));
    QCOMPARE(productInformation().at(1), QStringLiteral("1.1"));
    m_versionFile->removeAny();
    QCOMPARE(productInformation().at(1), QString());
}

QTEST_GUILESS_MAIN(TestProductInfo)
#include "tst_productinfo.moc"
