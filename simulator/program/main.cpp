#include "simulator/program/command_line.h"
#include "simulator/program/foreground.h"
#include "simulator/program/line_editor.h"
#include "simulator/program/output.h"
#include "simulator/program/phone_book.h"
#include "simulator/program/private_bus.h"
#include "simulator/program/server.h"
#include "simulator/program/tell.h"
#include "simulator/program/work_directory.h"

#include "interfaces/glib_ptr.h"

#include <glib-unix.h>

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using morvane::ErrorPtr;
using morvane::Out;
using morvane::TextPtr;
using simulator::CommandLine;
using simulator::Ending;
using simulator::ExitError;
using simulator::LineEditor;
using simulator::Output;
using simulator::Server;

/// Reads commands from standard input.
struct Console {
    Server& server;
    Output& output;
    std::string typed;  // an incomplete line
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
        console.output.Print(console.server.Execute(line));
    } catch (const std::exception& failure) {
        Complain(failure.what());
    }
}

void ExecuteLines(Console& console) {
    for (std::size_t end = 0; (end = console.typed.find('\n')) != std::string::npos;) {
        const std::string line = console.typed.substr(0, end);
        console.typed.erase(0, end + 1);
        Execute(console, line);
    }
}

/// The daemon keeps running after the end of input, so that it can run in the background.
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

gboolean OnStop(gpointer server) {
    static_cast<Server*>(server)->Stop();
    return G_SOURCE_CONTINUE;
}

/// Keeps SIGHUP ignored under nohup(1).
void StopOnSignals(Server& server) {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        if (signal != SIGHUP || action.sa_handler != SIG_IGN) {
            g_unix_signal_add(signal, OnStop, &server);
        }
    }
}

/// Reads commands with a line editor, for the object's lifetime.
class EditedInput {
  public:
    explicit EditedInput(Console& console)
        : console_(console),
          editor_(simulator::MakeLineEditor(
              [&console](const std::string& line) {
                  Execute(console, line);
                  console.output.Flush();
                  return !console.server.IsQuitting();
              },
              [&console](const std::string& typed) { return console.server.Complete(typed); })) {
        console_.output.WriteBy([this](const std::string& text) { editor_->Write(text); });
        editor_->Start();
    }
    EditedInput(const EditedInput&) = delete;
    EditedInput& operator=(const EditedInput&) = delete;
    ~EditedInput() {
        console_.output.Flush();
        editor_.reset();
        console_.output.WriteBy(nullptr);
    }

  private:
    Console& console_;
    std::unique_ptr<LineEditor> editor_;
};

int Serve(const CommandLine& line) {
    const bool can_edit = simulator::CanEditLines();
    Output output;
    Server server(SystemBusAddress(), line.options,
                  [&output](const std::string& text) { output.Print(text); });
    for (const std::string& command : line.commands) {
        output.Print(server.Execute(command));
    }
    StopOnSignals(server);
    Console console = {server, output, {}};
    output.Begin("Serving " + server.BusName() + "\n");
    std::optional<EditedInput> edited;
    if (can_edit) {
        edited.emplace(console);
    } else {
        g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
                      OnTyped, &console);
    }
    server.Run();
    return EXIT_SUCCESS;
}

/// Runs the command on a private bus. If the simulation ends first, terminates the command.
Ending ServeInBackground(const CommandLine& line) {
    simulator::SignalQueue signals;
    const simulator::WorkDirectory directory;
    const simulator::PrivateBus bus(directory);
    simulator::Options options = line.options;
    if (options.directory.empty()) {
        options.directory = directory.path();
    }
    // Standard output belongs to the command.
    Server server(bus.address(), options,
                  [](const std::string& text) { std::fputs(text.c_str(), stderr); });
    for (const std::string& command : line.commands) {
        server.Execute(command);
    }
    if (server.IsQuitting()) {
        return {EXIT_SUCCESS};
    }
    if (const int signal = signals.TakeTermination(); signal != 0) {
        return {EXIT_FAILURE, signal};
    }
    simulator::Foreground command(signals, line.program, bus.address(),
                                  [&server] { server.Stop(); });
    int status = EXIT_SUCCESS;
    try {
        server.Run();
    } catch (const std::exception& failure) {
        Complain(failure.what());
        status = EXIT_FAILURE;
    }
    command.Terminate();
    const Ending ending = command.AwaitEnd();
    return status != EXIT_SUCCESS ? Ending{status} : ending;
}

int Run(int argc, char** argv) {
    CommandLine line = simulator::ParseCommandLine({argv, argv + argc});
    if (!line.help.empty()) {
        std::fputs(line.help.c_str(), stdout);
        return EXIT_SUCCESS;
    }
    if (line.show_version) {
        std::printf("morvane-simulator %s\n", MORVANE_VERSION);
        return EXIT_SUCCESS;
    }
    if (line.list) {
        simulator::ListRunning();
        return EXIT_SUCCESS;
    }
    if (!line.told.empty()) {
        simulator::TellRunning(line);
        return EXIT_SUCCESS;
    }
    if (!line.phone_book.empty()) {
        line.options.phone_book = simulator::LoadPhoneBook(line.phone_book);
    }
    return line.program.empty() ? Serve(line) : simulator::EndAs(ServeInBackground(line));
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const ExitError& failure) {
        Complain(failure.what());
        return failure.status();
    } catch (const std::exception& failure) {
        Complain(failure.what());
        return EXIT_FAILURE;
    }
}
