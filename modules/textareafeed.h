// Received data shown in a text area without freezing the window: a long text goes in as blocks
// of a few thousand characters, one block each turn of the event loop, and the area keeps only the
// latest blocks. A short text goes in at once, after whatever is still queued.
#pragma once

#include <QObject>
#include <QStringList>

class QPlainTextEdit;
class QTextDocument;
class QTextEdit;

class TextAreaFeed : public QObject
{
    Q_OBJECT

public:
    static constexpr int kSliceChars = 4096;
    static constexpr int kMaxBlocks = 1024;

    // Caps the document at kMaxBlocks blocks; the oldest go first.
    static void limit(QTextDocument *document);
    static void append(QTextEdit *area, const QString &text);
    static void append(QPlainTextEdit *area, const QString &text);

private:
    explicit TextAreaFeed(QWidget *area);
    static TextAreaFeed *of(QWidget *area);
    void enqueue(const QString &text);
    void appendSlice(const QString &slice);
    void feedNext();

    QWidget *m_area;
    QStringList m_queue;
    bool m_scheduled = false;
};
