// The ZEL-RS232C tab: the serial bridge module's settings, line states and data.
#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class ZELRS232CTab;
}

class ZELRS232CTab : public QWidget
{
    Q_OBJECT

public:
    explicit ZELRS232CTab(QWidget *parent = nullptr);
    ~ZELRS232CTab() override;

private:
    std::unique_ptr<Ui::ZELRS232CTab> m_ui;
};
