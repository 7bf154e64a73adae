// How much one receive from a bridge module takes at most when no length is given: a peer that
// never stops talking cannot grow the program without bound, and the text areas stay responsive.
#pragma once

#include <QtGlobal>

namespace ModuleLimits {

constexpr qint64 kReceiveCapBytes = 1024 * 1024;

} // namespace ModuleLimits
