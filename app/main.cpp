// Entry point of Mavix Utility: reads the command line, opens the log when asked, builds the
// program, runs the event loop and tears everything down in order.
#include "app/appcontext.h"
#include "app/eventdispatcher.h"
#include "app/log.h"
#include "app/qtmessages.h"
#include "app/report.h"
#include "app/signalwatcher.h"
#include "app/startupoptions.h"
#include "app/startupwarning.h"
#include "server/serveroptions.h"
#include "server/servertab.h"
#include "ui/mainwindow.h"

#include <QApplication>

namespace {

// Routes Qt's own diagnostics into the log while logging is on. Critical and fatal messages are
// logged as warnings: the log has no separate level for them.
void messageHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QByteArray text = message.toLocal8Bit();
    const char *file = context.file ? context.file : "";
    const char *function = context.function ? context.function : "";
    const auto line = static_cast<unsigned>(context.line);
    switch (type) {
    case QtDebugMsg:
        LOGF_DEBUG("QtMessage: Debug: %s (%s:%u, %s)", text.constData(), file, line, function);
        break;
    case QtInfoMsg:
        LOGF_INFO("QtMessage: Info: %s (%s:%u, %s)", text.constData(), file, line, function);
        break;
    case QtWarningMsg:
        LOGF_WARN("QtMessage: Warning: %s (%s:%u, %s)", text.constData(), file, line, function);
        break;
    case QtCriticalMsg:
        LOGF_WARN("QtMessage: Critical: %s (%s:%u, %s)", text.constData(), file, line, function);
        break;
    case QtFatalMsg:
        LOGF_WARN("QtMessage: Fatal: %s (%s:%u, %s)", text.constData(), file, line, function);
        break;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QApplication app(argc, argv);
    const StartupOptions options = parseStartupArguments(app.arguments(), showInvalidPortWarning);
    const ServerOptions serverOptions = parseServerArguments(app.arguments(), showStartupWarning);
    // A log that cannot be opened is said once the window can show it.
    const QString logProblem = openRequestedLog(options, QStringLiteral("MavixUtility.log"));
    installQtMessageHandler(options.loggingRequested ? messageHandler : nullptr);
    LOG_INFO_MSG("Application start.");

    SignalWatcher termination;
    QObject::connect(&termination, &SignalWatcher::signalReceived, &app,
                     [] { QCoreApplication::exit(0); });

    int exitCode = 0;
    {
        AppContext context(options.expert, options.serverMode, options.uiPort, false, nullptr,
                           options.target);
        // Clients are taken only once the event loop runs, with these already in force.
        if (ServerTab *server = context.mainWindow()->serverTab()) {
            server->setAllowRule(serverOptions.allow);
            (void)server->setFileFolder(serverOptions.folder);
        }
        context.mainWindow()->show();
        if (!logProblem.isEmpty())
            reportError(logProblem);
        exitCode = app.exec();
    }

    LOGF_INFO("Application finished: code[%d]", exitCode);
    logClose();
    return exitCode;
}
