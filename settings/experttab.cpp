#include "settings/experttab.h"

#include "ui_experttab.h"

ExpertTab::ExpertTab(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::ExpertTab>())
{
    m_ui->setupUi(this);
}

ExpertTab::~ExpertTab() = default;
