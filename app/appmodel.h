// The application model: the settings of both TCP transfer directions. One instance exists,
// created first at start-up; the tabs, the dialogs and the transfer worker reach it through
// instance().
#pragma once

#include "tcp/tcpoutputoption.h"

#include <QObject>
#include <QString>

class AppModel : public QObject
{
    Q_OBJECT

public:
    explicit AppModel(QObject *parent = nullptr);
    ~AppModel() override;
    AppModel(const AppModel &) = delete;
    AppModel &operator=(const AppModel &) = delete;

    // The registered instance, or null before it is built and after it is gone.
    [[nodiscard]] static AppModel *instance();

    // The options of the registered instance, or null without one: the one road by which the
    // transfer worker, the dialogs and the TCP tab reach them.
    [[nodiscard]] static TCPOutputOption *currentRecvOption();
    [[nodiscard]] static TCPOutputOption *currentSendOption();

    // Transfer options
    [[nodiscard]] TCPOutputOption *recvOption() { return &m_recvOption; }
    [[nodiscard]] TCPOutputOption *sendOption() { return &m_sendOption; }

    // Operations behind the TCP tab's widgets
    void setRecvUseHexFile(bool flag);
    void setSendUseHexFile(bool flag);
    void setRecvFileName(const QString &name);
    void setSendFileName(const QString &name);
    // Checks the chosen file and reports a problem; an empty receive file is said to save nothing.
    bool checkRecvFile();
    bool checkSendFile();
    bool setRecvFormat(const QString &text);
    bool setSendFormat(const QString &text);

private:
    TCPOutputOption m_recvOption{TCPOutputOption::kKindRecv};
    TCPOutputOption m_sendOption{TCPOutputOption::kKindSend};
};
