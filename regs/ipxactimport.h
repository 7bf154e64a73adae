// Import of IP-XACT component descriptions (the 2009 and 2014 editions: the same element names in
// two namespaces): every address block of every memory map becomes a block, with its registers,
// fields and enumerated values. Elements the model has no place for are passed over.
#pragma once

#include "regs/registermapparser.h"

class IpxactImport
{
    Q_DECLARE_TR_FUNCTIONS(IpxactImport)

public:
    [[nodiscard]] static MapResult parse(const QByteArray &xml, const QString &fileName);
};
