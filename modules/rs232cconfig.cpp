#include "modules/rs232cconfig.h"

namespace {

using namespace Rs232c;

constexpr int kBaudShift = 4;
constexpr int kDataWidthShift = 2;
constexpr int kStopBitShift = 1;
constexpr quint8 kTwoBits = 0x03;
// Parity byte values up to this one all mean "None"; "Mark" (index 1) is 4.
constexpr int kParityNoneMax = 3;
constexpr quint8 kFlowAutoBit = 0x04;
constexpr quint8 kFlowConsiderBit = 0x02;
constexpr quint8 kWaitBit = 0x01;

int flowTypeOf(quint8 byte)
{
    if (!(byte & kFlowAutoBit))
        return Rs232cConnectorSetting::Manual;
    return (byte & kFlowConsiderBit) ? Rs232cConnectorSetting::AutoConsidering
                                     : Rs232cConnectorSetting::AutoIgnoring;
}

quint8 flowBitsOf(int flowType)
{
    switch (flowType) {
    case Rs232cConnectorSetting::AutoIgnoring:
        return kFlowAutoBit;
    case Rs232cConnectorSetting::AutoConsidering:
        return kFlowAutoBit | kFlowConsiderBit;
    default:
        return 0;
    }
}

} // namespace

bool Rs232cConfig::decode(const QByteArray &bytes)
{
    if (bytes.size() < kConfigSize)
        return false;
    const auto byte = [&bytes](int i) { return quint8(bytes[i]); };
    const int baudCode = byte(0) >> kBaudShift;
    baudIndex = baudCode == 0 ? kDefaultBaudIndex : baudCode - 1;
    dataWidthIndex = (byte(0) >> kDataWidthShift) & kTwoBits;
    stopBitIndex = (byte(0) >> kStopBitShift) & 1;
    parityIndex = byte(1) <= kParityNoneMax ? 0 : byte(1) - kParityNoneMax;

    for (int c = 0; c < kConnectorCount; ++c) {
        const quint8 own = byte(kConnectorConfigByte[size_t(c)]);
        Rs232cConnectorSetting &setting = connectors[size_t(c)];
        setting.flowType = flowTypeOf(own);
        setting.wait = own & kWaitBit;
        for (const LineBits &bits : kLineTable) {
            if (isOutput(bits.line, Connector(c)))
                setting.lines[size_t(bits.line)] = isOn(own, bits.outputBit);
        }
    }
    return true;
}

QByteArray Rs232cConfig::encode() const
{
    QByteArray bytes(kConfigSize, '\0');
    bytes[0] =
        char(((baudIndex + 1) << kBaudShift) | ((dataWidthIndex & kTwoBits) << kDataWidthShift) |
             ((stopBitIndex & 1) << kStopBitShift));
    bytes[1] = char(parityIndex == 0 ? 0 : parityIndex + kParityNoneMax);
    for (int c = 0; c < kConnectorCount; ++c) {
        const Rs232cConnectorSetting &setting = connectors[size_t(c)];
        quint8 own = flowBitsOf(setting.flowType) | (setting.wait ? kWaitBit : 0);
        for (const LineBits &bits : kLineTable) {
            if (isOutput(bits.line, Connector(c)) && !setting.lines[size_t(bits.line)])
                own |= quint8(1u << bits.outputBit);
        }
        bytes[kConnectorConfigByte[size_t(c)]] = char(own);
    }
    return bytes;
}

bool Rs232cConfig::decodeLineStates(const QByteArray &bytes)
{
    if (bytes.size() < kLineStateSize)
        return false;
    for (int c = 0; c < kConnectorCount; ++c) {
        for (const LineBits &bits : kLineTable)
            connectors[size_t(c)].lines[size_t(bits.line)] = isOn(quint8(bytes[c]), bits.stateBit);
    }
    return true;
}
