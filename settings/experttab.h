// The Detail tab (expert mode): every device setting, read, validated, reset and written.
#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class ExpertTab;
}

class ExpertTab : public QWidget
{
    Q_OBJECT

public:
    explicit ExpertTab(QWidget *parent = nullptr);
    ~ExpertTab() override;

private:
    std::unique_ptr<Ui::ExpertTab> m_ui;
};
