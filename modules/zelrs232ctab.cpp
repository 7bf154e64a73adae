#include "modules/zelrs232ctab.h"

#include "ui_zelrs232ctab.h"

ZELRS232CTab::ZELRS232CTab(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::ZELRS232CTab>())
{
    m_ui->setupUi(this);
}

ZELRS232CTab::~ZELRS232CTab() = default;
