#include "modules/textareafeed.h"

#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>
#include <QTimer>

namespace {

QString converted(Utf8PieceDecoder &decoder, const QByteArray &bytes, TextAreaFeed::Form form)
{
    switch (form) {
    case TextAreaFeed::Form::Hex:
        return QString::fromLatin1(bytes.toHex());
    case TextAreaFeed::Form::SpacedHex:
        return QString::fromLatin1(bytes.toHex(' '));
    case TextAreaFeed::Form::Text:
        break;
    }
    return decoder.decode(bytes);
}

} // namespace

void TextAreaFeed::limit(QTextDocument *document)
{
    document->setMaximumBlockCount(kMaxBlocks);
}

void TextAreaFeed::append(QTextEdit *area, const QByteArray &data, Form form)
{
    of(area)->enqueue(data, form);
}

void TextAreaFeed::append(QPlainTextEdit *area, const QByteArray &data, Form form)
{
    of(area)->enqueue(data, form);
}

TextAreaFeed::TextAreaFeed(QWidget *area) : QObject(area), m_area(area) {}

TextAreaFeed::~TextAreaFeed()
{
    qDeleteAll(m_queue);
}

TextAreaFeed *TextAreaFeed::of(QWidget *area)
{
    auto *feed = area->findChild<TextAreaFeed *>(QString(), Qt::FindDirectChildrenOnly);
    return feed ? feed : new TextAreaFeed(area);
}

void TextAreaFeed::enqueue(const QByteArray &data, Form form)
{
    if (!m_scheduled && data.size() <= kSliceBytes) {
        Utf8PieceDecoder decoder;
        appendSlice(converted(decoder, data, form));
        return;
    }
    auto *pending = new Pending;
    pending->data = data;
    pending->form = form;
    m_queue << pending;
    if (!m_scheduled)
        feedNext();
}

namespace {

// QTextEdit::append() renders text that looks like markup as markup; received bytes are text.
void appendAsPlainText(QTextEdit *edit, const QString &text)
{
    QTextCursor cursor(edit->document());
    cursor.movePosition(QTextCursor::End);
    if (!edit->document()->isEmpty())
        cursor.insertBlock();
    cursor.insertText(text);
}

} // namespace

void TextAreaFeed::appendSlice(const QString &slice)
{
    if (auto *plain = qobject_cast<QPlainTextEdit *>(m_area))
        plain->appendPlainText(slice);
    else if (auto *rich = qobject_cast<QTextEdit *>(m_area))
        appendAsPlainText(rich, slice);
}

// One slice now, the next one after the window has had its turn.
void TextAreaFeed::feedNext()
{
    m_scheduled = false;
    if (m_queue.isEmpty())
        return;
    Pending *pending = m_queue.first();
    const QByteArray slice = pending->data.mid(pending->at, kSliceBytes);
    pending->at += kSliceBytes;
    appendSlice(converted(pending->decoder, slice, pending->form));
    if (pending->at >= pending->data.size())
        delete m_queue.takeFirst();
    if (m_queue.isEmpty())
        return;
    m_scheduled = true;
    QTimer::singleShot(0, this, &TextAreaFeed::feedNext);
}
