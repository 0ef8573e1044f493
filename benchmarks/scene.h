#pragma once

#include "simulator/daemon.h"
#include "support/console.h"
#include "support/private_bus.h"
#include "support/temporary_directory.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace morvane_benchmarks {

using Microseconds = std::chrono::duration<double, std::micro>;

/// What a piece of work has cost one process.
struct Cost {
    Microseconds cpu{};
    Microseconds wall{};
    double memory = 0;  ///< resident, KiB
};

/// A running program, measured from the moment that it is itself: see launch.cpp.
class Program : public morvane_test::Console {
  public:
    /// `used` is the file that is told what was used before.
    Program(const morvane_test::ConsoleOptions& options, std::string used);

    Microseconds CpuTime();

  private:
    std::string used_;
};

using ProgramPtr = std::unique_ptr<Program>;

/// A bus, a daemon that does nothing by itself, and so many phones. Programs write to a pipe, as in
/// a script, unless told otherwise.
class Scene {
  public:
    explicit Scene(unsigned phones = 1, morvane_test::Wiring wiring = morvane_test::Wiring::kPipes);

    simulator::Daemon& daemon() { return daemon_; }
    const std::string& Address() const { return bus_.Address(); }
    std::string File(const std::string& name) const { return directory_.File(name); }

    /// Any program, with the scene's bus as its system bus.
    ProgramPtr Run(const std::string& program, std::vector<std::string> arguments = {},
                   std::vector<std::string> prefix = {});

    // The tool and its rivals, each ready for what the daemon announces next.

    ProgramPtr ToolAtMainMenu(std::vector<std::string> prefix = {});
    ProgramPtr ToolAtPhonebookMenu(std::vector<std::string> prefix = {});
    /// At the transfer menu, with this content to be downloaded.
    ProgramPtr ToolAtTransferMenu(const std::string& content, std::vector<std::string> prefix = {});
    /// See floor.cpp.
    ProgramPtr Floor(std::vector<std::string> arguments = {});
    ProgramPtr GdbusMonitor();
    ProgramPtr BusctlMonitor();
    ProgramPtr DbusMonitor();

    std::string Session() const { return daemon_.Sessions().back(); }
    std::string Transfer() const { return daemon_.Transfers().back(); }

    /// The arguments of a `gdbus call` to the session.
    std::vector<std::string> CallArguments(const std::string& method,
                                           const std::vector<std::string>& arguments = {}) const;

  private:
    morvane_test::Wiring wiring_;
    morvane_test::TemporaryDirectory directory_;
    morvane_test::PrivateBus bus_;
    simulator::Daemon daemon_;
    unsigned programs_ = 0;
};

/// Measures from its making on.
class Meter {
  public:
    /// A program that runs already.
    explicit Meter(Program& program);
    Cost Read() const;

  private:
    Program& program_;
    Microseconds cpu_;
    std::chrono::steady_clock::time_point start_;
};

/// KiB, of a program that runs.
double ResidentMemory(const morvane_test::Console& program);
Microseconds Since(std::chrono::steady_clock::time_point start);

}  // namespace morvane_benchmarks
