// The About box: the product's name and version, the maker's logo and a way to Qt's own About box.
#pragma once
// clazy:excludeall=connect-by-name

#include <QDialog>

#include <memory>

class QAbstractButton;

namespace Ui {
class AboutDialog;
}

class AboutDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AboutDialog(QWidget *parent = nullptr);
    ~AboutDialog() override;

private slots:
    // Connected by name when the form is built: their names are part of the dialog's design.
    void on_LicenseButton_clicked();
    void on_buttonBox_clicked(QAbstractButton *button);

private:
    std::unique_ptr<Ui::AboutDialog> m_ui;
};
