#include "sim/ownthread.h"

bool runOnOwnThread(QObject *object, QThread *thread, const QString &name,
                    const std::function<bool()> &listenHere)
{
    thread->setObjectName(name);
    thread->start();
    object->moveToThread(thread);
    bool listening = false;
    QMetaObject::invokeMethod(
        object, [&] { listening = listenHere(); }, Qt::BlockingQueuedConnection);
    return listening;
}

void leaveOwnThread(QObject *object, QThread *thread, const std::function<void()> &stopHere)
{
    if (!thread->isRunning()) {
        stopHere();
        return;
    }
    QThread *owner = QThread::currentThread();
    QMetaObject::invokeMethod(
        object,
        [&] {
            stopHere();
            object->moveToThread(owner);
        },
        Qt::BlockingQueuedConnection);
    thread->quit();
    thread->wait();
}
