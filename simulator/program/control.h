#pragma once

#include "simulator/daemon.h"
#include "simulator/program/command_error.h"

#include "interfaces/glib_ptr.h"

#include <simulator1.h>

#include <functional>
#include <string>

namespace simulator {

inline constexpr char kControlPath[] = "/org/morvane/Simulator";
inline constexpr char kControlInterface[] = "org.morvane.Simulator1";

/// Bus name of the control interface of the daemon with this instance, which may be empty.
std::string ControlName(const std::string& instance);

/// The interface org.morvane.Simulator1 on the daemon's bus, by which other processes control the
/// simulation. It has a connection and a name of its own, so that faults of the daemon do not
/// affect it. Calls are handled in the default main context.
class Control {
  public:
    using Execute = std::function<std::string(const std::string&)>;

    /// `execute` executes a command, like `Commands::Execute`. Throws `std::runtime_error` with
    /// one line if the name cannot be owned.
    Control(const std::string& address, const std::string& instance, Daemon& daemon,
            Execute execute);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    /// Flushes pending replies.
    ~Control();

    [[nodiscard]] const std::string& bus_name() const { return bus_name_; }

  private:
    using Result = morvane::VariantPtr;

    Result OnExecute(const gchar* command);
    Result OnRefuse(const gchar* method, const gchar* error, const gchar* message, guint times);
    Result OnReply(const gchar* method, GVariant* body, guint times);
    Result OnHang(const gchar* method, guint times);
    Result OnOverrideProperty(const gchar* path, const gchar* interface, const gchar* property,
                              GVariant* value);
    Result OnNotify(const gchar* path, const gchar* interface, GVariant* properties);
    Result OnAddDevice(const gchar* path, GVariant* properties);
    Result OnSetPullContent(GVariant* content);
    Result OnListPhones();
    Result OnListSessions();
    Result OnListTransfers();
    Result OnListCalls();

    void Export();
    void OwnName() const;
    /// Safe from any thread.
    void Emit(const char* signal, GVariant* arguments) const;

    Daemon& daemon_;
    const Execute execute_;
    const std::string bus_name_;
    const morvane::GlibPtr<GDBusConnection> connection_;
    const morvane::GlibPtr<OrgMorvaneSimulator1> skeleton_;
    const Subscription calls_;
    const Subscription answers_;
};

}  // namespace simulator
