#include "ui/aboutdialog.h"

#include "app/productinfo.h"
#include "ui_aboutdialog.h"

#include <QAbstractButton>
#include <QApplication>

AboutDialog::AboutDialog(QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::AboutDialog>())
{
    m_ui->setupUi(this);
    setWindowFlags(windowFlags() & ~Qt::WindowContextHelpButtonHint);
    m_ui->software_name_vesion->setText(productText());
}

AboutDialog::~AboutDialog() = default;

void AboutDialog::on_LicenseButton_clicked()
{
    QApplication::aboutQt();
}

void AboutDialog::on_buttonBox_clicked(QAbstractButton *)
{
    close();
}
