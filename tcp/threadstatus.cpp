#include "tcp/threadstatus.h"

namespace {

// The error enum shares the status enum's unknown text on purpose.
const char kUnknownStatusText[] = "<UNKNOWN THREAD STATUS>";

} // namespace

QString threadStatusText(int status)
{
    switch (status) {
    case TS_STOP:
        return QStringLiteral("TS_STOP");
    case TS_STARTING:
        return QStringLiteral("TS_STARTING");
    case TS_RUN:
        return QStringLiteral("TS_RUN");
    case TS_STOPPING:
        return QStringLiteral("TS_STOPPING");
    default:
        return QLatin1String(kUnknownStatusText);
    }
}

QString tcpThreadErrorText(int error)
{
    switch (error) {
    case TTE_CONNECT_ERROR:
        return QStringLiteral("TTE_CONNECT_ERROR");
    case TTE_SEND_ERROR:
        return QStringLiteral("TTE_SEND_ERROR");
    case TTE_RECV_ERROR:
        return QStringLiteral("TTE_RECV_ERROR");
    default:
        return QLatin1String(kUnknownStatusText);
    }
}

void registerThreadMetaTypes()
{
    qRegisterMetaType<THREAD_STATUS>("THREAD_STATUS");
    qRegisterMetaType<TCPTHREAD_ERROR>("TCPTHREAD_ERROR");
}
