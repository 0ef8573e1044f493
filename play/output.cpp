#include "play/output.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

namespace play {

bool WriteOutput(std::string_view bytes, Signals* signals) {
    while (!bytes.empty()) {
        std::array<pollfd, 2> waits = {{{STDOUT_FILENO, POLLOUT, 0},
                                        {signals == nullptr ? -1 : signals->Number(), POLLIN, 0}}};
        poll(waits.data(), waits.size(), -1);
        if (waits[0].revents == 0) {
            if (signals != nullptr) {
                signals->Take();
            }
            continue;
        }
        // A pipe that poll() reports as writable accepts PIPE_BUF bytes without blocking.
        const std::size_t size = std::min<std::size_t>(bytes.size(), PIPE_BUF);
        const ssize_t count = write(STDOUT_FILENO, bytes.data(), size);
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EAGAIN && errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace play
