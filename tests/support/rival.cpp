#include "support/rival.h"

#include <unistd.h>

#include <fstream>
#include <string>

namespace morvane_test {

void Rival::GoAsFarAsPossible() {
    thread_ = std::thread([this] {
        id_ = gettid();
        act_();
        is_done_ = true;
    });
    while (!is_done_ && !IsAsleep()) std::this_thread::yield();
}

void Rival::Join() {
    if (thread_.joinable()) thread_.join();
}

bool Rival::IsAsleep() const {
    if (id_ == 0) return false;
    std::ifstream stat("/proc/self/task/" + std::to_string(id_) + "/stat");
    std::string number, name, state;
    stat >> number >> name >> state;
    return state == "S";
}

}  // namespace morvane_test
