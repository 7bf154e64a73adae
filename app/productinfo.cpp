#include "app/productinfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>

namespace {

constexpr char kVersionFileName[] = "version.txt";

// The first line of the version file, which may repeat the product name in any case before the
// version itself.
QString versionFromFirstLine(QString line)
{
    const QString name = QString::fromLatin1(kProductName);
    line = line.trimmed();
    if (line.startsWith(name, Qt::CaseInsensitive))
        line.remove(0, name.size());
    return line.trimmed();
}

} // namespace

QStringList productInformation()
{
    QStringList information{QString::fromLatin1(kProductName), QString()};

    QFile file(QDir(QCoreApplication::applicationDirPath()).filePath(kVersionFileName));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return information;

    QTextStream stream(&file);
    information[1] = versionFromFirstLine(stream.readLine());
    file.close();
    return information;
}

QString productText()
{
    const QStringList information = productInformation();
    const QString &name = information.at(0);
    const QString &version = information.at(1);
    if (version.isEmpty())
        return QStringLiteral("<p><span style=\"font-size: 20px\">%1</span></p>").arg(name);
    return QStringLiteral("<p><span style=\"font-size: 20px\">%1 </span><span style=\"font-size: "
                          "13px\">%2</span></p>")
        .arg(name, version);
}
