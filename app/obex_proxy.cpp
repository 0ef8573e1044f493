#include "app/obex_proxy.h"

#include "client/client_proxy_context.h"
#include "console/console_input.h"
#include "interfaces/bus_name.h"

#include <unistd.h>

#include <utility>

namespace morvane {

ObexProxy obexProxy("Vantor");

ObexProxy::ObexProxy(std::string title) : title_(std::move(title)) {}

ObexProxy::~ObexProxy() = default;

void ObexProxy::DBusInstance(const std::string& instance) {
    instance_ = instance;
}

std::string ObexProxy::GetBusName() const {
    return instance_.empty() ? kDefaultBusName : std::string(kDefaultBusName) + "." + instance_;
}

std::unique_lock<std::mutex> ObexProxy::LockStart() {
    return std::unique_lock<std::mutex>(start_mutex_.Unchecked());
}

void ObexProxy::AwaitMenuThread(std::unique_lock<std::mutex>& start_lock) {
    start_mutex_.AssertHeld(start_lock);
    while (!started_) {
        start_condition_.wait(start_lock);
    }
}

void ObexProxy::MenuThread() {
    running_ = true;
    {
        // Locked, so that the main thread cannot miss the wake-up between its check and its wait.
        const LockGuard guard(start_mutex_);
        started_ = true;
    }
    start_condition_.notify_all();
    usleep(500000);  // report the objects that are already on the bus before the banner
    RunMenu();
}

void ObexProxy::StopThreads() {
    running_ = false;
    const LockGuard guard(contents_mutex_);
    if (main_loop_) {
        g_main_loop_quit(main_loop_.get());
    }
}

gboolean terminationHandler(void* /*userData*/) {
    obexProxy.StopThreads();
    return G_SOURCE_REMOVE;
}

ObexProxy::Unlocked::Unlocked(ObexProxy& proxy, MenuLock& lock) : lock_(lock) {
    proxy.DestroyReplacedClients();
    lock_.unlock();
    proxy.removal_turns_.LetPass();
}

char ObexProxy::AskKey(MenuLock& lock, const std::string& prompt_path) {
    return AskUnlocked(lock, [&] { return PROXY_MenuInput(prompt_path.c_str()); });
}

unsigned int ObexProxy::AskNumber(MenuLock& lock, const std::string& prompt_path) {
    return AskUnlocked(lock, [&] { return PROXY_InputUint32(prompt_path.c_str(), nullptr); });
}

std::optional<std::string> ObexProxy::AskText(MenuLock& lock, const std::string& prompt_path,
                                              const char* title, unsigned int limit) {
    std::vector<char> text(limit + 1);
    const unsigned int length = AskUnlocked(lock, [&] {
        return PROXY_InputString(prompt_path.c_str(), title, text.data(), limit + 1);
    });
    if (length == kInputLeft) {
        return std::nullopt;
    }
    return text.data();
}

}  // namespace morvane
