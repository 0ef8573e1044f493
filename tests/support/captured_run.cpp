#include "support/captured_run.h"

#include "support/file_descriptor.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <climits>
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

[[noreturn]] void RunInChild(const std::function<int()>& function, const Pipe& input,
                             const Pipe& output) {
    dup2(input.reader.Number(), STDIN_FILENO);
    dup2(output.writer.Number(), STDOUT_FILENO);
    const int status = function();
    // Only now, so that exit() cannot write what the function should have flushed.
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    std::exit(status);
}

std::vector<std::string> Packets(int descriptor) {
    std::vector<std::string> packets;
    std::array<char, PIPE_BUF> packet = {};
    for (ssize_t count; (count = read(descriptor, packet.data(), packet.size())) > 0;)
        packets.emplace_back(packet.data(), static_cast<std::size_t>(count));
    return packets;
}

CapturedRun CaptureWell(const std::function<void()>& function, const std::string& input) {
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
    Pipe out = MakePipe(O_DIRECT);  // keeps the bounds of every write
    std::fflush(nullptr);
    const pid_t child = Checked(fork(), "fork");
    if (child == 0) RunInChild(function, in, out);
    out.writer.Close();
    CapturedRun run;
    run.writes = Packets(out.reader.Number());
    int status = 0;
    Checked(waitpid(child, &status, 0), "waitpid");
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

std::vector<std::string> WritesOf(const std::function<void()>& function, const std::string& input) {
    return CaptureWell(function, input).writes;
}

std::string OutputOf(const std::function<void()>& function, const std::string& input) {
    return CaptureWell(function, input).Output();
}

}  // namespace morvane_test
