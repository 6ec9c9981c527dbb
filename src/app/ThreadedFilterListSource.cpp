#include "app/ThreadedFilterListSource.h"

#include <gio/gio.h>

#include <memory>
#include <utility>

namespace ovel {

namespace {

// One piece of work for a worker thread and what to do with its result on the main context.
template <typename Result> struct Job {
    std::function<Result()> work;
    std::function<void(Result)> done;
    Result result;
};

template <typename Result> void runJob(GTask* task, gpointer, gpointer data, GCancellable*) {
    auto* job = static_cast<Job<Result>*>(data);
    job->result = job->work();
    g_task_return_boolean(task, TRUE);
}

template <typename Result> void finishJob(GObject*, GAsyncResult* result, gpointer) {
    std::unique_ptr<Job<Result>> job(
        static_cast<Job<Result>*>(g_task_get_task_data(G_TASK(result))));
    g_task_set_task_data(G_TASK(result), nullptr, nullptr);
    job->done(std::move(job->result));
}

template <typename Result>
void runInThread(std::function<Result()> work, std::function<void(Result)> done) {
    GTask* task = g_task_new(nullptr, nullptr, &finishJob<Result>, nullptr);
    g_task_set_task_data(task, new Job<Result>{std::move(work), std::move(done), {}}, nullptr);
    g_task_run_in_thread(task, &runJob<Result>);
    g_object_unref(task);
}

} // namespace

std::vector<std::string> ThreadedFilterListSource::systemFolders() {
    return {
        "/usr/share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}/"
        "uBlock0@raymondhill.net/assets/thirdparties/easylist",
        "/usr/share/chromium/extensions/ublock-origin/assets/thirdparties/easylist",
    };
}

std::vector<std::string> ThreadedFilterListSource::configuredFolders() {
    const char* configured = g_getenv("OVEL_FILTER_LISTS");
    if (configured == nullptr) {
        return systemFolders();
    }
    std::vector<std::string> folders;
    gchar** parts = g_strsplit(configured, ":", -1);
    for (gchar** part = parts; *part != nullptr; ++part) {
        if (**part != '\0') {
            folders.emplace_back(*part);
        }
    }
    g_strfreev(parts);
    return folders;
}

ThreadedFilterListSource::ThreadedFilterListSource(std::vector<std::string> folders)
    : folders_(std::move(folders)) {}

void ThreadedFilterListSource::read(ReadHandler done) {
    using Lists = std::shared_ptr<const FilterListFiles>;
    runInThread<Lists>(
        [folders = folders_] {
            return std::make_shared<const FilterListFiles>(readFilterLists(folders));
        },
        std::move(done));
}

void ThreadedFilterListSource::convert(std::shared_ptr<const FilterListFiles> lists,
                                       std::string leadingBlockRules, ConvertHandler done) {
    using Converted = std::shared_ptr<const ConvertedFilterList>;
    runInThread<Converted>(
        [lists = std::move(lists), leading = std::move(leadingBlockRules)] {
            const std::vector<std::string_view> texts(lists->texts.begin(), lists->texts.end());
            return std::make_shared<const ConvertedFilterList>(convertFilterLists(texts, leading));
        },
        std::move(done));
}

} // namespace ovel
