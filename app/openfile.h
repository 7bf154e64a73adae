// Opens a file in the program the desktop associates with it.
#pragma once

#include <QString>

void openFileInShell(const QString &path);
