#include "tcp/threadstatus.h"

#include <QMetaEnum>

QString threadStatusText(int status)
{
    const char *key = QMetaEnum::fromType<THREAD_STATUS>().valueToKey(status);
    return QLatin1String(key ? key : "<UNKNOWN THREAD STATUS>");
}

void registerThreadMetaTypes()
{
    qRegisterMetaType<THREAD_STATUS>("THREAD_STATUS");
    qRegisterMetaType<TCPTHREAD_ERROR>("TCPTHREAD_ERROR");
}
