#include "unit/captured_run.h"

#include "support/file_descriptor.h"
#include "support/patience.h"
#include "support/text_form.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <stdexcept>

namespace morvane_test {
namespace {

Pipe FilledPipe(const std::string& bytes) {
    Pipe pipe = MakePipe();
    Checked(fcntl(pipe.writer.Number(), F_SETPIPE_SZ, 1 << 16), "F_SETPIPE_SZ");
    const ssize_t written = write(pipe.writer.Number(), bytes.data(), bytes.size());
    if (written != static_cast<ssize_t>(bytes.size())) throw std::runtime_error("input too long");
    pipe.writer.Close();
    return pipe;
}

// noexcept: GoogleTest would catch an exception and run the remaining tests in the child.
[[noreturn]] void RunInChild(const std::function<int()>& function, const Pipe& input,
                             const Pipe& output) noexcept {
    dup2(input.reader.Number(), STDIN_FILENO);
    dup2(output.writer.Number(), STDOUT_FILENO);
    const int status = function();
    // Discards what exit() flushes: the function must flush its own output.
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    std::exit(status);
}

// Waits until data or the end can be read; returns false at the deadline.
bool AwaitPacket(int descriptor, std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::ceil<Duration>(deadline - std::chrono::steady_clock::now());
        pollfd wait = {descriptor, POLLIN, 0};
        const int ready = poll(&wait, 1, std::max(0, static_cast<int>(left.count())));
        if (ready >= 0 || errno != EINTR) return Checked(ready, "poll") > 0;
    }
}

// Reads until the end or the deadline.
std::vector<std::string> Packets(int descriptor, std::chrono::steady_clock::time_point deadline,
                                 bool& ended) {
    std::vector<std::string> packets;
    std::array<char, PIPE_BUF> packet = {};
    ended = false;
    while (!ended && AwaitPacket(descriptor, deadline)) {
        const ssize_t count = read(descriptor, packet.data(), packet.size());
        ended = count <= 0;
        if (!ended) packets.emplace_back(packet.data(), static_cast<std::size_t>(count));
    }
    return packets;
}

CapturedRun CaptureSuccess(const std::function<void()>& function, const std::string& input) {
    const auto run = [&] {
        function();
        return 0;
    };
    CapturedRun captured = Capture(run, input);
    EXPECT_EQ(captured.status, 0);
    return captured;
}

}  // namespace

std::string CapturedRun::Output() const {
    return std::accumulate(writes.begin(), writes.end(), std::string());
}

CapturedRun Capture(const std::function<int()>& function, const std::string& input) {
    const Pipe in = FilledPipe(input);
    Pipe out = MakePipe(O_DIRECT);  // packet mode: preserves write boundaries
    std::fflush(nullptr);
    const pid_t child = Checked(fork(), "fork");
    if (child == 0) RunInChild(function, in, out);
    out.writer.Close();
    CapturedRun run;
    const auto deadline = std::chrono::steady_clock::now() + 6 * Patience();
    bool ended = false;
    run.writes = Packets(out.reader.Number(), deadline, ended);
    if (!ended) {
        ADD_FAILURE() << "the function does not return; its output:\n" << Escaped(run.Output());
        kill(child, SIGKILL);
    }
    int status = 0;
    Checked(waitpid(child, &status, 0), "waitpid");
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

std::vector<std::string> WritesOf(const std::function<void()>& function, const std::string& input) {
    return CaptureSuccess(function, input).writes;
}

std::string OutputOf(const std::function<void()>& function, const std::string& input) {
    return CaptureSuccess(function, input).Output();
}

}  // namespace morvane_test
