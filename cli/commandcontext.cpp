#include "cli/commandcontext.h"

#include "app/report.h"
#include "cli/exitcode.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

int CommandContext::accessFailed(const WrenError &error, const QString &timeoutText) const
{
    reportWrenError(error, timeoutText);
    return ExitCode::forWrenError(error);
}

int CommandContext::refuse(const QString &text, int exitCode) const
{
    reportError(text);
    return exitCode;
}
