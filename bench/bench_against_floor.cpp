// The whole browser against the engine floor (bench/engine_floor.cpp: one GTK window of bare
// web views), run side by side, alternating, on the same loopback pages. Each figure is the
// median over the runs, with its spread, and the ratio browser / floor.
//
//   bash bench/against_floor.sh [startup|memory|cpu|related|all] [runs]
//
// startup: process start to the first frame after the restored tab's page loaded (one tab);
//          also split at the page's first request.
// memory:  PSS of the whole process tree with 1, 5 and 20 restored tabs, 5 s after the last
//          page was requested; the browser's own process alone as well.
// related: the floor's 20 tabs with related views (one shared web process) against without.
// cpu:     the whole tree's CPU in % of one core over the 10 s after the page loaded, then
//          from 10 to 20 s after (idle, window shown), then 10 s with the window unmapped.

#include "records/RecordsJson.h"
#include "state/BrowserState.h"
#include "support/LoopbackServer.h"
#include "support/ProcessBrowser.h"

#include <glib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

constexpr const char* profileID = "5A3C8E1F-1111-4222-8333-444455556666";

// A page with some weight: text, styles, an inline image and a little script, like an article.
std::string articlePage(int number) {
    std::string html = "<!doctype html><html><head><meta charset=utf-8><title>Article " +
                       std::to_string(number) +
                       "</title><style>body{font:16px/1.5 sans-serif;max-width:42em;margin:2em "
                       "auto}h2{color:#345}figure{margin:1em 0}</style></head><body><h1>Article " +
                       std::to_string(number) + "</h1>";
    for (int section = 0; section < 12; ++section) {
        html += "<h2>Section " + std::to_string(section) + "</h2>";
        for (int paragraph = 0; paragraph < 4; ++paragraph) {
            html += "<p>Lorem ipsum dolor sit amet, consectetur adipiscing elit, sed do eiusmod "
                    "tempor incididunt ut labore et dolore magna aliqua. Ut enim ad minim veniam, "
                    "quis nostrud exercitation ullamco laboris nisi ut aliquip ex ea commodo.</p>";
        }
        html += "<figure><svg width=320 height=120><rect width=320 height=120 fill=#9bd/>"
                "<circle cx=60 cy=60 r=40 fill=#f96/></svg></figure>";
    }
    html += "<script>document.title += ' (' + document.querySelectorAll('p').length + ')';"
            "</script></body></html>";
    return html;
}

struct Process {
    GPid pid = 0;
    std::string root;
    Clock::time_point started;
    std::optional<Clock::time_point> firstFrame;
    std::string pendingOutput;
    guint watch = 0;
};

// Every process whose parent chain reaches `root`, `root` included.
std::vector<int> processTree(int root) {
    std::map<int, int> parents;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.empty() || !std::isdigit(static_cast<unsigned char>(name[0]))) {
            continue;
        }
        std::ifstream stat(entry.path() / "stat");
        std::string text((std::istreambuf_iterator<char>(stat)), {});
        const auto close = text.rfind(')');
        if (close == std::string::npos) {
            continue;
        }
        std::istringstream rest(text.substr(close + 2));
        char state = 0;
        int parent = 0;
        rest >> state >> parent;
        parents[std::stoi(name)] = parent;
    }
    std::vector<int> tree{root};
    for (bool grew = true; grew;) {
        grew = false;
        for (const auto& [pid, parent] : parents) {
            if (std::find(tree.begin(), tree.end(), parent) != tree.end() &&
                std::find(tree.begin(), tree.end(), pid) == tree.end()) {
                tree.push_back(pid);
                grew = true;
            }
        }
    }
    return tree;
}

double pssMiB(int pid) {
    std::ifstream rollup("/proc/" + std::to_string(pid) + "/smaps_rollup");
    std::string line;
    while (std::getline(rollup, line)) {
        long kib = 0;
        if (std::sscanf(line.c_str(), "Pss: %ld kB", &kib) == 1) {
            return kib / 1024.0;
        }
    }
    return 0;
}

double treePssMiB(int root) {
    double total = 0;
    for (int pid : processTree(root)) {
        total += pssMiB(pid);
    }
    return total;
}

// CPU seconds the live processes of the tree have used.
double treeCpuSeconds(int root) {
    double ticks = 0;
    for (int pid : processTree(root)) {
        std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
        std::string text((std::istreambuf_iterator<char>(stat)), {});
        const auto close = text.rfind(')');
        if (close == std::string::npos) {
            continue;
        }
        std::istringstream rest(text.substr(close + 2));
        std::string field;
        std::vector<std::string> fields;
        while (rest >> field) {
            fields.push_back(field);
        }
        // utime and stime are fields 14 and 15 of stat; `fields` starts at field 3.
        if (fields.size() > 13) {
            ticks += std::stod(fields[11]) + std::stod(fields[12]);
        }
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

void spinFor(std::chrono::milliseconds duration) {
    ovel::test::ProcessBrowser::waitUntil([] { return false; }, duration);
}

gboolean onOutput(GIOChannel* channel, GIOCondition, gpointer data) {
    auto* process = static_cast<Process*>(data);
    char buffer[512];
    gsize read = 0;
    const GIOStatus status =
        g_io_channel_read_chars(channel, buffer, sizeof buffer, &read, nullptr);
    process->pendingOutput.append(buffer, read);
    if (!process->firstFrame &&
        process->pendingOutput.find("ovel-web: first page frame") != std::string::npos) {
        process->firstFrame = Clock::now();
    }
    if (status == G_IO_STATUS_EOF || status == G_IO_STATUS_ERROR) {
        process->watch = 0;
        return G_SOURCE_REMOVE;
    }
    return G_SOURCE_CONTINUE;
}

enum class Program { Browser, Floor, RelatedFloor };

const char* nameOf(Program program) {
    return program == Program::Browser ? "browser" : "floor";
}

// Starts the program with a fresh home showing `urls`: the browser restores them as its session,
// the floor takes them as arguments.
std::unique_ptr<Process> start(Program program, const std::vector<std::string>& urls) {
    auto process = std::make_unique<Process>();
    g_autofree char* root = g_dir_make_tmp("ovel-bench-XXXXXX", nullptr);
    process->root = root;
    std::vector<std::string> environment;
    for (char** entry = g_get_environ(); entry && *entry; ++entry) {
        environment.emplace_back(*entry);
    }
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        fs::create_directories(process->root + "/" + name);
        environment.push_back(std::string(name) + "=" + process->root + "/" + name);
    }
    std::vector<std::string> argv;
    if (program == Program::Browser) {
        const std::string settings = process->root + "/XDG_CONFIG_HOME/ovel-web/settings.sqlite3";
        fs::create_directories(fs::path(settings).parent_path());
        ovel::SessionStore session{0, {}};
        for (const std::string& url : urls) {
            session.tabs.push_back({url});
        }
        ovel::test::writeStoredBlob(settings, std::string(ovel::BrowserState::profilesKey),
                                    ovel::encodeProfiles({{profileID, "Default"}}));
        ovel::test::writeStoredBlob(
            settings, ovel::BrowserState::profileKey(ovel::BrowserState::sessionKeyBase, profileID),
            ovel::encodeSession(session));
        environment.emplace_back("OVEL_STARTUP_PROBE=stay");
        argv.emplace_back(OVEL_WEB_BINARY);
    } else {
        argv = {OVEL_ENGINE_FLOOR_BINARY, "--stay"};
        if (program == Program::RelatedFloor) {
            argv.emplace_back("--related");
        }
        argv.insert(argv.end(), urls.begin(), urls.end());
    }
    std::vector<char*> envp;
    for (std::string& entry : environment) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);
    std::vector<char*> args;
    for (std::string& arg : argv) {
        args.push_back(arg.data());
    }
    args.push_back(nullptr);

    int output = -1;
    process->started = Clock::now();
    if (!g_spawn_async_with_pipes(nullptr, args.data(), envp.data(), G_SPAWN_DO_NOT_REAP_CHILD,
                                  nullptr, nullptr, &process->pid, nullptr, &output, nullptr,
                                  nullptr)) {
        return nullptr;
    }
    GIOChannel* channel = g_io_channel_unix_new(output);
    g_io_channel_set_close_on_unref(channel, TRUE);
    g_io_channel_set_encoding(channel, nullptr, nullptr);
    g_io_channel_set_flags(channel, G_IO_FLAG_NONBLOCK, nullptr);
    process->watch =
        g_io_add_watch(channel, GIOCondition(G_IO_IN | G_IO_HUP), onOutput, process.get());
    g_io_channel_unref(channel);
    return process;
}

void stop(Process& process) {
    if (process.watch != 0) {
        g_source_remove(process.watch);
    }
    // The whole tree: web processes may outlive a killed parent for a moment.
    const auto tree = processTree(process.pid);
    for (int pid : tree) {
        kill(pid, SIGKILL);
    }
    int status = 0;
    waitpid(process.pid, &status, 0);
    g_spawn_close_pid(process.pid);
    spinFor(300ms);
    std::error_code ignored;
    fs::remove_all(process.root, ignored);
}

// The window of `pid`'s program, for unmapping it as minimising does without a window manager.
bool unmapWindows(Program program) {
    const std::string title = program == Program::Browser ? "^Ovel Web$" : ".";
    const std::string command =
        program == Program::Browser
            ? "xdotool search --onlyvisible --name '" + title + "' windowunmap %@"
            : "xdotool search --onlyvisible --class engine_floor windowunmap %@";
    return std::system(command.c_str()) == 0;
}

struct Figures {
    std::vector<double> values;
    double median() const {
        auto sorted = values;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted[sorted.size() / 2];
    }
    double low() const {
        return values.empty() ? 0 : *std::min_element(values.begin(), values.end());
    }
    double high() const {
        return values.empty() ? 0 : *std::max_element(values.begin(), values.end());
    }
};

// `names` label the two columns: the browser and the floor unless given.
void report(const std::string& what, const Figures& browser, const Figures& floor, const char* unit,
            const char* names[2] = nullptr) {
    static const char* programs[2] = {"browser", "floor"};
    names = names != nullptr ? names : programs;
    std::printf("%-44s %s %8.1f %s (%.1f–%.1f)   %s %8.1f %s (%.1f–%.1f)   ratio %.2f\n",
                what.c_str(), names[0], browser.median(), unit, browser.low(), browser.high(),
                names[1], floor.median(), unit, floor.low(), floor.high(),
                floor.median() > 0 ? browser.median() / floor.median() : 0.0);
    std::fflush(stdout);
}

void reportOne(const std::string& what, const Figures& figures, const char* unit) {
    std::printf("%-44s browser %8.1f %s (%.1f–%.1f)\n", what.c_str(), figures.median(), unit,
                figures.low(), figures.high());
    std::fflush(stdout);
}

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

// Waits until the program drew its first loaded page; the page's first request time is noted.
bool waitForFirstFrame(Process& process, ovel::test::LoopbackServer& server,
                       const std::string& path, std::optional<Clock::time_point>& requested) {
    return ovel::test::ProcessBrowser::waitUntil(
        [&] {
            if (!requested && server.requestCount(path) > 0) {
                requested = Clock::now();
            }
            return process.firstFrame.has_value();
        },
        60s);
}

void startup(int runs) {
    std::map<Program, Figures> total, toRequest, requestToFrame, requests;
    for (int run = 0; run < runs; ++run) {
        for (Program program : {Program::Browser, Program::Floor}) {
            ovel::test::LoopbackServer server;
            server.serveHtml("/article", articlePage(1));
            auto process = start(program, {server.url("/article")});
            std::optional<Clock::time_point> requested;
            if (!process || !waitForFirstFrame(*process, server, "/article", requested) ||
                !requested) {
                std::printf("%s never drew its page\n", nameOf(program));
                if (process) {
                    stop(*process);
                }
                continue;
            }
            total[program].values.push_back(milliseconds(*process->firstFrame - process->started));
            toRequest[program].values.push_back(milliseconds(*requested - process->started));
            requestToFrame[program].values.push_back(
                milliseconds(*process->firstFrame - *requested));
            spinFor(1s);
            requests[program].values.push_back(server.requestCount("/article"));
            stop(*process);
        }
    }
    report("start-up to the first loaded frame", total[Program::Browser], total[Program::Floor],
           "ms");
    report("  of which start to the page's request", toRequest[Program::Browser],
           toRequest[Program::Floor], "ms");
    report("  of which request to the drawn frame", requestToFrame[Program::Browser],
           requestToFrame[Program::Floor], "ms");
    report("  requests for the page", requests[Program::Browser], requests[Program::Floor], "");
}

// Starts the program on `count` loopback tabs and waits until every page was requested and the
// shown one drawn, and then `settle` more.
std::unique_ptr<Process> startLoaded(Program program, ovel::test::LoopbackServer& server, int count,
                                     std::chrono::milliseconds settle) {
    std::vector<std::string> urls;
    for (int i = 0; i < count; ++i) {
        const std::string path = "/article/" + std::to_string(i);
        server.serveHtml(path, articlePage(i));
        urls.push_back(server.url(path));
    }
    auto process = start(program, urls);
    if (!process) {
        return nullptr;
    }
    const bool loaded = ovel::test::ProcessBrowser::waitUntil(
        [&] {
            for (int i = 0; i < count; ++i) {
                if (server.requestCount("/article/" + std::to_string(i)) == 0) {
                    return false;
                }
            }
            return process->firstFrame.has_value();
        },
        120s);
    if (!loaded) {
        std::printf("%s never loaded its %d pages\n", nameOf(program), count);
        stop(*process);
        return nullptr;
    }
    spinFor(settle);
    return process;
}

void memory(int runs) {
    for (int count : {1, 5, 20}) {
        std::map<Program, Figures> tree;
        Figures browserProcess;
        for (int run = 0; run < runs; ++run) {
            for (Program program : {Program::Browser, Program::Floor}) {
                ovel::test::LoopbackServer server;
                auto process = startLoaded(program, server, count, 5s);
                if (!process) {
                    continue;
                }
                tree[program].values.push_back(treePssMiB(process->pid));
                if (program == Program::Browser) {
                    browserProcess.values.push_back(pssMiB(process->pid));
                }
                stop(*process);
            }
        }
        report("PSS, whole tree, " + std::to_string(count) + " tabs", tree[Program::Browser],
               tree[Program::Floor], "MiB");
        reportOne("PSS, browser process alone, " + std::to_string(count) + " tabs", browserProcess,
                  "MiB");
    }
}

// The experiment of sharing web processes: 20 tabs of one site in the floor, each view in its
// own web process as the browser does, against all related to the first.
void related(int runs) {
    std::map<Program, Figures> tree;
    for (int run = 0; run < runs; ++run) {
        for (Program program : {Program::RelatedFloor, Program::Floor}) {
            ovel::test::LoopbackServer server;
            auto process = startLoaded(program, server, 20, 5s);
            if (!process) {
                continue;
            }
            tree[program].values.push_back(treePssMiB(process->pid));
            stop(*process);
        }
    }
    const char* names[2] = {"related", "separate"};
    report("floor PSS, 20 tabs of one site", tree[Program::RelatedFloor], tree[Program::Floor],
           "MiB", names);
}

double cpuPercentOver(const Process& process, std::chrono::seconds span) {
    const double before = treeCpuSeconds(process.pid);
    spinFor(span);
    return 100 * (treeCpuSeconds(process.pid) - before) / static_cast<double>(span.count());
}

// With OVEL_BENCH_PROFILE=<folder>, the first run's 10 s after the load are also recorded with
// `perf record` over the whole process tree, one file per program, to see where the time goes.
void profileTree(const Process& process, const std::string& file) {
    std::string pids;
    for (int pid : processTree(process.pid)) {
        pids += (pids.empty() ? "" : ",") + std::to_string(pid);
    }
    std::string command =
        "perf record -q -g -F 999 -o '" + file + "' -p " + pids + " -- sleep 10 >/dev/null 2>&1 &";
    if (std::system(command.c_str()) != 0) {
        std::printf("perf could not start\n");
    }
}

void cpu(int runs) {
    std::map<Program, Figures> afterLoad, idle, unmapped;
    for (int run = 0; run < runs; ++run) {
        for (Program program : {Program::Browser, Program::Floor}) {
            ovel::test::LoopbackServer server;
            auto process = startLoaded(program, server, 1, 0ms);
            if (!process) {
                continue;
            }
            if (const char* folder = std::getenv("OVEL_BENCH_PROFILE"); folder && run == 0) {
                profileTree(*process, std::string(folder) + "/" + nameOf(program) + ".perf");
            }
            afterLoad[program].values.push_back(cpuPercentOver(*process, 10s));
            idle[program].values.push_back(cpuPercentOver(*process, 10s));
            unmapWindows(program);
            spinFor(1s);
            unmapped[program].values.push_back(cpuPercentOver(*process, 10s));
            stop(*process);
        }
    }
    report("CPU 0-10 s after the load, % of a core", afterLoad[Program::Browser],
           afterLoad[Program::Floor], "%");
    report("CPU 10-20 s after the load (idle, shown)", idle[Program::Browser], idle[Program::Floor],
           "%");
    report("CPU idle, window unmapped", unmapped[Program::Browser], unmapped[Program::Floor], "%");
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "all";
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    std::printf("%d runs each, %ld cores, load %.2f at start\n", runs,
                sysconf(_SC_NPROCESSORS_ONLN), [] {
                    double load = 0;
                    if (FILE* file = std::fopen("/proc/loadavg", "r")) {
                        if (std::fscanf(file, "%lf", &load) != 1) {
                            load = 0;
                        }
                        std::fclose(file);
                    }
                    return load;
                }());
    if (what == "startup" || what == "all") {
        startup(runs);
    }
    if (what == "memory" || what == "all") {
        memory(runs);
    }
    if (what == "related") {
        related(runs);
    }
    if (what == "cpu" || what == "all") {
        cpu(runs);
    }
    return 0;
}
