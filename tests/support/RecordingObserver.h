#pragma once

#include "state/BrowserState.h"
#include "web/Connections.h"

#include <string>
#include <vector>

namespace ovel::test {

// Hears every notice of a browser state and writes it down as a line of text, in order
// ("tabs: removed 1", "selection: 1 -> 0", "tab 2: title loading", "history: 3"). On each notice
// it checks that the state is whole: tabs present, the selection naming one of them, a changed
// tab still in the strip; what it finds broken is written down in `broken`.
class RecordingObserver {
public:
    explicit RecordingObserver(BrowserState& state);

    // The lines heard since the last call.
    std::vector<std::string> take();

    std::vector<std::string> lines;
    std::vector<std::string> broken;

private:
    void note(std::string line);

    BrowserState& state_;
    Connections connections_;
};

} // namespace ovel::test
