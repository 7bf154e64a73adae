// The emulated device's 32-bit register space: sparse memory that reads zero until written, with
// the running settings image at 0xFFFFFF00, the EEPROM copy at 0xFFFFFC00 and the EEPROM
// write-permission byte at 0xFFFFFCFF. Not thread-safe: MavixSim guards it.
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <array>
#include <unordered_map>

class SimRegisters
{
public:
    // Layout
    static constexpr quint32 kRunningImageAddress = 0xFFFFFF00;
    static constexpr quint32 kEepromImageAddress = 0xFFFFFC00;
    static constexpr quint32 kEepromPermissionAddress = 0xFFFFFCFF;
    static constexpr int kImageSize = 64;
    static constexpr quint8 kPermissionGranted = 0x00;
    static constexpr quint8 kPermissionReleased = 0xFF;
    static constexpr int kIpOffset = 24;
    static constexpr int kTcpDataPortOffset = 28;
    static constexpr int kUdpPortOffset = 34;
    // Sparse memory beyond this many 256-byte pages (16 MiB) refuses new pages with a bus error,
    // so that no stream of writes can exhaust the host's memory.
    static constexpr int kMaxPages = 65536;

    using Image = std::array<char, kImageSize>;

    // The factory image with the emulator's own IPv4 address and ports in it.
    [[nodiscard]] static Image defaultImage(quint32 ipv4, quint16 udpPort, quint16 tcpDataPort);
    [[nodiscard]] static quint16 portAt(const Image &image, int offset);
    static void setPortAt(Image &image, int offset, quint16 port);
    static void setIpv4(Image &image, quint32 ipv4);

    // Images
    [[nodiscard]] Image &runningImage() { return m_running; }
    [[nodiscard]] const Image &runningImage() const { return m_running; }
    [[nodiscard]] Image &eepromImage() { return m_eeprom; }
    [[nodiscard]] const Image &eepromImage() const { return m_eeprom; }
    [[nodiscard]] bool eepromWritable() const { return m_permission == kPermissionGranted; }

    // Access. A refused write (EEPROM locked, memory full) changes nothing and returns false.
    void read(quint32 address, int length, char *out) const;
    [[nodiscard]] bool write(quint32 address, const char *data, int length);
    // Stores past the EEPROM lock and the page limit: for setting up a test.
    void store(quint32 address, const char *data, int length);

    // True when [address, address + length) (wrapping at 2^32) meets [first, last].
    [[nodiscard]] static bool touches(quint32 address, int length, quint32 first, quint32 last);

private:
    using Page = std::array<char, 256>;

    [[nodiscard]] bool writeAllowed(quint32 address, int length) const;
    void overlaySpecial(quint32 page, quint32 offset, int chunk, char *out) const;
    [[nodiscard]] char *specialByte(quint32 address);
    [[nodiscard]] const char *specialByte(quint32 address) const;

    std::unordered_map<quint32, Page> m_pages; // keyed by address >> 8
    Image m_running{};
    Image m_eeprom{};
    quint8 m_permission = kPermissionReleased;
};
