#include "modules/commandhistory.h"

#include <QKeyEvent>
#include <QLineEdit>

CommandHistory::CommandHistory(QLineEdit *edit) : QObject(edit), m_edit(edit)
{
    edit->installEventFilter(this);
}

void CommandHistory::add(const QString &command)
{
    if (!command.isEmpty() && (m_entries.isEmpty() || m_entries.constLast() != command))
        m_entries << command;
    if (m_entries.size() > kMaxEntries)
        m_entries.removeFirst();
    m_at = m_entries.size();
    m_draft.clear();
}

bool CommandHistory::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_edit && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            step(key == Qt::Key_Up ? -1 : 1);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

void CommandHistory::step(int by)
{
    const qsizetype to = qBound(qsizetype(0), m_at + by, m_entries.size());
    if (to == m_at)
        return;
    if (m_at == m_entries.size())
        m_draft = m_edit->text();
    m_at = to;
    m_edit->setText(m_at == m_entries.size() ? m_draft : m_entries.at(m_at));
}
