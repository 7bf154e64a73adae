#include "app/appmodel.h"

#include "app/report.h"

#include <atomic>

namespace {

std::atomic<AppModel *> g_instance{nullptr};

} // namespace

AppModel::AppModel(QObject *parent) : QObject(parent)
{
    g_instance = this;
    m_recvOption.setDisplayMode(TCPOutputOption::kDisplayText);
    m_sendOption.setDisplayMode(TCPOutputOption::kDisplayHex);
}

AppModel::~AppModel()
{
    AppModel *self = this;
    g_instance.compare_exchange_strong(self, nullptr);
}

AppModel *AppModel::instance()
{
    return g_instance.load();
}

void AppModel::setRecvUseHexFile(bool flag)
{
    m_recvOption.setUseHexFile(flag);
}

void AppModel::setSendUseHexFile(bool flag)
{
    m_sendOption.setUseHexFile(flag);
}

void AppModel::setRecvFileName(const QString &name)
{
    m_recvOption.setFileName(name);
}

void AppModel::setSendFileName(const QString &name)
{
    m_sendOption.setFileName(name);
}

namespace {

bool reported(const TCPOutputOption::FileCheck &check)
{
    if (check.usable && !check.message.isEmpty())
        reportResult(check.message);
    else if (!check.usable)
        reportError(check.message);
    return check.usable;
}

bool reported(const std::optional<QString> &refusal)
{
    if (refusal)
        reportError(*refusal);
    return !refusal;
}

} // namespace

bool AppModel::checkRecvFile()
{
    return reported(m_recvOption.checkFile());
}

bool AppModel::checkSendFile()
{
    return reported(m_sendOption.checkFile());
}

bool AppModel::setRecvFormat(const QString &text)
{
    return reported(m_recvOption.setFormat(text));
}

bool AppModel::setSendFormat(const QString &text)
{
    return reported(m_sendOption.setFormat(text));
}
