#include "server/allowrule.h"

#include <QStringList>

std::optional<AllowRule> AllowRule::parse(const QString &text)
{
    AllowRule rule;
    const QStringList parts = text.split(QLatin1Char(','));
    for (const QString &part : parts) {
        const QString trimmed = part.trimmed();
        // parseSubnet() also takes "10.1" and "10.0.0.5/" as networks; a typed network must be
        // exact, so both halves are checked on their own.
        const QStringList halves = trimmed.split(QLatin1Char('/'));
        const QHostAddress address(halves.value(0));
        // "10.1" or "167772161" would name an address other than the one meant.
        const bool dotted = halves.value(0).count(QLatin1Char('.')) == 3;
        if (address.isNull() || halves.size() > 2 || !address.scopeId().isEmpty() ||
            (address.protocol() == QAbstractSocket::IPv4Protocol && !dotted))
            return std::nullopt;
        const int width = address.protocol() == QAbstractSocket::IPv4Protocol ? 32 : 128;
        int prefix = width;
        if (halves.size() == 2) {
            bool ok = false;
            prefix = halves.at(1).toInt(&ok, 10);
            if (!ok || prefix < 0 || prefix > width || halves.at(1).contains(QLatin1Char('+')))
                return std::nullopt;
        }
        rule.addNetwork({plain(address), prefix});
    }
    return rule;
}

QHostAddress AllowRule::plain(const QHostAddress &address)
{
    bool isV4 = false;
    const quint32 v4 = address.toIPv4Address(&isV4);
    return isV4 ? QHostAddress(v4) : address;
}

bool AllowRule::allows(const QHostAddress &peer) const
{
    const QHostAddress address = plain(peer);
    if (m_loopback && address.isLoopback())
        return true;
    for (const Network &network : m_networks) {
        if (address.isInSubnet(network))
            return true;
    }
    return false;
}

QString AllowRule::describe() const
{
    QStringList parts;
    if (m_loopback)
        parts << tr("loopback");
    for (const Network &network : m_networks) {
        const int width = network.first.protocol() == QAbstractSocket::IPv4Protocol ? 32 : 128;
        parts << (network.second == width
                      ? network.first.toString()
                      : QStringLiteral("%1/%2").arg(network.first.toString()).arg(network.second));
    }
    return parts.join(QStringLiteral(", "));
}
