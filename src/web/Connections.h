#pragma once

#include <sigc++/connection.h>

#include <vector>

namespace ovel {

// The signal connections an object made, all ended when it goes.
class Connections {
public:
    Connections() = default;
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;
    ~Connections() { disconnectAll(); }

    void add(sigc::connection connection) { connections_.push_back(connection); }
    void disconnectAll() {
        for (sigc::connection& connection : connections_) {
            connection.disconnect();
        }
        connections_.clear();
    }

private:
    std::vector<sigc::connection> connections_;
};

} // namespace ovel
