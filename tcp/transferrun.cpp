#include "tcp/transferrun.h"

#include "tcp/tcpoutputoption.h"

TransferRun TransferRun::of(const TCPOutputOption &option, const QString &host, quint16 port)
{
    return {
        option.fileName(), option.useHexFile(), option.layout(), option.displayMode(), host, port};
}
