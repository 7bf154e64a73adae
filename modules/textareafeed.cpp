#include "modules/textareafeed.h"

#include <QPlainTextEdit>
#include <QTextDocument>
#include <QTextEdit>
#include <QTimer>

void TextAreaFeed::limit(QTextDocument *document)
{
    document->setMaximumBlockCount(kMaxBlocks);
}

void TextAreaFeed::append(QTextEdit *area, const QString &text)
{
    of(area)->enqueue(text);
}

void TextAreaFeed::append(QPlainTextEdit *area, const QString &text)
{
    of(area)->enqueue(text);
}

TextAreaFeed::TextAreaFeed(QWidget *area) : QObject(area), m_area(area) {}

TextAreaFeed *TextAreaFeed::of(QWidget *area)
{
    auto *feed = area->findChild<TextAreaFeed *>(QString(), Qt::FindDirectChildrenOnly);
    return feed ? feed : new TextAreaFeed(area);
}

void TextAreaFeed::enqueue(const QString &text)
{
    if (!m_scheduled && text.size() <= kSliceChars) {
        appendSlice(text);
        return;
    }
    for (qsizetype at = 0; at < text.size() || at == 0; at += kSliceChars)
        m_queue << text.mid(at, kSliceChars);
    if (!m_scheduled)
        feedNext();
}

void TextAreaFeed::appendSlice(const QString &slice)
{
    if (auto *plain = qobject_cast<QPlainTextEdit *>(m_area))
        plain->appendPlainText(slice);
    else if (auto *rich = qobject_cast<QTextEdit *>(m_area))
        rich->append(slice);
}

// One slice now, the next one after the window has had its turn.
void TextAreaFeed::feedNext()
{
    m_scheduled = false;
    if (m_queue.isEmpty())
        return;
    appendSlice(m_queue.takeFirst());
    if (m_queue.isEmpty())
        return;
    m_scheduled = true;
    QTimer::singleShot(0, this, &TextAreaFeed::feedNext);
}
