#include "simulator/program/running.h"

#include "interfaces/glib_ptr.h"

#include <glib.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <tuple>

namespace simulator {
namespace {

using morvane::DateTimePtr;
using morvane::TextPtr;

struct KeyFileRelease {
    void operator()(GKeyFile* file) const noexcept { g_key_file_unref(file); }
};
using KeyFilePtr = std::unique_ptr<GKeyFile, KeyFileRelease>;

constexpr char kGroup[] = "Simulator";

struct Field {
    const char* key;
    std::string Running::*value;
};

constexpr std::array<Field, 4> kFields = {{
    {"Since", &Running::since},
    {"BusName", &Running::bus_name},
    {"ControlName", &Running::control_name},
    {"BusAddress", &Running::bus_address},
}};

std::string RuntimeDirectory() {
    const gchar* base = g_getenv("XDG_RUNTIME_DIR");
    return base != nullptr && *base != '\0' ? std::string(base) + "/morvane-simulator"
                                            : "/tmp/morvane-simulator-" + std::to_string(getuid());
}

/// Another user could have created the directory in /tmp.
void DemandOwnDirectory(const std::string& path) {
    struct stat status = {};
    Checked(lstat(path.c_str(), &status), path);
    if (!S_ISDIR(status.st_mode) || status.st_uid != getuid() || (status.st_mode & 077U) != 0) {
        throw std::runtime_error(path + " is not a directory of this user alone");
    }
}

std::string MakeRuntimeDirectory() {
    std::string path = RuntimeDirectory();
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        Checked(-1, path);
    }
    DemandOwnDirectory(path);
    return path;
}

/// Locks the file before renaming it: a file with the final name and no lock counts as stale.
int WriteLocked(const std::string& directory, const Running& running) {
    const std::string path = directory + "/." + running.process;
    const int file =
        Checked(open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), path);
    const KeyFilePtr contents(g_key_file_new());
    for (const Field& field : kFields) {
        g_key_file_set_string(contents.get(), kGroup, field.key, (running.*field.value).c_str());
    }
    gsize size = 0;
    const TextPtr text(g_key_file_to_data(contents.get(), &size, nullptr));
    const bool written = flock(file, LOCK_EX | LOCK_NB) == 0 &&
                         write(file, text.get(), size) == static_cast<ssize_t>(size) &&
                         rename(path.c_str(), (directory + "/" + running.process).c_str()) == 0;
    if (!written) {
        close(file);
        throw std::system_error(errno, std::generic_category(), path);
    }
    return file;
}

bool IsProcessId(const std::string& name) {
    return name.find_first_not_of("0123456789") == std::string::npos;
}

/// Whether the process that has written the file has ended. Tries a shared lock, because other
/// processes may check at the same time.
bool IsStale(const std::string& path) {
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    return file.number() >= 0 && flock(file.number(), LOCK_SH | LOCK_NB) == 0;
}

Running Read(const std::string& path, const std::string& process) {
    Running running;
    running.process = process;
    const KeyFilePtr contents(g_key_file_new());
    g_key_file_load_from_file(contents.get(), path.c_str(), G_KEY_FILE_NONE, nullptr);
    for (const Field& field : kFields) {
        const TextPtr value(g_key_file_get_string(contents.get(), kGroup, field.key, nullptr));
        running.*field.value = value ? value.get() : "";
    }
    return running;
}

Running Completed(Running running) {
    const DateTimePtr now(g_date_time_new_now_local());
    const TextPtr text(g_date_time_format(now.get(), "%F %T"));
    running.process = std::to_string(getpid());
    running.since = text.get();
    return running;
}

}  // namespace

std::vector<Running> FindRunning() {
    std::vector<Running> all;
    const std::filesystem::path directory = RuntimeDirectory();
    if (!std::filesystem::exists(directory)) {
        return all;
    }
    DemandOwnDirectory(directory);
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        const std::string name = entry.path().filename();
        if (!IsProcessId(name)) {
            continue;
        }
        if (IsStale(entry.path())) {
            unlink(entry.path().c_str());
        } else {
            all.push_back(Read(entry.path(), name));
        }
    }
    std::sort(all.begin(), all.end(), [](const Running& a, const Running& b) {
        return std::tie(a.since, a.process) < std::tie(b.since, b.process);
    });
    return all;
}

bool IsStopped(const Running& running) {
    std::ifstream file("/proc/" + running.process + "/stat");
    const std::string stat(std::istreambuf_iterator<char>(file), {});
    return stat.find(") T") != std::string::npos;
}

std::string Describe(const Running& running) {
    return running.process + "  " + running.bus_name + "  since " + running.since + "  " +
           running.bus_address;
}

RunningFile::RunningFile(Running running)
    : directory_(MakeRuntimeDirectory()),
      path_(directory_ + "/" + std::to_string(getpid())),
      lock_(WriteLocked(directory_, Completed(std::move(running)))) {}

RunningFile::~RunningFile() {
    unlink(path_.c_str());
    rmdir(directory_.c_str());  // fails while it contains files of other simulators
}

}  // namespace simulator
