// Status and error values of the TCP transfer worker. They travel in queued signals between the
// worker thread and the dialogs, so both are also registered under their own names.
#pragma once

#include <QObject>
#include <QString>

namespace TcpTransfer {
Q_NAMESPACE

enum THREAD_STATUS {
    TS_STOP = 0,
    TS_STARTING = 1,
    TS_RUN = 2,
    TS_STOPPING = 3,
};
Q_ENUM_NS(THREAD_STATUS)

enum TCPTHREAD_ERROR {
    TTE_CONNECT_ERROR = 0,
    TTE_SEND_ERROR = 1,
    TTE_RECV_ERROR = 2,
};
Q_ENUM_NS(TCPTHREAD_ERROR)

} // namespace TcpTransfer

// The names the worker's signals carry, and the values used unqualified everywhere.
using THREAD_STATUS = TcpTransfer::THREAD_STATUS;
using TCPTHREAD_ERROR = TcpTransfer::TCPTHREAD_ERROR;
inline constexpr THREAD_STATUS TS_STOP = TcpTransfer::TS_STOP;
inline constexpr THREAD_STATUS TS_STARTING = TcpTransfer::TS_STARTING;
inline constexpr THREAD_STATUS TS_RUN = TcpTransfer::TS_RUN;
inline constexpr THREAD_STATUS TS_STOPPING = TcpTransfer::TS_STOPPING;
inline constexpr TCPTHREAD_ERROR TTE_CONNECT_ERROR = TcpTransfer::TTE_CONNECT_ERROR;
inline constexpr TCPTHREAD_ERROR TTE_SEND_ERROR = TcpTransfer::TTE_SEND_ERROR;
inline constexpr TCPTHREAD_ERROR TTE_RECV_ERROR = TcpTransfer::TTE_RECV_ERROR;

// Text form used in log lines and warnings.
[[nodiscard]] QString threadStatusText(int status);

// Registers both enums as "THREAD_STATUS" and "TCPTHREAD_ERROR"; safe to call more than once.
void registerThreadMetaTypes();
