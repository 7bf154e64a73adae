// The Server tab (server mode): the remote-control service and its log.
#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class ServerTab;
}

class ServerTab : public QWidget
{
    Q_OBJECT

public:
    explicit ServerTab(QWidget *parent = nullptr);
    ~ServerTab() override;

private:
    std::unique_ptr<Ui::ServerTab> m_ui;
};
