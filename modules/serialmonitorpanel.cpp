#include "modules/serialmonitorpanel.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "modules/sendline.h"
#include "modules/serialbridge.h"
#include "modules/textareafeed.h"
#include "ui_zelrs232ctab.h"

#include <QFontDatabase>
#include <QScrollBar>
#include <QTextCursor>
#include <QTimer>

using Rs232c::Connector;

SerialMonitorPanel::SerialMonitorPanel(Ui::ZELRS232CTab *form, QObject *parent)
    : QObject(parent), m_form(form), m_flushTimer(new QTimer(this))
{
    QPlainTextEdit *area = m_form->ZELRS232cMonitorTextarea;
    area->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    TextAreaFeed::limit(area->document());
    m_flushTimer->setSingleShot(true);
    m_flushTimer->setInterval(kFlushIntervalMs);
    connect(m_flushTimer, &QTimer::timeout, this, &SerialMonitorPanel::flush);

    connect(m_form->ZELRS232cMonitorDTEButton, &QPushButton::clicked, this,
            [this](bool on) { toggle(Connector::Dte, on); });
    connect(m_form->ZELRS232cMonitorDCEButton, &QPushButton::clicked, this,
            [this](bool on) { toggle(Connector::Dce, on); });
    connect(m_form->ZELRS232cMonitorHexCheckBox, &QCheckBox::toggled, this, [this](bool hex) {
        m_text.setForm(hex ? MonitorText::Form::Hex : MonitorText::Form::Text);
    });
    connect(m_form->ZELRS232cMonitorTimeStampCheckBox, &QCheckBox::toggled, this,
            [this](bool on) { m_text.setTimeStamps(on); });
    connect(m_form->ZELRS232cMonitorClearButton, &QPushButton::clicked, this,
            &SerialMonitorPanel::clear);
    connect(m_form->ZELRS232cMonitorSendButton, &QPushButton::clicked, this,
            &SerialMonitorPanel::send);
    connect(m_form->ZELRS232cMonitorSendLineEdit, &QLineEdit::returnPressed, this,
            &SerialMonitorPanel::send);
}

void SerialMonitorPanel::setBridge(SerialBridge *bridge)
{
    m_bridge = bridge;
    connect(m_bridge, &SerialBridge::monitored, this, &SerialMonitorPanel::take);
    connect(m_bridge, &SerialBridge::monitorEnded, this, [](Connector connector) {
        reportError(
            tr("ZEL-RS232C %1 monitor stopped: the device closed the connection")
                .arg(connector == Connector::Dte ? QLatin1String("DTE") : QLatin1String("DCE")));
    });
    showState();
}

void SerialMonitorPanel::showState()
{
    const auto show = [this](QPushButton *button, Connector connector) {
        const QSignalBlocker blocker(button);
        button->setChecked(m_bridge && m_bridge->isMonitored(connector));
    };
    show(m_form->ZELRS232cMonitorDTEButton, Connector::Dte);
    show(m_form->ZELRS232cMonitorDCEButton, Connector::Dce);
}

void SerialMonitorPanel::toggle(Connector connector, bool on)
{
    // One device operation at a time: a click while another waits changes nothing.
    if (!m_bridge || m_bridge->gate()->isBusy()) {
        showState();
        return;
    }
    if (!on) {
        m_bridge->stopMonitor(connector);
        return;
    }
    if (m_bridge->startMonitor(connector))
        emit transmissionSuccessed();
    else
        emit transmissionFailed();
    showState();
}

void SerialMonitorPanel::send()
{
    if (!m_bridge || m_bridge->gate()->isBusy())
        return;
    const bool hex = m_form->ZELRS232cMonitorSendFormComboBox->currentIndex() == 1;
    const SendLine::Parsed line = SendLine::parse(m_form->ZELRS232cMonitorSendLineEdit->text(),
                                                  hex ? SendLine::Form::Hex : SendLine::Form::Text);
    if (!line.error.isEmpty()) {
        reportError(line.error);
        return;
    }
    const auto connector = Connector(m_form->ZELRS232cMonitorSendConnectorComboBox->currentIndex());
    // The line connects by itself where nothing is connected yet.
    const bool ready =
        line.bytes.isEmpty() || m_bridge->isConnected(connector) || m_bridge->connectTo(connector);
    const bool sent = ready && m_bridge->send(connector, line.bytes);
    if (sent)
        emit transmissionSuccessed();
    else
        emit transmissionFailed();
}

void SerialMonitorPanel::take(Connector connector, const QByteArray &data)
{
    m_pending += m_text.add(connector, data, QTime::currentTime());
    if (m_pending.size() > kMaxPendingChars) {
        const qsizetype excess = m_pending.size() - kMaxPendingChars;
        m_pending.remove(0, excess);
        m_droppedChars += excess;
    }
    if (!m_flushTimer->isActive())
        m_flushTimer->start();
}

void SerialMonitorPanel::flush()
{
    QPlainTextEdit *area = m_form->ZELRS232cMonitorTextarea;
    QScrollBar *bar = area->verticalScrollBar();
    const bool atEnd = bar->value() == bar->maximum();
    QTextCursor cursor(area->document());
    cursor.movePosition(QTextCursor::End);
    if (m_droppedChars > 0) {
        cursor.insertText(
            tr("\n[%1 characters skipped: they came faster than shown]\n").arg(m_droppedChars));
        m_droppedChars = 0;
    }
    cursor.insertText(m_pending);
    m_pending.clear();
    // Following the end only when the user has not scrolled back to read.
    if (atEnd)
        bar->setValue(bar->maximum());
}

void SerialMonitorPanel::clear()
{
    m_form->ZELRS232cMonitorTextarea->clear();
    m_pending.clear();
    m_droppedChars = 0;
    m_text.restart();
}
