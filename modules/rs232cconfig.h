// The ZEL-RS232C module's settings as the tool holds them: the serial format shared by both
// connectors and one record per connector, with the coding of the four configuration bytes and of
// the two line-state bytes.
#pragma once

#include "modules/rs232clayout.h"

#include <QByteArray>

#include <array>

struct Rs232cConnectorSetting
{
    enum FlowType : int { Manual = 0, AutoIgnoring = 1, AutoConsidering = 2 };

    quint32 tcpPort = 0;
    int flowType = Manual;
    bool wait = false;
    std::array<bool, Rs232c::kLineCount> lines{}; // indexed by Rs232c::Line
};

struct Rs232cConfig
{
    // "9,600": what a baud code of 0 stands for.
    static constexpr int kDefaultBaudIndex = 6;

    // Item indexes of the form's boxes; decode() may leave values beyond the items, which the
    // form then ignores.
    int baudIndex = kDefaultBaudIndex;
    int dataWidthIndex = 0;
    int stopBitIndex = 0;
    int parityIndex = 0;
    std::array<Rs232cConnectorSetting, Rs232c::kConnectorCount> connectors;

    [[nodiscard]] Rs232cConnectorSetting &connector(Rs232c::Connector c)
    {
        return connectors[size_t(c)];
    }

    // Configuration bytes: false (nothing changed) when fewer than four are given.
    bool decode(const QByteArray &bytes);
    [[nodiscard]] QByteArray encode() const;
    // Line-state bytes, active low: false (nothing changed) when fewer than two are given.
    bool decodeLineStates(const QByteArray &bytes);
};
