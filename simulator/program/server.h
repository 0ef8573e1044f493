#pragma once

#include "simulator/daemon.h"
#include "simulator/program/commands.h"
#include "simulator/program/completion.h"
#include "simulator/program/control.h"
#include "simulator/program/running.h"

#include "interfaces/glib_ptr.h"

#include <optional>
#include <string>

namespace simulator {

/// The daemon of the program, and what controls it, in the main thread and its default main
/// context.
class Server {
  public:
    /// `log`: see `Commands`. Throws what `Daemon` throws. A bus that does not admit the control
    /// interface, or a runtime directory that cannot be written, is reported on standard error
    /// only.
    Server(const std::string& address, const Options& options, Commands::Sink log);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    [[nodiscard]] std::string BusName() const { return daemon_.BusName(); }
    /// See `Commands::Execute`.
    std::string Execute(const std::string& line);
    /// See `CompleteCommand`.
    Completion Complete(const std::string& typed) { return CompleteCommand(daemon_, typed); }
    /// Returns after `Stop` or the command `quit`, even if that was before. Throws
    /// `std::runtime_error` when the bus is lost.
    void Run();
    [[nodiscard]] bool IsQuitting() const { return commands_.IsQuitting(); }
    void Stop() { g_main_loop_quit(loop_.get()); }

  private:
    void OnBusLost();
    void OfferControl(const std::string& address, const std::string& instance);

    Daemon daemon_;
    Commands commands_;
    const morvane::GlibPtr<GMainLoop> loop_{g_main_loop_new(nullptr, FALSE)};
    bool bus_is_lost_ = false;
    std::optional<Control> control_;
    std::optional<RunningFile> file_;
};

}  // namespace simulator
