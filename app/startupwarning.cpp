#include "app/startupwarning.h"

#include <QCoreApplication>
#include <QMessageBox>

void showInvalidPortWarning(const QString &value)
{
    // Shown before the main window exists: no parent and the (still empty) error title.
    QMessageBox::warning(
        nullptr, QString(),
        QCoreApplication::translate("Startup", "Server mode, uiport is invalid") +
            QCoreApplication::translate("Startup", ": \"%1\" is not a port number from 0 to 65535")
                .arg(value));
}

void showStartupWarning(const QString &text)
{
    QMessageBox::warning(nullptr, QString(), text);
}
