#include "modules/gpibmodulesetting.h"

#include "modules/gpibunit.h"

#include <QtEndian>

std::optional<GpibModuleSetting> GpibModuleSetting::decode(const QByteArray &block)
{
    if (block.size() < kSize || quint8(block[0]) > GpibUnit::kMaxAddress)
        return std::nullopt;
    GpibModuleSetting setting;
    setting.controllerAddress = quint8(block[0]);
    setting.timeout10Ms = qFromBigEndian<quint16>(block.constData() + 2);
    return setting;
}

QByteArray GpibModuleSetting::encode() const
{
    QByteArray block(kSize, '\0');
    block[0] = char(controllerAddress);
    qToBigEndian<quint16>(timeout10Ms, block.data() + 2);
    return block;
}

std::optional<quint32> GpibModuleSetting::parseDecimal(const QString &text, quint32 max)
{
    bool ok = false;
    const quint32 value = text.toUInt(&ok, 10);
    if (!ok || value > max)
        return std::nullopt;
    return value;
}
