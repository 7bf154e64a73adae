#include "python/pythonruntime.h"

#include "app/eventdispatcher.h"
#include "settings/mavixsetting.h"
#include "tcp/threadstatus.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

namespace {

// The application object keeps a reference to its arguments for its whole life.
int g_argc = 1;
char g_programName[] = "mavix";
char *g_argv[] = {g_programName, nullptr};

void loadTranslation()
{
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(QStringLiteral(":/MavixUtilityApp_") + QLocale::system().name(), QString(),
                         QString(), QString()))
        QCoreApplication::installTranslator(translator);
}

} // namespace

void PythonRuntime::ensureApplication()
{
    if (QCoreApplication::instance())
        return;
    preferPlainEventDispatcher();
    // Lives until the process ends: the interpreter may hold devices until its very end.
    new QCoreApplication(g_argc, g_argv);
    loadTranslation();
    MavixSetting::registerMetaType();
    registerThreadMetaTypes();
}
