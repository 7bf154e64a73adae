// Status and error values of the TCP transfer worker. They travel in queued signals between the
// worker thread and the dialogs, so both are registered meta-types under their own names.
#pragma once

#include <QMetaType>
#include <QString>

enum THREAD_STATUS {
    TS_STOP = 0,
    TS_STARTING = 1,
    TS_RUN = 2,
    TS_STOPPING = 3,
};

enum TCPTHREAD_ERROR {
    TTE_CONNECT_ERROR = 0,
    TTE_SEND_ERROR = 1,
    TTE_RECV_ERROR = 2,
};

Q_DECLARE_METATYPE(THREAD_STATUS)
Q_DECLARE_METATYPE(TCPTHREAD_ERROR)

// Text form used in log lines and warnings.
[[nodiscard]] QString threadStatusText(int status);

// Registers both enums as "THREAD_STATUS" and "TCPTHREAD_ERROR"; safe to call more than once.
void registerThreadMetaTypes();
