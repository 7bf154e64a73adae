#include "wren/wrenreport.h"

#include "app/report.h"
#include "wren/wrenerror.h"

#include <QCoreApplication>

QString wrenErrorText(const WrenError &error, const QString &timeoutMessage)
{
    if (error.code != WrenError::Timeout)
        return error.reason.isEmpty()
                   ? QCoreApplication::translate("WrenAgent", "WREN Recv, bad reply")
                   : error.reason;
    if (error.reason.isEmpty())
        return timeoutMessage;
    return QCoreApplication::translate("WrenAgent", "%1 (%2)").arg(timeoutMessage, error.reason);
}

void reportWrenError(const WrenError &error, const QString &timeoutMessage)
{
    reportError(wrenErrorText(error, timeoutMessage));
}

QString givenUpText()
{
    return QCoreApplication::translate("WrenAgent", "The wait for the reply was given up");
}
