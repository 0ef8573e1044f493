#include "play/command_line.h"
#include "play/files.h"
#include "play/recorder.h"
#include "play/results.h"
#include "play/typist.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace play {
namespace {

constexpr int kAgrees = 0;
constexpr int kDiffers = 1;
constexpr int kCannotRun = 2;

int PlayFile(const SessionFile& file, PlayOptions options, Results& results, Signals& signals) {
    options.progress = [&](std::size_t line) {
        results.Progress(file.name, line, file.lines.size());
    };
    try {
        Player player(file, options, signals);
        const std::string report = player.Play();
        if (!report.empty()) {
            results.Add(file.name, Results::Verdict::kFailed, report);
            return kDiffers;
        }
        if (player.Differences().IsEmpty()) {
            results.Add(file.name, Results::Verdict::kAgrees, "");
        } else {
            ReplaceFile(file.name, player.Differences().Result());
            results.Add(file.name, Results::Verdict::kUpdated, "");
        }
        return kAgrees;
    } catch (const std::runtime_error& error) {  // CannotRun or std::system_error
        results.Add(file.name, Results::Verdict::kFailed, error.what());
        return kCannotRun;
    }
}

// All files are read before the first is played.
int Play(const CommandLine& line) {
    std::vector<SessionFile> files;
    for (const std::string& name : line.files) {
        files.push_back(ParseSession(name, ReadFile(name)));
    }
    Signals signals;
    Results results(line.tap, files.size());
    int status = kAgrees;
    for (const SessionFile& file : files) {
        status = std::max(status, PlayFile(file, line.play, results, signals));
    }
    return status;
}

// Ends this process by the signal, without a second core dump.
int EndBySignal(int number) {
    prctl(PR_SET_DUMPABLE, 0);
    std::signal(number, SIG_DFL);
    std::raise(number);
    return kCannotRun;
}

int Type(const CommandLine& line) {
    const Ending ending = TypeInput(line.play.command);
    return ending.by_signal ? EndBySignal(ending.number) : ending.number;
}

int Run(const CommandLine& line) {
    switch (line.mode) {
        case CommandLine::Mode::kHelp:
            std::fputs(HelpText().c_str(), stdout);
            return kAgrees;
        case CommandLine::Mode::kVersion:
            std::puts("morvane-play " MORVANE_VERSION);
            return kAgrees;
        case CommandLine::Mode::kRecord:
            Record(line.files.front(), line.play.command);
            return kAgrees;
        case CommandLine::Mode::kType:
            return Type(line);
        case CommandLine::Mode::kPlay:
            break;
    }
    return Play(line);
}

// Otherwise other files would get the descriptors of closed standard streams. Read-only, so that
// writing to a closed stream still fails.
void OpenClosedStreams() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    Descriptor(descriptor).Close();
}

}  // namespace
}  // namespace play

int main(int argc, char** argv) {
    try {
        play::OpenClosedStreams();
        const int status = play::Run(play::ParseCommandLine({argv, argv + argc}));
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
            throw std::runtime_error("cannot write to standard output");
        }
        return status;
    } catch (const play::Interrupted& interrupted) {
        return play::EndBySignal(interrupted.Signal());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "morvane-play: %s\n", error.what());
        return play::kCannotRun;
    }
}
