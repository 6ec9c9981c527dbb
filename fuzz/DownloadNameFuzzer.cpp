#include "FuzzCheck.h"
#include "web/DownloadNaming.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using ovel::fuzz::check;

// Input: one byte, whose low four bits say how many times the same file is downloaded (1 to 16);
// then NUL-separated names: the name the server suggests, then files already in the Downloads
// folder ("name/" is a folder, ">name" a dangling symbolic link).

namespace {

// One real folder for the whole run, emptied before each input.
std::string downloads;

// As the desktop tests it: anything at the path, even a dangling link, is taken.
bool taken(std::string_view path) {
    struct stat info;
    return ::lstat(std::string(path).c_str(), &info) == 0;
}

bool isPlainName(std::string_view name) {
    return !name.empty() && name.size() <= ovel::maxDownloadFileNameBytes && name != "." && name != ".." &&
           name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos;
}

bool hasControlCharacter(std::string_view name) {
    return std::any_of(name.begin(), name.end(), [](char ch) {
        const auto c = static_cast<unsigned char>(ch);
        return c < 0x20 || c == 0x7F;
    });
}

void placeExisting(std::string_view entry) {
    if (entry.size() > 1 && entry.back() == '/') {
        entry.remove_suffix(1);
        if (isPlainName(entry)) {
            ::mkdir((downloads + "/" + std::string(entry)).c_str(), 0700);
        }
    } else if (entry.size() > 1 && entry.front() == '>') {
        entry.remove_prefix(1);
        if (isPlainName(entry)) {
            ::symlink("/nonexistent/target", (downloads + "/" + std::string(entry)).c_str());
        }
    } else if (isPlainName(entry)) {
        const int fd = ::open((downloads + "/" + std::string(entry)).c_str(),
                              O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (fd >= 0) {
            ::close(fd);
        }
    }
}

std::vector<std::string_view> splitAtNul(std::string_view text) {
    std::vector<std::string_view> parts;
    for (;;) {
        const auto end = text.find('\0');
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::string pattern = (fs::temp_directory_path() / "ovel-fuzz-downloads-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        std::perror("mkdtemp");
        std::abort();
    }
    downloads = pattern;
    std::atexit([] {
        std::error_code ignored;
        fs::remove_all(downloads, ignored);
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const int downloadsOfTheSameFile = (data[0] & 0x0F) + 1;
    const auto names =
        splitAtNul(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
    const std::string_view suggested = names.front();

    for (const auto& entry : fs::directory_iterator(downloads)) {
        fs::remove_all(entry.path());
    }
    for (std::size_t i = 1; i < names.size(); ++i) {
        placeExisting(names[i]);
    }

    const std::string safeName = ovel::safeDownloadFileName(suggested);
    check(isPlainName(safeName) && !hasControlCharacter(safeName),
          "a safe name is one path component of 1 to 255 bytes without control characters",
          safeName);

    // Whatever the desktop's file test says about the folder itself, a name is always chosen
    // inside it: here only the listed names are taken.
    const std::set<std::string> listed(names.begin() + 1, names.end());
    const std::string fromList =
        ovel::uniqueDownloadURL("/downloads", suggested, [&](std::string_view path) {
            return path.starts_with("/downloads/") &&
                   listed.count(std::string(path.substr(11))) > 0;
        });
    check(fromList.starts_with("/downloads/") && isPlainName(fromList.substr(11)) &&
              listed.count(fromList.substr(11)) == 0,
          "a name from the list of taken names is new and plain", fromList);

    for (int n = 0; n < downloadsOfTheSameFile; ++n) {
        const std::string path = ovel::uniqueDownloadURL(downloads, suggested, taken);
        check(path.size() > downloads.size() && path.starts_with(downloads) &&
                  path[downloads.size()] == '/',
              "the download is saved in the Downloads folder", path);
        const std::string_view name = std::string_view(path).substr(downloads.size() + 1);
        check(isPlainName(name),
              "the file name is one path component of 1 to 255 bytes, not . or ..", path);
        check(!hasControlCharacter(name), "the file name holds no control character", path);
        check(!taken(path), "a download never overwrites what is there", path);
        check(n > 0 || taken(downloads + "/" + safeName) || name == safeName,
              "a free name is used as it is", path);

        // The strongest test that the path is a new file right in the folder: create it.
        const int fd =
            ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        check(fd >= 0, "the chosen path can be created as a new file",
              path + " (" + std::strerror(errno) + ")");
        ::close(fd);
    }
    return 0;
}
