#include "server/servertab.h"

#include "ui_servertab.h"

ServerTab::ServerTab(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::ServerTab>())
{
    m_ui->setupUi(this);
}

ServerTab::~ServerTab() = default;
