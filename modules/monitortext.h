// The running text of a serial monitor: what arrives at either connector, as text or hex, each line
// led by the connector that sent it (and the time its first byte arrived, when asked). Pieces are
// turned into text to append at the end, so a line that arrives in several pieces stays one line.
#pragma once

#include "app/utf8piecedecoder.h"
#include "modules/rs232clayout.h"

#include <QByteArray>
#include <QString>
#include <QTime>

#include <array>

class MonitorText
{
public:
    enum class Form { Text, Hex };

    static constexpr int kHexBytesPerLine = 16;
    // A stream without line ends still breaks here, so that the view's line cap bounds it.
    static constexpr int kMaxLineChars = 1024;

    void setForm(Form form);
    void setTimeStamps(bool on) { m_timeStamps = on; }
    // Starts on a new line, as after Clear.
    void restart();

    // The text to append for a piece that arrived at `at` from `from`.
    [[nodiscard]] QString add(Rs232c::Connector from, const QByteArray &bytes, QTime at);

private:
    void openLine(Rs232c::Connector from, QTime at, QString *out);
    void endLine() { m_lineFrom = -1; }
    void addChar(Rs232c::Connector from, QChar c, QTime at, QString *out);
    void addHexByte(Rs232c::Connector from, quint8 byte, QTime at, QString *out);

    Form m_form = Form::Text;
    bool m_timeStamps = false;
    int m_lineFrom = -1; // the connector of the open line; -1 when none is open
    int m_lineChars = 0;
    int m_lineBytes = 0;
    bool m_anyLine = false;
    std::array<bool, Rs232c::kConnectorCount> m_afterCr{};
    std::array<Utf8PieceDecoder, Rs232c::kConnectorCount> m_decoders;
};
