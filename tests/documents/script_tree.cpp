#include "documents/script_tree.h"

#include "documents/document.h"
#include "support/programs.h"

#include <filesystem>
#include <fstream>

namespace morvane_test {
namespace {

constexpr char kCtest[] = R"(
for word; do
    [ "$option" != --output-junit ] || results=$word
    option=$word
done
echo '<testcase name="FaultMatrix.Cell/A_AtB" status="run"/>' >"$results"
)";

}  // namespace

ScriptTree::ScriptTree() {
    for (const char* const name : {"bin", "scripts", "build/demo", "build/release", "build/asan"})
        std::filesystem::create_directories(directory_.File(name));
    for (const char* const name : {"scripts/build-lock.sh", "scripts/demo", "scripts/failures",
                                   "scripts/fault-matrix", "scripts/quietly.sh", "scripts/test"})
        std::filesystem::create_symlink(SourcePath(name), File(name));
    for (const char* const name :
         {"bin/cmake", "scripts/install-dependencies", "scripts/check-format", "scripts/picture"})
        Write(name, "");
    Write("bin/ctest", kCtest);
    Write("build/demo/morvane", "exec " + Launcher() + " '" + ToolPath() + "' \"$@\"\n");
    Write("build/demo/morvane-simulator",
          "exec " + Launcher() + " '" + SimulatorPath() + "' \"$@\"\n");
    Write("build/demo/morvane-play", "exec " + Launcher() + " '" + PlayPath() + "' \"$@\"\n");
}

void ScriptTree::Write(const std::string& name, const std::string& script) const {
    std::ofstream(File(name)) << "#!/bin/sh\n" << script;
    std::filesystem::permissions(File(name), std::filesystem::perms::owner_all);
}

ConsoleOptions ScriptTree::Running(const std::string& command, Wiring wiring) const {
    ConsoleOptions options;
    options.program = "/bin/sh";
    options.arguments = {"-c", "PATH=$PWD/bin:$PATH exec " + command + " 2>&1"};
    options.wiring = wiring;
    options.directory = directory_.Path();
    options.environment = {"TMPDIR=" + directory_.Path()};
    return options;
}

std::string ScriptTree::OutputOf(const std::string& command, int status) const {
    Console console(Running(command));
    console.ExpectExit(status, Console::Rest::kIgnored);
    return console.Output();
}

}  // namespace morvane_test
