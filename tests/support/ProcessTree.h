#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace ovel::test {

// A process below another one, as /proc tells it.
struct ChildProcess {
    int pid;
    int parent;
    // The kernel keeps 15 characters of a command name: "WebKitWebProces".
    std::string name;
};

// Every process descended from `ancestor` (the engine's helpers may sit behind a sandbox
// launcher, so not only direct children).
inline std::vector<ChildProcess> descendantsOf(int ancestor) {
    std::map<int, ChildProcess> all;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        if (name.empty() || name.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        std::ifstream stat(entry.path() / "stat");
        std::string line;
        // "pid (comm) state ppid ...": the command may hold spaces and parentheses.
        const auto open = std::getline(stat, line) ? line.find('(') : std::string::npos;
        const auto close = line.rfind(')');
        if (open == std::string::npos || close == std::string::npos) {
            continue;
        }
        std::istringstream rest(line.substr(close + 2));
        char state = 0;
        int parent = 0;
        rest >> state >> parent;
        const int pid = std::stoi(name);
        all[pid] = ChildProcess{pid, parent, line.substr(open + 1, close - open - 1)};
    }
    std::set<int> family{ancestor};
    std::vector<ChildProcess> found;
    // Parents have lower numbers only until pids wrap; repeat until nothing new is found.
    for (bool grew = true; grew;) {
        grew = false;
        for (const auto& [pid, process] : all) {
            if (!family.count(pid) && family.count(process.parent)) {
                family.insert(pid);
                found.push_back(process);
                grew = true;
            }
        }
    }
    return found;
}

} // namespace ovel::test
