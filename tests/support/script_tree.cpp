#include "support/script_tree.h"

#include "support/document.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace morvane_test {
namespace {

// CTest's results of one test that passed, in the folder of the preset that comes second.
constexpr char kCtest[] = "echo '<testcase name=\"a\" status=\"run\"/>' >\"build/$2/tests.xml\"\n";

}  // namespace

ScriptTree::ScriptTree() {
    for (const char* const name : {"bin", "scripts", "build/demo", "build/debug", "build/asan"})
        std::filesystem::create_directories(directory_.File(name));
    for (const char* const name :
         {"scripts/build-lock.sh", "scripts/demo", "scripts/quietly.sh", "scripts/test"})
        std::filesystem::create_symlink(SourcePath(name), directory_.File(name));
    for (const char* const name :
         {"bin/cmake", "scripts/install-dependencies", "scripts/check-format",
          "scripts/fault-matrix", "scripts/lint", "scripts/picture"})
        Write(name, "");
    Write("bin/ctest", kCtest);
    WriteProgram("build/demo/morvane", MORVANE_BINARY);
    WriteProgram("build/demo/morvane-simulator", MORVANE_SIMULATOR_BINARY);
}

void ScriptTree::Write(const std::string& name, const std::string& script) const {
    std::ofstream(directory_.File(name)) << "#!/bin/sh\n" << script;
    std::filesystem::permissions(directory_.File(name), std::filesystem::perms::owner_all);
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
