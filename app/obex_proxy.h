#pragma once

#include "app/obex_device_context.h"
#include "app/removal_turns.h"
#include "console/menu_lock.h"
#include "console/mutex.h"
#include "interfaces/glib_ptr.h"

#include <gio/gio.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace morvane {

class ClientProxyContext;
class PhonebookContext;

/// The application: starts and stops its two threads, follows the daemon's objects and runs the
/// main menu. The only instance, `obexProxy`, is destroyed after main() returns.
///
/// The main thread runs GDBusRun() and its callbacks. The menu thread runs MenuThread() and all
/// menus. Each member is annotated with the mutex that guards it.
class ObexProxy {
  public:
    explicit ObexProxy(std::string title);
    ObexProxy(const ObexProxy&) = delete;
    ObexProxy& operator=(const ObexProxy&) = delete;
    ~ObexProxy();

    // Start and stop (obex_proxy.cpp). Any thread unless documented otherwise.

    /// Main thread, before the menu thread exists. GDBusRun() reports an invalid
    /// name.
    void DBusInstance(const std::string& instance);
    [[nodiscard]] std::string GetBusName() const;

    /// The path that a prompt shows: the title and one segment of its own.
    [[nodiscard]] std::string PromptPath(const char* segment) const { return title_ + segment; }

    /// Main thread: locks the start mutex until main() returns.
    [[nodiscard]] std::unique_lock<std::mutex> LockStart();
    /// Main thread: waits until the menu thread has set the running flag, even if the flag has
    /// been cleared again since.
    void AwaitMenuThread(std::unique_lock<std::mutex>& start_lock);
    /// Body of the menu thread.
    void MenuThread();
    /// Clears the running flag permanently and ends the main loop, now or as soon as it starts.
    void StopThreads() MORVANE_EXCLUDES(contents_mutex_);
    [[nodiscard]] bool IsRunning() const { return running_; }

    // Discovery (discovery.cpp), on the main thread.

    /// Finds and follows the daemon's objects until StopThreads().
    void GDBusRun();
    void ObjectAdded(const std::string& path);
    void ObjectRemoved(const std::string& path);

    // Registry (registry.cpp). Additions never wait for the menu thread; a removal blocks the main
    // loop until that thread next asks the operator.

    /// Main thread. Replaces an existing client; may throw ProxyException.
    void AllocClient(const std::string& path);
    void FreeClient();
    /// Main thread. May throw ProxyException.
    void AllocDevice(const std::string& path);
    /// Removes every device with this path.
    void FreeDevice(const std::string& path);
    /// For objects of other kinds, which are ignored.
    void ClientAddObject(const std::string& /*path*/) {}
    void ClientRemoveObject(const std::string& /*path*/) {}

    // The rest is called on the menu thread with the registry mutex locked.

    /// The daemon's client object, or null.
    [[nodiscard]] ClientProxyContext* Client() const MORVANE_EXCLUDES(contents_mutex_);
    /// Running, and the daemon has its client object.
    [[nodiscard]] bool IsClientValid() const;
    /// Valid, and with a connected session.
    [[nodiscard]] bool IsValid() const;
    /// Whether `phonebook` is the context of the current session. Does not dereference it, so that
    /// a context can ask whether it still exists.
    [[nodiscard]] bool IsCurrent(const PhonebookContext* phonebook) const;

    /// Calls `ask` with the registry mutex unlocked and locks it again on return. Objects that were
    /// valid before the call may have been destroyed.
    template <typename Ask>
    auto AskUnlocked(MenuLock& lock, Ask ask) {
        const Unlocked unlocked(*this, lock);
        return ask();
    }
    [[nodiscard]] char AskKey(MenuLock& lock, const std::string& prompt_path);
    [[nodiscard]] unsigned int AskNumber(MenuLock& lock, const std::string& prompt_path);
    /// The answer, truncated to `limit` bytes; empty if PROXY_InputString() returns `kInputLeft`,
    /// which it never does today.
    [[nodiscard]] std::optional<std::string> AskText(MenuLock& lock, const std::string& prompt_path,
                                                     const char* title, unsigned int limit);

    // Main menu (main_menu.cpp).

    void RunMenu();
    void DisplayMenu() const;
    void DeviceList(bool select) const;
    /// The address of the device that the operator chooses, empty if there are none. Throws
    /// InvalidValueException or InvalidObjectException.
    [[nodiscard]] std::string DeviceSelect(MenuLock&& lock);
    /// Opens a session to a chosen device, runs its menu and removes it.
    void RunSession(MenuLock& lock);
    void RemoveSession();

  private:
    class Unlocked {
      public:
        Unlocked(ObexProxy& proxy, MenuLock& lock);
        Unlocked(const Unlocked&) = delete;
        Unlocked& operator=(const Unlocked&) = delete;
        ~Unlocked() { lock_.lock(); }

      private:
        MenuLock& lock_;
    };

    GMainLoop* CreateMainLoop();
    void AddObject(const std::string& path);
    void DestroyReplacedClients() MORVANE_REQUIRES(registry_mutex_)
        MORVANE_EXCLUDES(contents_mutex_);
    [[nodiscard]] std::unique_ptr<ClientProxyContext> TakeClient() MORVANE_REQUIRES(registry_mutex_)
        MORVANE_EXCLUDES(contents_mutex_);
    [[nodiscard]] std::vector<std::unique_ptr<ObexDeviceContext>> TakeDevices(
        const std::string& path) MORVANE_REQUIRES(registry_mutex_)
        MORVANE_EXCLUDES(contents_mutex_);
    [[nodiscard]] std::vector<const ObexDeviceContext*> Devices() const
        MORVANE_EXCLUDES(contents_mutex_);

    const std::string title_;
    std::string instance_;  // written before there is a second thread

    Mutex start_mutex_;
    std::condition_variable start_condition_;
    bool started_ MORVANE_GUARDED_BY(start_mutex_) = false;
    std::atomic<bool> running_{false};
    static_assert(decltype(running_)::is_always_lock_free);

    // Contexts are used and destroyed only with this mutex locked. Clang checks this for removals;
    // the menus lock it by a MenuLock, which the analysis does not track.
    Mutex registry_mutex_ MORVANE_ACQUIRED_BEFORE(contents_mutex_);
    RemovalTurns removal_turns_;

    // Innermost: not locked during a bus call, output or input.
    mutable Mutex contents_mutex_;
    GlibPtr<GMainLoop> main_loop_ MORVANE_GUARDED_BY(contents_mutex_);
    std::unique_ptr<ClientProxyContext> client_ MORVANE_GUARDED_BY(contents_mutex_);
    std::vector<std::unique_ptr<ObexDeviceContext>> devices_ MORVANE_GUARDED_BY(contents_mutex_);
    // The menu thread may still be running their functions.
    std::vector<std::unique_ptr<ClientProxyContext>> replaced_clients_
        MORVANE_GUARDED_BY(contents_mutex_);
};

extern ObexProxy obexProxy;

/// Handles SIGINT in the main loop; once only, so that a second Ctrl-C ends a hanging program.
gboolean terminationHandler(void* user_data);

}  // namespace morvane
