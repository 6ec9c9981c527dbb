// Start-up time: from launching the process to the first frame drawn after its first page
// finished loading, for the browser and for the engine floor (a bare WebKitGTK window showing
// the same page). Run under a display (xvfb-run) with GSK_RENDERER=cairo; report the medians:
//   build/bench/bench_startup --benchmark_repetitions=7 --benchmark_report_aggregates_only=true

#include <benchmark/benchmark.h>
#include <glib.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/wait.h>

namespace {

// Runs `program` with a fresh home and XDG folders; returns the seconds until it prints its
// first-frame line, or a negative number when it never did.
double secondsToFirstFrame(const std::string& program) {
    g_autofree char* root = g_dir_make_tmp("ovel-startup-XXXXXX", nullptr);
    const std::string home = root;
    std::vector<std::string> environment;
    for (char** entry = g_get_environ(); entry && *entry; ++entry) {
        environment.emplace_back(*entry);
    }
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        std::filesystem::create_directories(home + "/" + name);
        environment.push_back(std::string(name) + "=" + home + "/" + name);
    }
    environment.emplace_back("OVEL_STARTUP_PROBE=1");
    std::vector<char*> envp;
    for (std::string& entry : environment) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);
    std::string binary = program;
    char* argv[] = {binary.data(), nullptr};

    const auto start = std::chrono::steady_clock::now();
    GPid pid = 0;
    int output = -1;
    double seconds = -1;
    if (g_spawn_async_with_pipes(nullptr, argv, envp.data(), G_SPAWN_DO_NOT_REAP_CHILD, nullptr,
                                 nullptr, &pid, nullptr, &output, nullptr, nullptr)) {
        FILE* stream = fdopen(output, "r");
        char line[256];
        while (std::fgets(line, sizeof line, stream) != nullptr) {
            if (std::string(line).starts_with("ovel-web: first page frame")) {
                seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start)
                              .count();
                break;
            }
        }
        fclose(stream);
        int status = 0;
        waitpid(pid, &status, 0);
        g_spawn_close_pid(pid);
    }
    std::filesystem::remove_all(home);
    return seconds;
}

void measure(benchmark::State& state, const std::string& program) {
    for (auto _ : state) {
        const double seconds = secondsToFirstFrame(program);
        if (seconds < 0) {
            state.SkipWithError("the program never drew its first page");
            return;
        }
        state.SetIterationTime(seconds);
    }
}

void BM_BrowserStartup(benchmark::State& state) { measure(state, OVEL_WEB_BINARY); }
void BM_EngineFloorStartup(benchmark::State& state) { measure(state, OVEL_ENGINE_FLOOR_BINARY); }

BENCHMARK(BM_BrowserStartup)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EngineFloorStartup)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
