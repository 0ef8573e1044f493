#include "play/signals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include <sys/signalfd.h>

namespace play {
namespace {

constexpr std::array kEnding = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

// A blocked signal becomes pending even if its disposition is SIG_IGN.
bool IsIgnored(int number) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

}  // namespace

int Checked(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

Signals::Signals(const std::vector<int>& others) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGCHLD);
    for (const int number : kEnding) {
        if (!IsIgnored(number)) {
            sigaddset(&set, number);
        }
    }
    for (const int number : others) {
        sigaddset(&set, number);
    }
    descriptor_ = Descriptor(Checked(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC), "signalfd"));
    pthread_sigmask(SIG_BLOCK, &set, &before_);
}

Signals::~Signals() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

int Signals::Take() {
    signalfd_siginfo info = {};
    if (read(descriptor_.Number(), &info, sizeof info) != sizeof info) {
        return 0;
    }
    const int number = static_cast<int>(info.ssi_signo);
    if (std::find(kEnding.begin(), kEnding.end(), number) != kEnding.end()) {
        throw Interrupted(number);
    }
    return number;
}

}  // namespace play
