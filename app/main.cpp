#include "app/command_line.h"
#include "app/obex_proxy.h"
#include "console/console_output.h"
#include "console/reporting.h"

#include <cstdlib>
#include <exception>
#include <mutex>
#include <string>
#include <thread>

namespace {

void RunMenuThread(morvane::ObexProxy* proxy) {
    if (proxy != nullptr) {
        morvane::PROXY_Print(morvane::kRed, "Run menu\n");
        proxy->MenuThread();
    }
}

int Run(int argc, char** argv) {
    using morvane::obexProxy;
    std::unique_lock<std::mutex> start_lock = obexProxy.LockStart();
    std::string instance;
    if (!morvane::ParseCommandLine(argc, argv, instance)) {
        return -1;
    }
    obexProxy.DBusInstance(instance);
    // Joined on the way out only: an exception with both threads running ends the process.
    std::thread menu_thread(RunMenuThread, &obexProxy);
    obexProxy.AwaitMenuThread(start_lock);
    obexProxy.GDBusRun();
    menu_thread.join();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        morvane::PrintError(error);
        return EXIT_FAILURE;
    }
}
