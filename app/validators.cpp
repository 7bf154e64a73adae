#include "app/validators.h"

#include <QHostAddress>
#include <QStringList>

namespace {

// Converted as a signed number first, so that "-1" is refused rather than wrapped.
bool inRange(const QString &text, int base, qulonglong max)
{
    bool ok = false;
    const qlonglong value = text.toLongLong(&ok, base);
    return ok && value >= 0 && qulonglong(value) <= max;
}

} // namespace

bool isValidPort(const QString &text)
{
    return inRange(text, 10, 65535);
}

bool isValidIPAddress(const QString &text)
{
    QHostAddress address;
    return address.setAddress(text);
}

bool isValidDataLength(const QString &text)
{
    return inRange(text, 10, 255);
}

bool isValidRegisterAddress(const QString &text)
{
    return inRange(text, 16, 0xFFFFFFFFull);
}

bool isValidDisconnectTimeout(const QString &text)
{
    return inRange(text, 10, 16677125);
}

bool isValidMACAddress(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    if (parts.size() != 6)
        return false;
    for (const QString &part : parts) {
        if (!inRange(part, 16, 255))
            return false;
    }
    return true;
}
