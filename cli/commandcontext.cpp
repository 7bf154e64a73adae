#include "cli/commandcontext.h"

#include "app/report.h"
#include "cli/exitcode.h"
#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

#include <QCommandLineParser>

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

bool CommandContext::maxLength(qint64 *length) const
{
    *length = 0;
    if (!parser->isSet(QStringLiteral("max")))
        return true;
    bool ok = false;
    *length = parser->value(QStringLiteral("max")).toLongLong(&ok);
    if (ok && *length >= 1)
        return true;
    refuse(tr("--max must be a whole number of bytes from 1, not %1")
               .arg(parser->value(QStringLiteral("max"))),
           0);
    return false;
}
