// Moving an emulator server onto a thread of its own and back, so that a test or benchmark may
// block while the server keeps serving.
#pragma once

#include <QObject>
#include <QThread>

#include <functional>

// Starts `thread`, moves `object` (which must have no parent) onto it and runs `listenHere` there;
// false when it did not listen (the caller then stops it).
bool runOnOwnThread(QObject *object, QThread *thread, const QString &name,
                    const std::function<bool()> &listenHere);
// Runs `stopHere` on the object's thread, brings the object back to the calling thread and ends
// the thread; without a running thread it only runs `stopHere`.
void leaveOwnThread(QObject *object, QThread *thread, const std::function<void()> &stopHere);
