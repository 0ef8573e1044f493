#include "scene.h"

#include "support/messages.h"

#include <fstream>
#include <stdexcept>
#include <utility>

namespace morvane_benchmarks {
namespace {

using morvane_test::Console;
using morvane_test::ConsoleOptions;
using morvane_test::Prompt;
using morvane_test::ValuePrompt;

constexpr char kName[] = "com.veltrisonix";
constexpr std::chrono::seconds kPatience(300);
// Waking a reader costs the writer more than the write itself, and must not be measured.
constexpr std::chrono::milliseconds kReadingPause(1);

simulator::Options Directory(const std::string& path) {
    simulator::Options options = simulator::Options::Scripted();
    options.directory = path;
    return options;
}

std::string TwoDigits(unsigned number) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    return {kDigits[number >> 4 & 0xF], kDigits[number & 0xF]};
}

void AddPhone(simulator::Daemon& daemon, unsigned number) {
    const std::string high = TwoDigits(number >> 8);
    const std::string low = TwoDigits(number);
    daemon.AddDevice("/com/veltrisonix/hci0/dev_00_1B_DC_07_" + high + "_" + low,
                     "00:1B:DC:07:" + high + ":" + low, "Phone " + std::to_string(number));
}

}  // namespace

Scene::Scene(unsigned phones, morvane_test::Wiring wiring)
    : wiring_(wiring), daemon_(bus_.Address(), Directory(directory_.Path())) {
    for (unsigned number = 0; number < phones; ++number) {
        AddPhone(daemon_, number);
    }
}

ProgramPtr Scene::Run(const std::string& program, std::vector<std::string> arguments,
                      std::vector<std::string> prefix) {
    ConsoleOptions options;
    options.program = program;
    options.wiring = wiring_;
    options.arguments = std::move(arguments);
    const std::string used = directory_.File("used-" + std::to_string(++programs_));
    options.prefix = {MORVANE_LAUNCH, used};
    options.prefix.insert(options.prefix.end(), prefix.begin(), prefix.end());
    options.bus_address = bus_.Address();
    options.directory = directory_.Path();
    options.reading_pause = kReadingPause;
    auto running = std::make_unique<Program>(options, used);
    running->SetPatience(kPatience);
    return running;
}

ProgramPtr Scene::ToolAtMainMenu(std::vector<std::string> prefix) {
    ProgramPtr tool = Run(MORVANE_BINARY, {}, std::move(prefix));
    tool->Await(Prompt());
    return tool;
}

ProgramPtr Scene::ToolAtPhonebookMenu(std::vector<std::string> prefix) {
    ProgramPtr tool = ToolAtMainMenu(std::move(prefix));
    for (const auto& [line, prompt] :
         {std::pair{"c", ValuePrompt("/Select Device")}, std::pair{"0", Prompt("/Phonebook Menu")},
          std::pair{"s", ValuePrompt("/Select Location")},
          std::pair{"0", ValuePrompt("/Select Phonebook")},
          std::pair{"0", Prompt("/Phonebook Menu")}}) {
        tool->Type(line);
        tool->Await(prompt);
    }
    return tool;
}

ProgramPtr Scene::ToolAtTransferMenu(const std::string& content, std::vector<std::string> prefix) {
    ProgramPtr tool = ToolAtPhonebookMenu(std::move(prefix));
    daemon_.SetPullContent(content);
    tool->Type("a");
    tool->Await(Prompt("/Filter Menu"));
    tool->Type("d");
    tool->Await(Prompt("/Transfer Menu"));
    return tool;
}

ProgramPtr Scene::Floor(std::vector<std::string> arguments) {
    daemon_.SetPullContent("nothing");
    ProgramPtr floor = Run(MORVANE_FLOOR, std::move(arguments));
    floor->Await("ready\n");
    return floor;
}

ProgramPtr Scene::GdbusMonitor() {
    ProgramPtr monitor = Run("gdbus", {"monitor", "--system", "--dest", kName});
    monitor->Await(" is owned by ");
    return monitor;
}

ProgramPtr Scene::BusctlMonitor() {
    ProgramPtr monitor = Run("busctl", {"--address=" + Address(), "--no-pager", "monitor", kName});
    // Printed when the monitor is ready.
    monitor->ExpectError("Monitoring bus message stream.");
    return monitor;
}

ProgramPtr Scene::DbusMonitor() {
    ProgramPtr monitor = Run("dbus-monitor", {"--address", Address(), "type='signal'"});
    monitor->Await("member=NameLost\n");
    return monitor;
}

std::vector<std::string> Scene::CallArguments(const std::string& method,
                                              const std::vector<std::string>& arguments) const {
    std::vector<std::string> all = {
        "call",          "--system",
        "--dest",        kName,
        "--object-path", Session(),
        "--method",      std::string(simulator::kPhonebookInterface) + "." + method};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

Program::Program(const ConsoleOptions& options, std::string used)
    : Console(options), used_(std::move(used)) {}

Microseconds Program::CpuTime() {
    double nanoseconds = 0;
    if (!(std::ifstream(used_) >> nanoseconds)) throw std::runtime_error("not started");
    return Console::CpuTime() - Microseconds(nanoseconds / 1000);
}

Meter::Meter(Program& program)
    : program_(program), cpu_(program.CpuTime()), start_(std::chrono::steady_clock::now()) {}

Cost Meter::Read() const {
    return {program_.CpuTime() - cpu_, Since(start_), 0};
}

double ResidentMemory(const Console& program) {
    std::ifstream status("/proc/" + std::to_string(program.ProcessId()) + "/status");
    for (std::string word; status >> word;) {
        if (double kib = 0; word == "VmRSS:" && status >> kib) {
            return kib;
        }
    }
    throw std::runtime_error("no memory figure");
}

Microseconds Since(std::chrono::steady_clock::time_point start) {
    return std::chrono::steady_clock::now() - start;
}

}  // namespace morvane_benchmarks
