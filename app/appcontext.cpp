#include "app/appcontext.h"

#include "app/appmodel.h"
#include "app/devicetarget.h"
#include "app/log.h"
#include "tcp/tcpthread.h"
#include "ui/mainwindow.h"

#include <QDeadlineTimer>
#include <QThread>

AppContext::AppContext(bool expert, bool serverMode, int uiPort, bool noTranslation,
                       QWidget *parent, const QString &presetTarget)
{
    m_model = new AppModel;
    m_target = new DeviceTarget;
    m_thread = new QThread;
    m_thread->start(QThread::InheritPriority);
    m_worker = new TCPThread(m_thread);
    m_mainWindow = new MainWindow(expert, serverMode, uiPort, noTranslation, parent, presetTarget,
                                  {m_model, m_worker, m_target});
}

AppContext::~AppContext()
{
    LOG_INFO_MSG("application is closing");
    stopTransfers();
    waitForSocketClose();
    m_thread->quit();
    m_thread->wait();
    delete m_mainWindow;
    delete m_worker;
    delete m_thread;
    delete m_model;
    delete m_target;
    LOG_INFO_MSG("application closed");
}

void AppContext::stopTransfers()
{
    if (!m_worker->hasSocket())
        return;
    if (m_worker->sendStatus() == TS_RUN)
        m_worker->stopSending();
    if (m_worker->recvStatus() == TS_RUN)
        m_worker->stopReceiving();
}

// The worker closes its socket on its own thread; this thread only watches, for ten seconds at
// most, and reports at loops 1, 2, 4, 8, ... so that a stuck close leaves a short trail in the log.
void AppContext::waitForSocketClose()
{
    const QDeadlineTimer deadline(kSocketCloseWaitMs);
    qint64 loop = 1;
    qint64 nextReport = 1;
    while (m_worker->hasSocket()) {
        if (loop == nextReport) {
            LOGF_INFO("waiting for tcp socket close [loop:%lld]", loop);
            nextReport *= 2;
        }
        if (deadline.hasExpired()) {
            LOGF_ERROR("canceled waiting for tcp socket close [timeout:%dms, loop:%lld]",
                       kSocketCloseWaitMs, loop);
            return;
        }
        ++loop;
        QThread::msleep(kSocketClosePollMs);
    }
}
