// Received data shown in a text area without freezing the window: long data goes in as blocks of
// a few thousand characters, converted and appended one block each turn of the event loop, and the
// area keeps only the latest blocks. Short data goes in at once, after whatever is still queued.
#pragma once

#include "app/utf8piecedecoder.h"

#include <QByteArray>
#include <QList>
#include <QObject>

class QPlainTextEdit;
class QTextDocument;
class QTextEdit;

class TextAreaFeed : public QObject
{
    Q_OBJECT

public:
    enum class Form { Text, Hex, SpacedHex }; // UTF-8; "0d0a"; "0d 0a"

    static constexpr int kSliceBytes = 2048;
    static constexpr int kMaxBlocks = 1024;

    // Caps the document at kMaxBlocks blocks; the oldest go first.
    static void limit(QTextDocument *document);
    static void append(QTextEdit *area, const QByteArray &data, Form form);
    static void append(QPlainTextEdit *area, const QByteArray &data, Form form);

private:
    struct Pending
    {
        QByteArray data;
        Form form = Form::Text;
        qsizetype at = 0;
        Utf8PieceDecoder decoder;
    };

    explicit TextAreaFeed(QWidget *area);
    ~TextAreaFeed() override;
    static TextAreaFeed *of(QWidget *area);
    void enqueue(const QByteArray &data, Form form);
    void appendSlice(const QString &slice);
    void feedNext();

    QWidget *m_area;
    QList<Pending *> m_queue;
    bool m_scheduled = false;
};
