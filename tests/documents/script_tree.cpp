#include "documents/script_tree.h"

#include "documents/document.h"
#include "support/programs.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace morvane_test {
namespace {

constexpr char kCtest[] =
    "for word; do\n"
    "    [ \"$option\" != --output-junit ] || results=$word\n"
    "    option=$word\n"
    "done\n"
    "echo '<testcase name=\"FaultMatrix.Cell/A_AtB\" status=\"run\"/>' >\"$results\"\n";

}  // namespace

ScriptTree::ScriptTree() {
    for (const char* const name : {"bin", "scripts", "build/demo", "build/release", "build/asan"})
        std::filesystem::create_directories(directory_.File(name));
    for (const char* const name : {"scripts/build-lock.sh", "scripts/demo", "scripts/failures",
                                   "scripts/fault-matrix", "scripts/quietly.sh", "scripts/test"})
        std::filesystem::create_symlink(SourcePath(name), File(name));
    for (const char* const name : {"bin/cmake", "scripts/install-dependencies",
                                   "scripts/check-format", "scripts/lint", "scripts/picture"})
        Write(name, "");
    Write("bin/ctest", kCtest);
    WriteProgram("build/demo/morvane", ToolPath());
    WriteProgram("build/demo/morvane-simulator", SimulatorPath());
}

void ScriptTree::Write(const std::string& name, const std::string& script) const {
    std::ofstream(File(name)) << "#!/bin/sh\n" << script;
    std::filesystem::permissions(File(name), std::filesystem::perms::owner_all);
}

void ScriptTree::WriteProgram(const std::string& name, const std::string& path) const {
    const char* const launcher = std::getenv("MORVANE_TEST_LAUNCHER");
    Write(name, "exec " + std::string(launcher ? launcher : "") + " '" + path + "' \"$@\"\n");
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

}  // namespace morvane_test
