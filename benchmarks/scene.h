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

/// The cost of a task for one process.
struct Cost {
    Microseconds cpu{};
    Microseconds wall{};
    double memory = 0;  ///< resident, KiB
};

/// A running program, measured from its execve() on: see launch.cpp.
class Program : public morvane_test::Console {
  public:
    /// `used` is the file to which morvane-launch writes the CPU time used before execve().
    Program(const morvane_test::ConsoleOptions& options, std::string used);

    Microseconds CpuTime();

  private:
    std::string used_;
};

using ProgramPtr = std::unique_ptr<Program>;

/// A bus, a daemon that sends nothing by itself, and some phones. Programs write to a pipe by
/// default, as in a script.
class Scene {
  public:
    explicit Scene(unsigned phones = 1, morvane_test::Wiring wiring = morvane_test::Wiring::kPipes);

    simulator::Daemon& daemon() { return daemon_; }
    const std::string& Address() const { return bus_.Address(); }
    std::string File(const std::string& name) const { return directory_.File(name); }

    /// Runs any program with the scene's bus as its system bus.
    ProgramPtr Run(const std::string& program, std::vector<std::string> arguments = {},
                   std::vector<std::string> prefix = {});

    // The tool and the programs that it is compared with, each ready for notifications.

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

/// Measures the cost of a program since the construction of the meter.
class Meter {
  public:
    /// The program must already be running.
    explicit Meter(Program& program);
    Cost Read() const;

  private:
    Program& program_;
    Microseconds cpu_;
    std::chrono::steady_clock::time_point start_;
};

/// Resident memory of a running program, in KiB.
double ResidentMemory(const morvane_test::Console& program);
Microseconds Since(std::chrono::steady_clock::time_point start);

}  // namespace morvane_benchmarks
