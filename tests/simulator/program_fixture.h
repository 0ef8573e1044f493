#pragma once

#include "support/console.h"
#include "support/programs.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace simulator {

/// The answer to the command quit.
inline const std::string kEnding =
    "The simulator ends: shown at once; an open session ends at the next answer\n";

class ProgramTest : public testing::Test {
  protected:
    using Console = morvane_test::Console;
    using Wiring = morvane_test::Wiring;

    /// The beginning of a shell command that runs the program.
    static std::string ProgramLine() {
        return morvane_test::Launcher() + " '" + morvane_test::SimulatorPath() + "' ";
    }

    ProgramTest() { std::filesystem::create_directory(TemporaryFolder()); }

    /// The folder in which the program creates its temporary directory.
    std::string TemporaryFolder() const { return directory_.File("tmp"); }

    /// Options that run any program in the same environment as `Run`.
    morvane_test::ConsoleOptions Running(std::vector<std::string> words,
                                         Wiring wiring = Wiring::kPipes) const {
        morvane_test::ConsoleOptions options;
        options.program = words.front();
        options.arguments.assign(words.begin() + 1, words.end());
        options.wiring = wiring;
        options.directory = directory_.Path();
        options.environment = {"TMPDIR=" + TemporaryFolder()};
        return options;
    }
    Console& Launch(const morvane_test::ConsoleOptions& options) {
        return consoles_.emplace_back(options);
    }
    morvane_test::ConsoleOptions RunningProgram(const std::vector<std::string>& arguments,
                                                Wiring wiring = Wiring::kPipes) const {
        std::istringstream launcher(morvane_test::Launcher());
        std::vector<std::string> words(std::istream_iterator<std::string>(launcher), {});
        words.push_back(morvane_test::SimulatorPath());
        words.insert(words.end(), arguments.begin(), arguments.end());
        return Running(words, wiring);
    }
    Console& Run(const std::vector<std::string>& arguments, Wiring wiring = Wiring::kPipes) {
        return Launch(RunningProgram(arguments, wiring));
    }
    /// Expects exactly these lines on standard error, no other output, and this exit status.
    void ExpectFailure(const std::vector<std::string>& arguments, const std::string& errors,
                       int status = 1) {
        Console& console = Run(arguments);
        console.ExpectError(errors);
        console.ExpectExit(status);
        EXPECT_EQ(console.Errors(), errors);
    }
    /// Starts the program with these options and waits until it serves on the bus at the address.
    Console& Serve(const std::string& bus_address, const std::vector<std::string>& arguments = {}) {
        morvane_test::ConsoleOptions options = RunningProgram(arguments);
        options.bus_address = bus_address;
        Console& console = Launch(options);
        console.Await("Serving com.veltrisonix");
        console.Await("\n");
        return console;
    }

    static void Quit(Console& console) {
        console.Type("quit");
        console.Expect(kEnding);
        console.ExpectExit(0);
    }

    void TearDown() override {
        for (Console& console : consoles_) {
            if (HasFailure()) std::cout << console.FailureReport();
            console.Finish();
        }
    }

    morvane_test::TemporaryDirectory directory_;

  private:
    std::deque<Console> consoles_;
};

}  // namespace simulator
