#include "work.h"

#include "support/messages.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace morvane_benchmarks {
namespace {

using morvane_test::Console;
using morvane_test::Normal;
using morvane_test::Prompt;
using std::chrono::steady_clock;

constexpr char kLastStatus[] = "the last one";
constexpr unsigned kPiece = 512;  // bytes of a file that the tool prints at once
constexpr unsigned kMebibyte = 1u << 20;

std::size_t Count(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
    return count;
}

Cost WholeRun(Program& program, steady_clock::time_point start) {
    program.ExpectExit(0, Console::Rest::kIgnored);
    return {program.CpuTime(), Since(start), 0};
}

// A listening program and the text that it prints for each change; null if it prints nothing.
struct Listener {
    const char* name;
    ProgramPtr (*start)(Scene& scene);
    const char* mark;
};

ProgramPtr StartTool(Scene& scene) {
    return scene.ToolAtTransferMenu("nothing");
}

constexpr Listener kTool = {"morvane", StartTool, "Status Attribute Received: "};
constexpr Listener kFloor = {"floor", [](Scene& scene) { return scene.Floor({"download"}); },
                             nullptr};
constexpr Listener kGdbusMonitor = {"gdbus monitor",
                                    [](Scene& scene) { return scene.GdbusMonitor(); }, "'Status'"};
constexpr Listener kBusctlMonitor = {
    "busctl monitor", [](Scene& scene) { return scene.BusctlMonitor(); }, "\"Status\""};
constexpr Listener kDbusMonitor = {"dbus-monitor", [](Scene& scene) { return scene.DbusMonitor(); },
                                   "\"Status\""};

// Monitors create no transfer: for them changes are announced at a path without an object.
std::string TransferOf(Scene& scene) {
    return scene.daemon().Transfers().empty() ? std::string("/com/veltrisonix/obex/client/none")
                                              : scene.Transfer();
}

void AnnounceEnd(Scene& scene) {
    scene.daemon().Notify(TransferOf(scene), simulator::kTransferInterface, "Status",
                          g_variant_new_string(kLastStatus));
}

Cost StatusChanges(const Listener& listener, unsigned size) {
    Scene scene;
    const ProgramPtr program = listener.start(scene);
    const Meter meter(*program);
    scene.daemon().Flood(TransferOf(scene), simulator::kTransferInterface, "Status", size - 1,
                         [](std::size_t index) {
                             return g_variant_new_string(index % 2 == 0 ? "active" : "suspended");
                         });
    AnnounceEnd(scene);
    program->Await(kLastStatus);
    const Cost cost = meter.Read();
    if (listener.mark != nullptr && Count(program->Output(), listener.mark) < size) {
        throw std::runtime_error(std::string(listener.name) + " missed a change");
    }
    return cost;
}

Cost ProgressChanges(const Listener& listener, unsigned size) {
    Scene scene;
    const ProgramPtr program = listener.start(scene);
    const std::string transfer = TransferOf(scene);
    scene.daemon().Notify(transfer, simulator::kTransferInterface, "Size",
                          g_variant_new_uint64(size));
    const Meter meter(*program);
    scene.daemon().Flood(transfer, simulator::kTransferInterface, "Transferred", size,
                         [](std::size_t index) { return g_variant_new_uint64(index + 1); });
    AnnounceEnd(scene);
    program->Await(kLastStatus);
    const Cost cost = meter.Read();
    if (listener.mark != nullptr && Count(program->Output(), "Transferred Percent: ") != 100) {
        throw std::runtime_error("not each percentage came once");
    }
    return cost;
}

void PrepareListing(Scene& scene, unsigned size) {
    GVariantBuilder cards;
    g_variant_builder_init(&cards, G_VARIANT_TYPE("a(ss)"));
    for (unsigned number = 0; number < size; ++number) {
        const std::string handle = std::to_string(number) + ".vcf";
        g_variant_builder_add(&cards, "(ss)", handle.c_str(), "Surname;Given Name;;;");
    }
    scene.daemon().Reply("List", g_variant_new("(a(ss))", &cards));
}

Cost ToolLists(unsigned size) {
    Scene scene;
    const ProgramPtr tool = scene.ToolAtPhonebookMenu();
    PrepareListing(scene, size);
    tool->Type("l");
    tool->Await(Prompt("/Filter Menu"));
    const Meter meter(*tool);
    tool->Type("d");
    tool->Await(Prompt("/Phonebook Menu"));
    return meter.Read();
}

Cost FloorLists(unsigned size) {
    Scene scene;
    const ProgramPtr floor = scene.Floor({"listing"});
    PrepareListing(scene, size);
    const Meter meter(*floor);
    floor->Type("");
    floor->Await("listed " + std::to_string(size) + "\n");
    return meter.Read();
}

Cost GdbusLists(unsigned size) {
    Scene scene;
    const ProgramPtr tool = scene.ToolAtPhonebookMenu();  // keeps a session open
    PrepareListing(scene, size);
    const auto start = steady_clock::now();
    return WholeRun(*scene.Run("gdbus", scene.CallArguments("List", {"{}"})), start);
}

std::string FileOf(unsigned mebibytes) {
    std::string content(std::size_t{mebibytes} * kMebibyte, 'x');
    for (std::size_t at = 63; at < content.size(); at += 64) content[at] = '\n';
    return content;
}

ProgramPtr ToolWithFile(Scene& scene, unsigned mebibytes, std::vector<std::string> prefix = {}) {
    ProgramPtr tool = scene.ToolAtTransferMenu(FileOf(mebibytes), std::move(prefix));
    scene.daemon().CompleteTransfer(scene.Transfer());
    tool->Await("Status Attribute Received: complete\n");
    return tool;
}

Cost ToolShowsFile(unsigned mebibytes) {
    Scene scene;
    const ProgramPtr tool = ToolWithFile(scene, mebibytes);
    const Meter meter(*tool);
    tool->Type("d");
    tool->Await(Normal("\n") + Prompt("/Transfer Menu"));
    return meter.Read();
}

Cost CatShowsFile(unsigned mebibytes) {
    Scene scene(0);
    const std::string file = scene.File("phonebook.vcf");
    std::ofstream(file) << FileOf(mebibytes);
    const auto start = steady_clock::now();
    return WholeRun(*scene.Run("cat", {file}), start);
}

// Copies with the tool's block size: the cost of the system calls alone.
Cost DdShowsFile(unsigned mebibytes) {
    Scene scene(0);
    const std::string file = scene.File("phonebook.vcf");
    std::ofstream(file) << FileOf(mebibytes);
    const auto start = steady_clock::now();
    return WholeRun(*scene.Run("dd", {"if=" + file, "bs=512", "status=none"}), start);
}

Cost ToolDiscovers(unsigned phones) {
    Scene scene(phones);
    const auto start = steady_clock::now();
    const ProgramPtr tool = scene.Run(MORVANE_BINARY);
    for (unsigned found = 0; found < phones; ++found) tool->Await("Found Device ");
    return {tool->CpuTime(), Since(start), ResidentMemory(*tool)};
}

Cost FloorDiscovers(unsigned phones) {
    Scene scene(phones);
    const auto start = steady_clock::now();
    const ProgramPtr floor = scene.Run(MORVANE_FLOOR);
    floor->Await("ready\n");
    return {floor->CpuTime(), Since(start), ResidentMemory(*floor)};
}

Cost GdbusReadsManagedObjects(unsigned phones) {
    Scene scene(phones);
    const auto start = steady_clock::now();
    return WholeRun(
        *scene.Run("gdbus", {"call", "--system", "--dest", "com.veltrisonix", "--object-path", "/",
                             "--method", "org.freedesktop.DBus.ObjectManager.GetManagedObjects"}),
        start);
}

Microseconds UntilCalled(Scene& scene, const std::function<void()>& cause) {
    scene.daemon().ForgetCalls();
    const auto start = steady_clock::now();
    cause();
    if (!scene.daemon().AwaitCall("GetSize", std::chrono::seconds(60))) {
        throw std::runtime_error("no call came");
    }
    return Since(start);
}

// The menus pause before the prompt, so the measured time contains no pause.
Cost ToolCalls(unsigned times) {
    Scene scene;
    const ProgramPtr tool = scene.ToolAtPhonebookMenu();
    const Meter meter(*tool);
    Cost cost;
    for (unsigned time = 0; time < times; ++time) {
        cost.wall += UntilCalled(scene, [&] { tool->Type("g"); });
        tool->Await(Prompt("/Phonebook Menu"));
    }
    cost.cpu = meter.Read().cpu;
    return cost;
}

Cost GdbusCalls(unsigned times) {
    Scene scene;
    const ProgramPtr tool = scene.ToolAtPhonebookMenu();
    Cost cost;
    for (unsigned time = 0; time < times; ++time) {
        ProgramPtr call;
        cost.wall +=
            UntilCalled(scene, [&] { call = scene.Run("gdbus", scene.CallArguments("GetSize")); });
        cost.cpu += WholeRun(*call, steady_clock::now()).cpu;
    }
    return cost;
}

Cost AtRest(const Listener& listener) {
    Scene scene;
    const ProgramPtr program = listener.start(scene);
    return {{}, {}, ResidentMemory(*program)};
}

template <typename Start>
Cost StartUp(Start start) {
    Scene scene;
    const auto begin = steady_clock::now();
    const ProgramPtr program = start(scene);
    return {program->CpuTime(), Since(begin), ResidentMemory(*program)};
}

template <typename Run>
std::vector<Subject> Subjects(Run run, const std::vector<Listener>& listeners) {
    std::vector<Subject> subjects;
    for (const Listener& listener : listeners) {
        subjects.push_back(
            {listener.name, [run, listener](unsigned size) { return run(listener, size); }});
    }
    return subjects;
}

Cost RestingCost(const Listener& listener, unsigned /*size*/) {
    return AtRest(listener);
}

}  // namespace

const Quantity kCpu = {"CPU ms", [](const Cost& cost) { return cost.cpu.count() / 1000; }};
const Quantity kWall = {"wall ms", [](const Cost& cost) { return cost.wall.count() / 1000; }};
const Quantity kMemory = {"memory KiB", [](const Cost& cost) { return cost.memory; }};

std::vector<Work> AllWorks() {
    return {
        {"Status changes, each printed while a prompt is displayed",
         "changes",
         {5000, 10000, 20000},
         Subjects(StatusChanges, {kTool, kFloor, kGdbusMonitor, kBusctlMonitor, kDbusMonitor}),
         {{"floor", kCpu, 1.1}, {"gdbus monitor", kCpu, 1.2}},
         {&kCpu, &kWall}},
        {"Progress changes, 100 of them printed",
         "changes",
         {5000, 10000, 20000},
         Subjects(ProgressChanges, {kTool, kFloor}),
         {{"floor", kCpu, 1.03}},
         {&kCpu, &kWall}},
        {"A listing",
         "vCards",
         {5000, 10000, 20000},
         {{"morvane", ToolLists}, {"floor", FloorLists}, {"gdbus call", GdbusLists}},
         {{"gdbus call", kCpu, 0.8}},
         {&kCpu, &kWall}},
        {"Showing a file",
         "MiB",
         {2, 4, 8},
         {{"morvane", ToolShowsFile}, {"cat", CatShowsFile}, {"dd bs=512", DdShowsFile}},
         {},
         {&kCpu, &kWall}},
        {"Discovery at start",
         "devices",
         {100, 1000, 2000},
         {{"morvane", ToolDiscovers},
          {"floor", FloorDiscovers},
          {"gdbus call", GdbusReadsManagedObjects}},
         {{"floor", kCpu, 1.05}, {"floor", kWall, 1.05}},
         {&kCpu, &kWall, &kMemory}},
        {"From a typed line to the call on the bus",
         "calls",
         {5, 10, 20},
         {{"morvane", ToolCalls}, {"gdbus call", GdbusCalls}},
         {{"gdbus call", kWall, 0.1}},
         {&kWall, &kCpu}},
        {"Resident at the transfer menu",
         "programs",
         {1},
         Subjects(RestingCost, {kTool, kFloor, kGdbusMonitor}),
         {{"gdbus monitor", kMemory, 1.15}},
         {&kMemory}},
        {"Start-up",
         "programs",
         {1},
         {{"morvane",
           [](unsigned) { return StartUp([](Scene& s) { return s.ToolAtMainMenu(); }); }},
          {"floor", [](unsigned) { return StartUp([](Scene& s) { return s.Floor(); }); }},
          {"gdbus monitor",
           [](unsigned) { return StartUp([](Scene& s) { return s.GdbusMonitor(); }); }}},
         {{"gdbus monitor", kCpu, 1.3}},
         {&kCpu, &kMemory}},
    };
}

std::string CountedWrites() {
    constexpr unsigned kMebibytes = 8;
    Scene scene;
    const std::string trace = scene.File("trace");
    const ProgramPtr tool =
        ToolWithFile(scene, kMebibytes, {"strace", "-f", "-qq", "-e", "trace=write", "-o", trace});
    tool->Type("d");
    tool->Await(Normal("\n") + Prompt("/Transfer Menu"));
    tool->CloseInput();
    tool->ExpectExit(0, Console::Rest::kIgnored);
    std::ostringstream calls;
    calls << std::ifstream(trace).rdbuf();
    constexpr std::size_t kFrame = sizeof "\x1b[0m" - 1;  // a colour before, the reset after
    const std::string written = ") = " + std::to_string(kPiece + 2 * kFrame) + "\n";
    return "Showing 8 MiB: " + std::to_string(kMebibytes * kMebibyte / kPiece) + " pieces of " +
           std::to_string(kPiece) + " bytes, " + std::to_string(Count(calls.str(), written)) +
           " calls of write that carry one whole, with its colour and reset.";
}

std::string LoadRate() {
    constexpr unsigned kSignals = 20000;
    Scene scene;
    const auto flood = [&] {
        const auto start = steady_clock::now();
        scene.daemon().Flood("/com/veltrisonix/obex/client/none", simulator::kTransferInterface,
                             "Status", kSignals,
                             [](std::size_t) { return g_variant_new_string("active"); });
        return std::to_string(static_cast<int>(kSignals / (Since(start).count() / 1e6)));
    };
    return "The load, delivered to the bus without a receiver: " + flood() + " signals a second.";
}

}  // namespace morvane_benchmarks
