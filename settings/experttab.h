// The Detail tab (expert mode): every field of the device's settings record, read, validated,
// reset to the factory values and written through the General tab's sequences.
#pragma once

#include "settings/generaltab.h"

#include <QList>

#include <memory>

class QLineEdit;

namespace Ui {
class ExpertTab;
}

class ExpertTab : public GeneralTab
{
    Q_OBJECT

public:
    explicit ExpertTab(QWidget *parent = nullptr);
    ~ExpertTab() override;

public slots:
    // Shows the factory values; nothing reaches the device until the user writes.
    void resetDeviceInformation() override;
    void applyTargetSettingChange(MavixSetting setting) override;

protected:
    void showSetting(const MavixSetting &setting) override;
    [[nodiscard]] std::optional<MavixSetting> recordFromFields(const MavixSetting &base) override;

private:
    [[nodiscard]] QList<QLineEdit *> settingFields() const;

    std::unique_ptr<Ui::ExpertTab> m_ui;
};
