// The commands sent from a line edit, recalled with Up and Down as in a shell: Up steps back,
// Down forward and past the newest back to what was being typed.
#pragma once

#include <QObject>
#include <QStringList>

class QLineEdit;

class CommandHistory : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxEntries = 100;

    // Watches the edit's keys; owned by the edit.
    explicit CommandHistory(QLineEdit *edit);

    // A command repeated at once is kept once.
    void add(const QString &command);
    [[nodiscard]] QStringList entries() const { return m_entries; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void step(int by);

    QLineEdit *m_edit;
    QStringList m_entries;
    qsizetype m_at = 0; // m_entries.size() stands for the line being typed
    QString m_draft;
};
