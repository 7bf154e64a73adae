// The output format of the TCP transfers: the format text (up to the first NUL) is parsed, the
// bytes after it are rendered as hex text in two chunks, and that text is decoded back.
#include "fuzzinput.h"
#include "tcp/hexlayout.h"
#include "tcp/hextextdecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto [format, bytes] = splitAtNul(fuzzBytes(data, size));
    const HexLayout layout = HexLayout::parse(QString::fromUtf8(format));
    (void)layout.format();

    // A stream split in two renders exactly as one block.
    qint64 whole = 0;
    const QByteArray once = layout.render(bytes, &whole, "\r\n");
    qint64 position = 0;
    const qsizetype half = bytes.size() / 2;
    const QByteArray split = layout.render(bytes.left(half), &position, "\r\n") +
                             layout.render(bytes.mid(half), &position, "\r\n");
    if (split != once || position != whole)
        __builtin_trap();
    (void)layout.bytesFitting(0, bytes.size(), 80, 2);

    HexTextDecoder decoder;
    QByteArray decoded;
    decoder.decode(once.constData(), once.size(), &decoded);
    decoder.decode(bytes.constData(), bytes.size(), &decoded);
    return 0;
}
