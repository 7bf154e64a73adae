#include "app/utf8piecedecoder.h"

namespace {

bool isContinuationByte(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

} // namespace

Utf8PieceDecoder::Utf8PieceDecoder() : QStringDecoder(Utf8, Flag::ConvertInitialBom) {}

QString Utf8PieceDecoder::decode(QByteArrayView piece)
{
    QString text = piece.isEmpty() || isContinuationByte(piece.front()) ? QString() : finish();
    const QString decoded = QStringDecoder::decode(piece);
    return text + decoded;
}

QString Utf8PieceDecoder::finish()
{
    if (!holdsCharacter())
        return QString();
    resetState();
    return QString(QChar::ReplacementCharacter);
}
