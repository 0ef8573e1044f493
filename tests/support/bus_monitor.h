#pragma once

#include <condition_variable>
#include <mutex>
#include <string>

#include "interfaces/glib_ptr.h"
#include "support/here.h"

namespace morvane_test {

/// Counts the calls of one method on a bus, from the construction on, also those to the bus itself,
/// such as "RemoveMatch"; with `argument`, only those whose first argument is a text that contains
/// it.
class BusMonitor {
  public:
    BusMonitor(const std::string& address, const std::string& member,
               const std::string& argument = "");
    BusMonitor(const BusMonitor&) = delete;
    BusMonitor& operator=(const BusMonitor&) = delete;
    ~BusMonitor();

    /// Awaits a call that no earlier `AwaitCall` has seen; fails the test after `Patience()`.
    void AwaitCall(Here here = Here::Now());

  private:
    static GDBusMessage* Filter(GDBusConnection* connection, GDBusMessage* message,
                                gboolean incoming, gpointer monitor);
    bool IsAwaited(GDBusMessage* message) const;

    std::string member_;
    std::string argument_;
    morvane::GlibPtr<GDBusConnection> connection_;
    guint filter_ = 0;
    std::mutex mutex_;
    std::condition_variable counted_;
    unsigned calls_ = 0;  // mutex_
};

}  // namespace morvane_test
