#include "sim/simregisters.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

constexpr quint32 kPageBytes = 256;
constexpr quint32 kRunningPage = SimRegisters::kRunningImageAddress >> 8;
constexpr quint32 kEepromPage = SimRegisters::kEepromImageAddress >> 8;

// Bytes of the image the tool does not interpret: fixed and non-zero, so that a test sees them
// come back unchanged after a settings write.
constexpr uchar kReservedHead = 0x10; // bytes 0..15 hold 0x10, 0x11, ... 0x1F
constexpr uchar kFlagByte = 0xA1;     // byte 16: keep-alive (0x04) off, other bits set
constexpr uchar kByte17 = 0x5A;
constexpr uchar kReservedTail = 0xC0; // bytes 48..59 hold 0xC0, 0xC1, ... 0xCB
// Bytes 60..63: the serial module's configuration, 9,600 baud, 8 bits, 1 stop bit, no parity,
// manual flow control, all output lines off.
constexpr uchar kSerialConfig[4] = {0x70, 0x01, 0x18, 0x78};
constexpr uchar kMac[6] = {0x02, 0x00, 0xC0, 0xA8, 0x00, 0x10};

struct Value16
{
    int offset;
    quint16 value;
};
// TCP command port, max segment size, the keep-alive, time-out and retry timers.
constexpr Value16 kDefaultTimers[] = {{30, 23},   {32, 1460},  {36, 1000}, {38, 60000},
                                      {40, 5000}, {42, 11250}, {44, 500},  {46, 500}};

} // namespace

SimRegisters::Image SimRegisters::defaultImage(quint32 ipv4, quint16 udpPort, quint16 tcpDataPort)
{
    Image image{};
    for (int i = 0; i < 16; ++i)
        image[i] = char(kReservedHead + i);
    image[16] = char(kFlagByte);
    image[17] = char(kByte17);
    std::copy(std::begin(kMac), std::end(kMac), image.begin() + 18);
    setIpv4(image, ipv4);
    setPortAt(image, kTcpDataPortOffset, tcpDataPort);
    setPortAt(image, kUdpPortOffset, udpPort);
    for (const Value16 &timer : kDefaultTimers)
        setPortAt(image, timer.offset, timer.value);
    for (int i = 48; i < 60; ++i)
        image[i] = char(kReservedTail + (i - 48));
    std::copy(std::begin(kSerialConfig), std::end(kSerialConfig), image.begin() + 60);
    return image;
}

quint16 SimRegisters::portAt(const Image &image, int offset)
{
    return qFromBigEndian<quint16>(image.data() + offset);
}

void SimRegisters::setPortAt(Image &image, int offset, quint16 port)
{
    qToBigEndian<quint16>(port, image.data() + offset);
}

void SimRegisters::setIpv4(Image &image, quint32 ipv4)
{
    qToBigEndian<quint32>(ipv4, image.data() + kIpOffset);
}

bool SimRegisters::touches(quint32 address, int length, quint32 first, quint32 last)
{
    // Two arcs of the 2^32 circle meet when either one holds the other's start.
    if (length <= 0)
        return false;
    return quint32(address - first) <= quint32(last - first) ||
           quint32(first - address) < quint32(length);
}

const char *SimRegisters::specialByte(quint32 address) const
{
    const quint32 offset = address & (kPageBytes - 1);
    if ((address >> 8) == kRunningPage && offset < quint32(kImageSize))
        return &m_running[offset];
    if ((address >> 8) == kEepromPage) {
        if (offset < quint32(kImageSize))
            return &m_eeprom[offset];
        if (address == kEepromPermissionAddress)
            return reinterpret_cast<const char *>(&m_permission);
    }
    return nullptr;
}

char *SimRegisters::specialByte(quint32 address)
{
    return const_cast<char *>(std::as_const(*this).specialByte(address));
}

void SimRegisters::read(quint32 address, int length, char *out) const
{
    int done = 0;
    while (done < length) {
        const quint32 at = address + quint32(done);
        const quint32 page = at >> 8;
        const quint32 offset = at & (kPageBytes - 1);
        const int chunk = std::min<int>(length - done, int(kPageBytes - offset));
        if (const auto it = m_pages.find(page); it != m_pages.end())
            std::memcpy(out + done, it->second.data() + offset, size_t(chunk));
        else
            std::memset(out + done, 0, size_t(chunk));
        if (page == kRunningPage || page == kEepromPage)
            overlaySpecial(page, offset, chunk, out + done);
        done += chunk;
    }
}

void SimRegisters::overlaySpecial(quint32 page, quint32 offset, int chunk, char *out) const
{
    // The images cover offsets 0..63 of their pages, the permission byte offset 0xFF.
    const Image &image = page == kRunningPage ? m_running : m_eeprom;
    const quint32 end = offset + quint32(chunk);
    if (offset < quint32(kImageSize)) {
        const quint32 imageEnd = std::min<quint32>(end, kImageSize);
        std::memcpy(out, image.data() + offset, imageEnd - offset);
    }
    if (page == kEepromPage && end == kPageBytes)
        out[kPageBytes - 1 - offset] = char(m_permission);
}

bool SimRegisters::writeAllowed(quint32 address, int length) const
{
    if (!eepromWritable() &&
        touches(address, length, kEepromImageAddress, kEepromPermissionAddress - 1))
        return false;
    // Count the plain-memory pages this write would add.
    size_t newPages = 0;
    for (int done = 0; done < length;) {
        const quint32 at = address + quint32(done);
        const int chunk = std::min<int>(length - done, int(kPageBytes - (at & (kPageBytes - 1))));
        bool needsPage = false;
        for (int i = 0; i < chunk && !needsPage; ++i)
            needsPage = !specialByte(at + quint32(i));
        if (needsPage && m_pages.find(at >> 8) == m_pages.end())
            ++newPages;
        done += chunk;
    }
    return newPages == 0 || m_pages.size() + newPages <= size_t(kMaxPages);
}

bool SimRegisters::write(quint32 address, const char *data, int length)
{
    if (!writeAllowed(address, length))
        return false;
    store(address, data, length);
    return true;
}

void SimRegisters::store(quint32 address, const char *data, int length)
{
    int done = 0;
    while (done < length) {
        const quint32 at = address + quint32(done);
        const quint32 page = at >> 8;
        const int chunk = std::min<int>(length - done, int(kPageBytes - (at & (kPageBytes - 1))));
        if (page == kRunningPage || page == kEepromPage) {
            for (int i = 0; i < chunk; ++i) {
                const quint32 byteAddress = at + quint32(i);
                if (char *special = specialByte(byteAddress))
                    *special = data[done + i];
                else
                    m_pages[page][byteAddress & 0xFF] = data[done + i];
            }
        } else {
            std::memcpy(m_pages[page].data() + (at & 0xFF), data + done, size_t(chunk));
        }
        done += chunk;
    }
}
