#pragma once

#include "state/AdBlockListLoader.h"

#include <cstddef>
#include <string>

namespace ovel {

// The line under the "Ad Blocker" switch: what the blocker blocks with and which lists, e.g.
// "Blocking with 98,412 rules · lists of 12 Nov 2026", or "Off · ..." while it is switched off.
std::string adBlockStatusLine(const AdBlockStatus& status, bool enabled);

// 98412 as "98,412".
std::string withThousandsSeparators(std::size_t number);

// A day as "12 Nov 2026", in UTC (the lists date themselves in UTC).
std::string dayMonthYear(Date when);

} // namespace ovel
