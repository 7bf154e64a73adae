// Who may use the remote-control server: this computer (loopback) and the networks the user
// allowed at start-up. A value, so that a test can hand the server one without loopback.
#pragma once

#include <QCoreApplication>
#include <QHostAddress>
#include <QList>
#include <QPair>
#include <QString>

#include <optional>

class AllowRule
{
    Q_DECLARE_TR_FUNCTIONS(AllowRule)

public:
    using Network = QPair<QHostAddress, int>;

    // Loopback only: the rule until the user allows more.
    AllowRule() = default;

    // "192.168.1.0/24,10.0.0.5,fd00::/8": networks or single addresses, separated by commas.
    // Empty, or any malformed part, gives nothing.
    [[nodiscard]] static std::optional<AllowRule> parse(const QString &text);

    void setLoopbackAllowed(bool allowed) { m_loopback = allowed; }
    void addNetwork(const Network &network) { m_networks.append(network); }

    [[nodiscard]] bool allows(const QHostAddress &peer) const;
    // "loopback, 192.168.1.0/24" for the Server tab (the first word translated).
    [[nodiscard]] QString describe() const;

    // An IPv4 peer seen through the dual-stack socket as ::ffff:a.b.c.d becomes a.b.c.d.
    [[nodiscard]] static QHostAddress plain(const QHostAddress &address);

private:
    bool m_loopback = true;
    QList<Network> m_networks;
};
