#include "app/startupwarning.h"

#include <QCoreApplication>
#include <QMessageBox>

void showInvalidPortWarning()
{
    // Shown before the main window exists: no parent and the (still empty) error title.
    QMessageBox::warning(nullptr, QString(),
                         QCoreApplication::translate("Startup", "Server mode, uiport is invalid"));
}

void showStartupWarning(const QString &text)
{
    QMessageBox::warning(nullptr, QString(), text);
}
