#include "play/play_fixture.h"

#include "support/programs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace morvane_test {

const char kFakeTool[] = R"(
prompt() {
    printf '\033[1;32m%s\033[0m\033[1;31m%s\033[0m' "$1" "$2"
    read -r answer
}
notify() { printf '\n\033[0m%s\n\033[1;32m%s\033[1;31m > \033[0m' "$1" "$2"; }
)";
const char kOnePrompt[] = "prompt Vantor ' > '; echo \"got $answer\"\n";

ConsoleOptions Playing(const std::vector<std::string>& arguments) {
    ConsoleOptions options;
    options.program = "/bin/sh";
    options.arguments = {"-c", "exec \"$@\" 2>&1", "sh"};
    std::istringstream launcher(Launcher());
    options.arguments.insert(options.arguments.end(), std::istream_iterator<std::string>(launcher),
                             {});
    options.arguments.emplace_back(PlayPath());
    options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
    options.wiring = Wiring::kPipes;
    return options;
}

void ExpectGone(const std::string& process) {
    ASSERT_FALSE(process.empty());
    EXPECT_FALSE(std::filesystem::exists("/proc/" + process.substr(0, process.find('\n'))));
}

namespace {

PlayResult RunToEnd(const ConsoleOptions& options) {
    Console console(options);
    const std::optional<Ending> ending = console.AwaitEnd(6 * Patience());
    if (!ending || !ending->status) {
        ADD_FAILURE() << "morvane-play does not end\n" << console.Output();
        return {-1, console.Output()};
    }
    console.AwaitEndOfOutput();
    return {*ending->status, console.Output()};
}

std::string TimeoutOption() {
    return "--timeout=" + std::to_string(Patience().count()) + "ms";
}

}  // namespace

PlayResult PlayOnSimulator(const std::string& session, const std::vector<std::string>& options) {
    const TemporaryDirectory directory;
    const auto write = [&](const char* name, const std::string& text) {
        std::ofstream(directory.File(name)) << text;
        std::filesystem::permissions(directory.File(name), std::filesystem::perms::owner_all);
    };
    for (const auto& [name, program] :
         {std::pair("simulator", SimulatorPath()), std::pair("tool", ToolPath())})
        write(name, "#!/bin/sh\nexec " + Launcher() + " '" + program + "' \"$@\"\n");
    write("a.session", session);
    std::vector<std::string> words = {"./simulator"};
    words.insert(words.end(), options.begin(), options.end());
    words.emplace_back("--exec");
    ConsoleOptions playing =
        Playing({TimeoutOption(), "--simulator=./simulator", "a.session", "--", "./tool"});
    playing.arguments.insert(playing.arguments.begin() + 3, words.begin(), words.end());
    playing.directory = directory.Path();
    return RunToEnd(playing);
}

void PlayTest::Write(const std::string& name, const std::string& text) const {
    std::ofstream(directory_.File(name)) << text;
}

void PlayTest::WriteProgram(const std::string& name, const std::string& text) const {
    Write(name, text);
    std::filesystem::permissions(directory_.File(name), std::filesystem::perms::owner_all);
}

std::string PlayTest::Read(const std::string& name) const {
    std::ifstream file(directory_.File(name));
    return {std::istreambuf_iterator<char>(file), {}};
}

bool PlayTest::Exists(const std::string& name) const {
    return std::filesystem::exists(directory_.File(name));
}

void PlayTest::MakePipe() const {
    Checked(mkfifo(directory_.File("pipe").c_str(), S_IRWXU), "mkfifo");
}

FileDescriptor PlayTest::WriteToPipe(std::string_view text) const {
    const auto deadline = std::chrono::steady_clock::now() + Patience();
    while (std::chrono::steady_clock::now() < deadline) {
        // Fails while there is no reader.
        FileDescriptor pipe(
            open(directory_.File("pipe").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
        if (pipe.Number() >= 0) {
            Checked(static_cast<int>(write(pipe.Number(), text.data(), text.size())), "write");
            return pipe;
        }
        std::this_thread::yield();
    }
    throw std::runtime_error("the script does not open the pipe");
}

PlayResult PlayTest::Run(const std::vector<std::string>& arguments,
                         const std::string& redirections) const {
    ConsoleOptions options = Playing(arguments);
    options.arguments[1] += " " + redirections;
    options.directory = directory_.Path();
    return RunToEnd(options);
}

std::vector<std::string> PlayTest::Behind(const std::string& script,
                                          std::vector<std::string> words) const {
    Write("tool", kFakeTool + script);
    words.insert(words.begin(), TimeoutOption());
    words.insert(words.end(), {"--", "/bin/sh", "tool"});
    return words;
}

PlayResult PlayTest::Play(const std::string& session, const std::string& script,
                          std::vector<std::string> options) const {
    return RunToEnd(Starting(session, script, std::move(options)));
}

ConsoleOptions PlayTest::Starting(const std::string& session, const std::string& script,
                                  std::vector<std::string> options) const {
    Write("a.session", session);
    options.emplace_back("a.session");
    ConsoleOptions playing = Playing(Behind(script, std::move(options)));
    playing.directory = directory_.Path();
    return playing;
}

}  // namespace morvane_test
