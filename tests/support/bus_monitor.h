#pragma once

#include <condition_variable>
#include <mutex>
#include <string>

#include "interfaces/glib_ptr.h"
#include "support/here.h"

namespace morvane_test {

/// Counts the calls of one method on a bus from its construction on, including calls to the bus
/// itself, such as "RemoveMatch". With `argument`, counts only calls whose first argument is a
/// string that contains it.
class BusMonitor {
  public:
    BusMonitor(const std::string& address, const std::string& member,
               const std::string& argument = "");
    ~BusMonitor();

    /// Waits for a call that no earlier `AwaitCall` has consumed; fails the test after
    /// `Patience()`.
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
    unsigned calls_ = 0;  // guarded by mutex_
};

}  // namespace morvane_test
