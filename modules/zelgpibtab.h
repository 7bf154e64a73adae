// The ZEL-GPIB tab: the GPIB bridge module's settings, bus commands and replies.
#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class ZELGPIBTab;
}

class ZELGPIBTab : public QWidget
{
    Q_OBJECT

public:
    explicit ZELGPIBTab(QWidget *parent = nullptr);
    ~ZELGPIBTab() override;

private:
    std::unique_ptr<Ui::ZELGPIBTab> m_ui;
};
