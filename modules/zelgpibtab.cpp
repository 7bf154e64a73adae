#include "modules/zelgpibtab.h"

#include "ui_zelgpibtab.h"

ZELGPIBTab::ZELGPIBTab(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::ZELGPIBTab>())
{
    m_ui->setupUi(this);
}

ZELGPIBTab::~ZELGPIBTab() = default;
