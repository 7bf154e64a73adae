#include "app/hostlookup.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QHostInfo>
#include <QList>
#include <QRegularExpression>

#include <algorithm>

QString lookUpHost(const QString &host, QString *error)
{
    static const QRegularExpression addressLike(QStringLiteral("^[0-9.]+$|:"));
    if (host.isEmpty() || !QHostAddress(host).isNull() || host.contains(addressLike))
        return host;
    const QHostInfo info = QHostInfo::fromName(host);
    QList<QHostAddress> addresses = info.addresses();
    std::stable_sort(addresses.begin(), addresses.end(),
                     [](const QHostAddress &a, const QHostAddress &b) {
                         return a.protocol() == QAbstractSocket::IPv4Protocol &&
                                b.protocol() != QAbstractSocket::IPv4Protocol;
                     });
    if (addresses.isEmpty()) {
        *error = QCoreApplication::translate("CommandLine", "Cannot find the host %1: %2")
                     .arg(host, info.errorString());
        return QString();
    }
    return addresses.first().toString();
}
