#include "tcp/threadstatus.h"

namespace {

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

void registerThreadMetaTypes()
{
    qRegisterMetaType<THREAD_STATUS>("THREAD_STATUS");
    qRegisterMetaType<TCPTHREAD_ERROR>("TCPTHREAD_ERROR");
}
