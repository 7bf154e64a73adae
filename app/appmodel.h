// The application model: the settings of both TCP transfer directions. One instance exists,
// created first at start-up and handed to the Data(TCP) tab and its dialogs; instance() serves
// the top level only.
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
