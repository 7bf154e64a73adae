// The command-line options of server mode besides its port: "-uiallow:NET[,NET...]" lets the
// named networks in besides this computer, "-uiroot:DIR" names the folder of the files that
// read and write may use.
#pragma once

#include "server/allowrule.h"

#include <QString>
#include <QStringList>

#include <functional>

struct ServerOptions
{
    AllowRule allow;
    QString folder; // empty: the working directory
};

// Reads the arguments after the program name. A malformed value calls `warning` with the text to
// show and is ignored: the server then stays closed to other computers, or on the working
// directory.
[[nodiscard]] ServerOptions parseServerArguments(const QStringList &arguments,
                                                 const std::function<void(QString)> &warning);
