#pragma once

#include "interfaces/glib_ptr.h"
#include "support/here.h"
#include "support/patience.h"
#include "support/private_bus.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace simulator {

/// A D-Bus client of a daemon; arguments and results are GVariant texts. Used in one thread.
class TestClient {
  public:
    explicit TestClient(const std::string& bus_address)
        : connection_(morvane_test::ConnectToBus(bus_address)) {
        subscription_ = g_dbus_connection_signal_subscribe(
            connection_.get(), nullptr, nullptr, nullptr, nullptr, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, Remember, this, nullptr);
        Ping();  // after the reply the bus has added the match rule
    }
    ~TestClient() { g_dbus_connection_signal_unsubscribe(connection_.get(), subscription_); }
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;

    /// Returns the reply's tuple, or "error.Name: message". "com.veltrisonix." is prepended to
    /// `method` unless it begins with "org.".
    std::string Call(const std::string& path, const std::string& method,
                     const std::string& arguments = "()",
                     const std::string& bus_name = "com.veltrisonix") {
        const std::string full =
            method.rfind("org.", 0) == 0 ? method : "com.veltrisonix." + method;
        const std::size_t dot = full.rfind('.');
        morvane::ErrorPtr error;
        GVariant* body = g_variant_new_parsed(arguments.c_str());
        const morvane::VariantPtr reply(g_dbus_connection_call_sync(
            connection_.get(), bus_name.c_str(), path.c_str(), full.substr(0, dot).c_str(),
            full.substr(dot + 1).c_str(), body, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
            morvane::Out(error)));
        return reply ? Print(reply.get()) : Explain(*error);
    }

    /// All properties of an interface, or one.
    std::string GetAll(const std::string& path, const std::string& interface) {
        return Call(path, "org.freedesktop.DBus.Properties.GetAll",
                    "('com.veltrisonix." + interface + "',)");
    }
    std::string Get(const std::string& path, const std::string& interface,
                    const std::string& name) {
        return Call(path, "org.freedesktop.DBus.Properties.Get",
                    "('com.veltrisonix." + interface + "', '" + name + "')");
    }

    /// The signals received since the last call, each "/path Member(body)". Includes all that the
    /// daemon has sent so far.
    std::vector<std::string> TakeSignals() {
        Ping();
        while (g_main_context_pending(nullptr) != FALSE) {
            g_main_context_iteration(nullptr, FALSE);
        }
        std::vector<std::string> taken;
        taken.swap(signals_);
        return taken;
    }

    /// Waits for a signal and consumes it and those before it. Fails the test after `Patience()`.
    void AwaitSignal(const std::string& signal,
                     morvane_test::Here here = morvane_test::Here::Now()) {
        const guint wake_ups = g_timeout_add(
            100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
        const auto deadline = std::chrono::steady_clock::now() + morvane_test::Patience();
        auto found = signals_.end();
        while ((found = std::find(signals_.begin(), signals_.end(), signal)) == signals_.end() &&
               std::chrono::steady_clock::now() < deadline)
            g_main_context_iteration(nullptr, TRUE);
        g_source_remove(wake_ups);
        if (found == signals_.end())
            morvane_test::FailTest(here, "not received: " + signal +
                                             "\nreceived: " + testing::PrintToString(signals_));
        signals_.erase(signals_.begin(), found + 1);
    }

  private:
    void Ping() { Call("/", "org.freedesktop.DBus.Peer.Ping", "()", "org.freedesktop.DBus"); }

    static std::string Print(GVariant* value) {
        return morvane::TextPtr(g_variant_print(value, TRUE)).get();
    }

    static std::string Explain(GError& error) {
        const morvane::TextPtr name(g_dbus_error_get_remote_error(&error));
        g_dbus_error_strip_remote_error(&error);
        return std::string(name ? name.get() : "") + ": " + error.message;
    }

    static void Remember(GDBusConnection*, const gchar*, const gchar* path, const gchar* interface,
                         const gchar* member, GVariant* body, gpointer self) {
        if (std::string(interface) == "org.freedesktop.DBus") return;
        static_cast<TestClient*>(self)->signals_.push_back(std::string(path) + " " + member +
                                                           Print(body));
    }

    morvane::GlibPtr<GDBusConnection> connection_;
    guint subscription_ = 0;
    std::vector<std::string> signals_;
};

}  // namespace simulator
