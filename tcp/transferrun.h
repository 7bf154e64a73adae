// What one transfer run works with, taken once when the run starts: the file, whether it is hex
// text, the layout of that text, how received bytes are shown, and the device's data port.
#pragma once

#include "tcp/hexlayout.h"

#include <QString>

class TCPOutputOption;

struct TransferRun
{
    QString fileName;
    bool hexFile = false;
    HexLayout layout;
    int displayMode = 0; // TCPOutputOption::kDisplay*
    QString host;
    quint16 port = 0;

    // The option's settings as they stand now, aimed at `host` and `port`.
    [[nodiscard]] static TransferRun of(const TCPOutputOption &option, const QString &host,
                                        quint16 port);
};
