// Name and version of the program, as shown by the About dialog and the main window's product
// label.
#pragma once

#include <QString>
#include <QStringList>

// The product's fixed name; also the prefix that a first line of "version.txt" may carry.
inline constexpr char kProductName[] = "Mavix Utility";

// Two strings: the name and the version. The version comes from the first line of "version.txt"
// beside the executable, so that a build can be stamped without recompiling; it stays empty when
// the file is missing or unreadable. The file is read afresh on every call.
[[nodiscard]] QStringList productInformation();

// Rich text naming the product, with the version in a smaller size when there is one.
[[nodiscard]] QString productText();
