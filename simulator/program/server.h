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

/// The daemon of the program and the interfaces that control it. Used in the main thread and its
/// default main context.
class Server {
  public:
    /// `log`: see `Commands`. Throws what `Daemon` throws. If the bus rejects the control interface
    /// or the runtime directory is not writable, only prints a message on standard error.
    Server(const std::string& address, const Options& options, Commands::Sink log);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    [[nodiscard]] std::string BusName() const { return daemon_.BusName(); }
    /// See `Commands::Execute`.
    std::string Execute(const std::string& line);
    /// See `CompleteCommand`.
    Completion Complete(const std::string& typed) { return CompleteCommand(daemon_, typed); }
    /// Returns after `Stop` or the command `quit`, even if they preceded the call. Throws
    /// `std::runtime_error` if the connection to the bus is lost.
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
