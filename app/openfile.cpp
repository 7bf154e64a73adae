#include "app/openfile.h"

#include "app/report.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>

void openFileInShell(const QString &path)
{
    if (path.isEmpty()) {
        reportError(QCoreApplication::translate("OpenFile", "Set file name"));
        return;
    }
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        reportError(QCoreApplication::translate("OpenFile", "File cannot open"));
}
