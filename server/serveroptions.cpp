#include "server/serveroptions.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace {

constexpr char kAllow[] = "-uiallow:";
constexpr char kRoot[] = "-uiroot:";

} // namespace

ServerOptions parseServerArguments(const QStringList &arguments,
                                   const std::function<void(QString)> &warning)
{
    ServerOptions options;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument.startsWith(QLatin1String(kAllow))) {
            const std::optional<AllowRule> rule =
                AllowRule::parse(argument.mid(int(sizeof kAllow) - 1));
            if (rule)
                options.allow = *rule;
            else
                warning(QCoreApplication::translate(
                    "Startup", "Server mode, uiallow is invalid: give addresses or networks "
                               "such as 192.168.1.0/24,10.0.0.5"));
        } else if (argument.startsWith(QLatin1String(kRoot))) {
            const QString folder = argument.mid(int(sizeof kRoot) - 1);
            if (!folder.isEmpty() && QFileInfo(folder).isDir())
                options.folder = folder;
            else
                warning(QCoreApplication::translate("Startup",
                                                    "Server mode, uiroot is not a folder: %1")
                            .arg(folder));
        }
    }
    return options;
}
