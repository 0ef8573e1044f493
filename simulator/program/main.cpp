#include "simulator/daemon.h"
#include "simulator/program/command_line.h"
#include "simulator/program/commands.h"
#include "simulator/program/output.h"

#include "interfaces/glib_ptr.h"

#include <glib-unix.h>

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using morvane::ErrorPtr;
using morvane::GlibPtr;
using morvane::Out;
using morvane::TextPtr;
using simulator::CommandLine;
using simulator::Commands;
using simulator::Daemon;
using simulator::Output;

/// The main loop of the program: what is typed, and when to end.
struct Console {
    explicit Console(Daemon& daemon)
        : commands(daemon, [this](const std::string& line) { output.Print(line); }) {}

    Output output;
    Commands commands;
    GlibPtr<GMainLoop> loop{g_main_loop_new(nullptr, FALSE)};
    std::string typed;  // not yet a whole line
    bool bus_lost = false;
};

std::string SystemBusAddress() {
    ErrorPtr error;
    const TextPtr address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, Out(error)));
    if (!address) {
        throw std::runtime_error(error->message);
    }
    return address.get();
}

void Complain(const char* complaint) {
    std::fprintf(stderr, "morvane-simulator: %s\n", complaint);
}

void Execute(Console& console, const std::string& line) {
    try {
        console.output.Print(console.commands.Execute(line));
    } catch (const std::exception& failure) {
        Complain(failure.what());
    }
    if (console.commands.IsQuitting()) {
        g_main_loop_quit(console.loop.get());
    }
}

void ExecuteLines(Console& console) {
    for (std::size_t end = 0; (end = console.typed.find('\n')) != std::string::npos;) {
        const std::string line = console.typed.substr(0, end);
        console.typed.erase(0, end + 1);
        Execute(console, line);
    }
}

/// The end of input leaves the daemon at its work, so that it can run in the background.
gboolean OnTyped(gint file, GIOCondition /*condition*/, gpointer console) {
    char buffer[4096];
    const ssize_t length = read(file, buffer, sizeof buffer);
    auto& to = *static_cast<Console*>(console);
    if (length > 0) {
        to.typed.append(buffer, static_cast<std::size_t>(length));
    } else {
        to.typed += '\n';  // the last line may lack its end
    }
    ExecuteLines(to);
    return length > 0 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

gboolean OnStop(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

/// Runs in the daemon's thread.
void OnBusLost(Console& console) {
    const auto stop = [](gpointer data) -> gboolean {
        auto& lost = *static_cast<Console*>(data);
        lost.bus_lost = true;
        g_main_loop_quit(lost.loop.get());
        return G_SOURCE_REMOVE;
    };
    g_idle_add(stop, &console);
}

int Serve(Daemon& daemon, const CommandLine& line) {
    Console console(daemon);
    daemon.OnBusLost([&console] { OnBusLost(console); });
    for (const std::string& command : line.commands) {
        console.output.Print(console.commands.Execute(command));
    }
    for (const int signal : {SIGINT, SIGTERM}) {
        g_unix_signal_add(signal, OnStop, console.loop.get());
    }
    g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), OnTyped,
                  &console);
    console.output.Begin("Serving " + daemon.BusName() + "\n");
    if (!console.commands.IsQuitting()) {
        g_main_loop_run(console.loop.get());
    }
    daemon.OnBusLost(nullptr);
    if (console.bus_lost) {
        throw std::runtime_error("The bus has gone away");
    }
    return EXIT_SUCCESS;
}

int Run(int argc, char** argv) {
    const CommandLine line = simulator::ParseCommandLine({argv, argv + argc});
    if (!line.help.empty()) {
        std::fputs(line.help.c_str(), stdout);
        return EXIT_SUCCESS;
    }
    if (line.show_version) {
        std::printf("morvane-simulator %s\n", MORVANE_VERSION);
        return EXIT_SUCCESS;
    }
    Daemon daemon(SystemBusAddress(), line.options);
    return Serve(daemon, line);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& failure) {
        Complain(failure.what());
        return EXIT_FAILURE;
    }
}
