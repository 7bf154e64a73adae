#include "app/appmodel.h"

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

bool AppModel::checkRecvFile()
{
    return m_recvOption.checkFile();
}

bool AppModel::checkSendFile()
{
    return m_sendOption.checkFile();
}

bool AppModel::setRecvFormat(const QString &text)
{
    return m_recvOption.setFormat(text);
}

bool AppModel::setSendFormat(const QString &text)
{
    return m_sendOption.setFormat(text);
}
