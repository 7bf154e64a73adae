// Entry point of mavix, the command-line tool: no window, no display; the same agent, settings
// record and transfer worker as the GUI.
#include "app/eventdispatcher.h"
#include "cli/commandline.h"
#include "settings/mavixsetting.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace {

void loadTranslations(QCoreApplication &app)
{
    auto *translator = new QTranslator(&app);
    if (translator->load(QStringLiteral(":/MavixUtilityApp_") + QLocale::system().name(), QString(),
                         QString(), QString()))
        QCoreApplication::installTranslator(translator);
    // Qt's own texts (the option parser's errors) in the same language.
    auto *qtTranslator = new QTranslator(&app);
    if (qtTranslator->load(QLocale::system(), QStringLiteral("qtbase"), QStringLiteral("_"),
                           QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(qtTranslator);
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("mavix"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MAVIX_VERSION));
    loadTranslations(app);
    return CommandLine().run(QCoreApplication::arguments());
}
