#include "unit/competing_thread.h"

#include "support/patience.h"

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <string>

namespace morvane_test {

bool IsAsleep(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string stat(std::istreambuf_iterator<char>(file), {});
    const std::size_t name_end = stat.rfind(')');  // the name may contain blanks and brackets
    return name_end != stat.npos && stat.compare(name_end + 2, 1, "S") == 0;
}

bool AwaitSleep(pid_t thread) {
    const auto deadline = std::chrono::steady_clock::now() + Patience();
    while (!IsAsleep(thread)) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::yield();
    }
    return true;
}

void CompetingThread::RunUntilBlocked() {
    thread_ = std::thread([this] {
        id_ = gettid();
        action_();
        is_done_ = true;
    });
    while (!is_done_ && (id_ == 0 || !IsAsleep(id_))) std::this_thread::yield();
}

void CompetingThread::Join() {
    if (thread_.joinable()) thread_.join();
}

}  // namespace morvane_test
