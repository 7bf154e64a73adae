#include "app/qtmessages.h"

namespace {

QtMessageHandler nextHandler = nullptr;

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!isDroppedQtMessage(message) && nextHandler)
        nextHandler(type, context, message);
}

} // namespace

bool isDroppedQtMessage(const QString &message)
{
    return message.trimmed().startsWith(QLatin1String("OpenType support missing for "));
}

void installQtMessageHandler(QtMessageHandler toLog)
{
    const QtMessageHandler previous = qInstallMessageHandler(handleMessage);
    nextHandler = toLog ? toLog : previous;
}
