// UTF-8 text that arrives in pieces, decoded as it comes: a character split between two pieces
// comes out whole with the second, once. Qt's stateful decoder does the work; alone (Qt 6.4) it
// drops what follows a held incomplete character when the next piece cannot continue it ("\xE3"
// then "ab" gives U+FFFD "b"), so such a character is given up first, as one U+FFFD. Every byte
// of the input appears, a byte that arrives as a BOM included.
#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringDecoder>

class Utf8PieceDecoder : private QStringDecoder
{
public:
    Utf8PieceDecoder();

    // The text of `piece`, after what the pieces before it left incomplete.
    [[nodiscard]] QString decode(QByteArrayView piece);
    // A character still incomplete at the end of the input, as U+FFFD; empty when none is held.
    [[nodiscard]] QString finish();
    // Forgets a held character, for input that starts over.
    void restart() { resetState(); }

private:
    [[nodiscard]] bool holdsCharacter() const { return state.remainingChars > 0; }
};
