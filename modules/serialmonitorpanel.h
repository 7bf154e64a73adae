// The ZEL-RS232C tab's Monitor page: both connectors watched at will, what arrives shown as it
// arrives (text or hex, with time stamps if asked) in a view that keeps a bounded number of lines,
// and a send line that takes escapes or hex. The watching itself is the serial bridge's.
#pragma once

#include "modules/monitortext.h"

#include <QObject>

namespace Ui {
class ZELRS232CTab;
}
class QTimer;
class SerialBridge;

class SerialMonitorPanel : public QObject
{
    Q_OBJECT

public:
    // Text is shown at most this often, so a fast stream costs the window little.
    static constexpr int kFlushIntervalMs = 50;
    // Text waiting for the view beyond this is dropped from the front, and the view says so.
    static constexpr qsizetype kMaxPendingChars = 256 * 1024;

    // The form is the tab's; the panel works on its Monitor page.
    SerialMonitorPanel(Ui::ZELRS232CTab *form, QObject *parent);

    void setBridge(SerialBridge *bridge);
    // Follows the bridge: buttons show which connectors are watched.
    void showState();

signals:
    void transmissionFailed();
    void transmissionSuccessed();

private:
    void toggle(Rs232c::Connector connector, bool on);
    void send();
    void take(Rs232c::Connector connector, const QByteArray &data);
    void flush();
    void clear();

    Ui::ZELRS232CTab *m_form;
    SerialBridge *m_bridge = nullptr;
    MonitorText m_text;
    QString m_pending;
    qsizetype m_droppedChars = 0;
    QTimer *m_flushTimer;
};
