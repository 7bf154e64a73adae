// Target host names for the front ends that take them (the command-line tool, Python).
#pragma once

#include <QString>

// A host name becomes the first address it resolves to, IPv4 first; an address, or text only the
// target checks can judge, stays as it is. Empty with *error set when the name does not resolve.
[[nodiscard]] QString lookUpHost(const QString &host, QString *error);
