#include "simulator/program/tell.h"

#include "simulator/bus/connect.h"
#include "simulator/program/control.h"
#include "simulator/program/running.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <stdexcept>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::Out;
using morvane::VariantPtr;

template <typename Condition>
std::vector<Running> Only(std::vector<Running> all, const Condition& condition) {
    all.erase(
        std::remove_if(all.begin(), all.end(), [&](const Running& one) { return !condition(one); }),
        all.end());
    return all;
}

/// Prefers simulators on the bus of this process, as in a command of --exec.
std::vector<Running> PreferOwnBus(const std::vector<Running>& all) {
    const gchar* address = g_getenv("DBUS_SYSTEM_BUS_ADDRESS");
    const auto on_bus = Only(
        all, [&](const Running& one) { return address != nullptr && one.bus_address == address; });
    return on_bus.empty() ? all : on_bus;
}

Running Choose(const CommandLine& line) {
    std::vector<Running> all = FindRunning();
    if (!line.simulator.empty()) {
        all = Only(all, [&](const Running& one) { return one.process == line.simulator; });
    }
    if (!line.options.instance.empty()) {
        const std::string name = ControlName(line.options.instance);
        all = Only(all, [&](const Running& one) { return one.control_name == name; });
    }
    all = PreferOwnBus(all);
    if (all.empty()) {
        throw std::runtime_error(line.simulator.empty() && line.options.instance.empty()
                                     ? "No simulator is running"
                                     : "No such simulator is running");
    }
    if (all.size() > 1) {
        std::string message = "Several are running; choose by --simulator=PID or --instance=NAME:";
        for (const Running& one : all) {
            message += "\n  " + Describe(one);
        }
        throw std::runtime_error(message);
    }
    return all.front();
}

std::string Tell(GDBusConnection* connection, const std::string& name, const std::string& command) {
    ErrorPtr error;
    const VariantPtr reply(g_dbus_connection_call_sync(
        connection, name.c_str(), kControlPath, kControlInterface, "Execute",
        g_variant_new("(s)", command.c_str()), G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE,
        std::numeric_limits<gint>::max(), nullptr, Out(error)));
    if (!reply) {
        g_dbus_error_strip_remote_error(error.get());
        throw std::runtime_error(error->message);
    }
    const gchar* answer = nullptr;
    g_variant_get(reply.get(), "(&s)", &answer);
    return answer;
}

}  // namespace

void TellRunning(const CommandLine& line) {
    const Running simulator = Choose(line);
    if (IsStopped(simulator)) {
        throw std::runtime_error("The simulator " + simulator.process +
                                 " is stopped, and cannot answer until it continues");
    }
    const auto connection = Connect(simulator.bus_address);
    for (const std::string& command : line.told) {
        std::fputs(Tell(connection.get(), simulator.control_name, command).c_str(), stdout);
        std::fflush(stdout);
    }
}

void ListRunning() {
    for (const Running& one : FindRunning()) {
        std::printf("%s\n", Describe(one).c_str());
    }
}

}  // namespace simulator
