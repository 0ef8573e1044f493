#include "support/child_process.h"

#include "interfaces/glib_ptr.h"
#include "support/file_descriptor.h"

#include <glib.h>

#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <stdexcept>

namespace morvane_test {
namespace {

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Runs in the child between fork and exec: only async-signal-safe calls are allowed.
void PrepareChild(gpointer data) {
    const auto& setup = *static_cast<const ChildSetup*>(data);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setsid();
    if (setup.terminal) ioctl(STDIN_FILENO, TIOCSCTTY, 0);
    if (setup.ignore_hang_up) signal(SIGHUP, SIG_IGN);
}

pid_t Spawn(ChildSetup setup) {
    const std::vector<char*> arguments = Pointers(setup.command);
    const std::vector<char*> environment = Pointers(setup.environment);
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_SEARCH_PATH);
    GPid id = 0;
    morvane::ErrorPtr error;
    g_spawn_async_with_fds(setup.directory.c_str(), const_cast<char**>(arguments.data()),
                           const_cast<char**>(environment.data()), flags, PrepareChild, &setup, &id,
                           setup.input, setup.output, setup.errors, morvane::Out(error));
    if (error) throw std::runtime_error(error->message);
    return id;
}

Ending EndingOf(int wait_status) {
    if (WIFSIGNALED(wait_status)) return {std::nullopt, WTERMSIG(wait_status)};
    return {WEXITSTATUS(wait_status), std::nullopt};
}

std::chrono::microseconds CpuTimeOfRunning(pid_t id) {
    clockid_t clock = 0;
    timespec time = {};
    if (clock_getcpuclockid(id, &clock) != 0) return {};
    Checked(clock_gettime(clock, &time), "clock_gettime");
    return std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

}  // namespace

std::string Ending::Describe() const {
    if (signal) return "ended by signal " + std::to_string(*signal);
    return "exit status " + std::to_string(*status);
}

ChildProcess::ChildProcess(const ChildSetup& setup)
    : id_(Spawn(setup)), reaper_([this] { AwaitAndReap(); }) {}

ChildProcess::~ChildProcess() {
    Signal(SIGKILL);
    reaper_.join();
}

void ChildProcess::AwaitAndReap() {
    // Reap only under the lock, so that Signal() never signals a process that reuses the id.
    siginfo_t info = {};
    while (waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    int status = 0;
    rusage usage = {};
    wait4(id_, &status, 0, &usage);
    ending_ = EndingOf(status);
    cpu_time_ = std::chrono::seconds(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                std::chrono::microseconds(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
    ended_.notify_all();
}

void ChildProcess::Signal(int number) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!ending_) kill(id_, number);
}

std::optional<Ending> ChildProcess::AwaitEnd(Duration limit) {
    std::unique_lock<std::mutex> lock(mutex_);
    ended_.wait_for(lock, limit, [this] { return ending_.has_value(); });
    return ending_;
}

std::chrono::microseconds ChildProcess::CpuTime() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return ending_ ? cpu_time_ : CpuTimeOfRunning(id_);
}

}  // namespace morvane_test
