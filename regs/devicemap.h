// The device's own registers, built in so that names work without a file: the running and EEPROM
// settings images, the EEPROM write permission, the ZEL-RS232C module's configuration, ports and
// line states, and the ZEL-GPIB module's settings block.
#pragma once

#include "regs/registermap.h"

class DeviceMap
{
public:
    static constexpr char kSource[] = "built-in";

    [[nodiscard]] static RegisterMap map();
};
