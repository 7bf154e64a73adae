#include "cli/commandcontext.h"

#include "app/report.h"
#include "cli/exitcode.h"
#include "wren/wrenerror.h"

int CommandContext::accessFailed(const WrenError &error, const QString &timeoutText) const
{
    QString text = error.reason;
    if (error.code == WrenError::Timeout)
        text = timeoutText;
    else if (text.isEmpty() && error.code == WrenError::BusError)
        text = QCoreApplication::translate("WrenAgent", "WREN Recv, Bus Error occured");
    else if (text.isEmpty() && error.code == WrenError::ShortReply)
        text = QCoreApplication::translate("WrenAgent", "WREN Recv, lack of data packet");
    else if (text.isEmpty())
        text = tr("The device's reply is invalid");
    reportError(text);
    return ExitCode::forWrenError(error);
}

int CommandContext::refuse(const QString &text, int exitCode) const
{
    reportError(text);
    return exitCode;
}
