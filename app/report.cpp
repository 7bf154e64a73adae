#include "app/report.h"

#include "app/log.h"

#include <QMetaObject>
#include <QMutex>

#include <atomic>

namespace {

std::atomic<QObject *> g_target{nullptr};

void emitOnTarget(const char *signal, const QString &text)
{
    // Invoked directly, the signal is emitted on the calling thread; the window's own connection
    // carries it to the GUI thread when the caller is the transfer worker.
    if (QObject *window = g_target.load())
        QMetaObject::invokeMethod(window, signal, Qt::DirectConnection, Q_ARG(QString, text));
}

} // namespace

void reportResult(const QString &text)
{
    LOG_INFO_MSG(text);
    emitOnTarget("showResult", text);
}

void reportError(const QString &text)
{
    LOG_ERROR(text);
    emitOnTarget("showError", text);
}

void setReportTarget(QObject *window)
{
    g_target = window;
}

QObject *reportTarget()
{
    return g_target.load();
}
