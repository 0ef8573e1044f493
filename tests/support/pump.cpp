#include "support/pump.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace morvane_test {

Pump::Pump(int descriptor, Transcript& transcript, Duration pause)
    : stop_(MakePipe()),
      thread_([this, descriptor, &transcript, pause] { Run(descriptor, transcript, pause); }) {
    if (pause > Duration(0)) Checked(fcntl(descriptor, F_SETPIPE_SZ, 1 << 20), "F_SETPIPE_SZ");
}

void Pump::Stop() {
    stop_.writer.Close();
    if (thread_.joinable()) thread_.join();
}

bool Pump::AwaitBytes(int descriptor) {
    std::array<pollfd, 2> waits = {{{descriptor, POLLIN, 0}, {stop_.reader.Number(), POLLIN, 0}}};
    while (poll(waits.data(), waits.size(), -1) < 0 && errno == EINTR) {
    }
    return waits[1].revents == 0;
}

void Pump::Run(int descriptor, Transcript& transcript, Duration pause) {
    std::array<char, 65536> chunk;
    while (AwaitBytes(descriptor)) {
        const ssize_t count = read(descriptor, chunk.data(), chunk.size());
        // A terminal whose other side is closed fails with EIO where a pipe yields 0.
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) break;
        if (count > 0) transcript.Append({chunk.data(), static_cast<std::size_t>(count)});
        if (count < static_cast<ssize_t>(chunk.size())) std::this_thread::sleep_for(pause);
    }
    transcript.End();
}

}  // namespace morvane_test
