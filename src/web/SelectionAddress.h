#pragma once

#include <string>

namespace ovel {

class BrowserTab;

// What the address field shows when `tab` becomes the selected tab: the internal page's
// address while it shows one, else its page's address, else nothing.
std::string addressTextOnSelection(const BrowserTab& tab);

} // namespace ovel
