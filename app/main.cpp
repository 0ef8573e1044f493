#include "app/command_line.h"
#include "app/obex_proxy.h"
#include "console/console_output.h"
#include "console/reporting.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <mutex>
#include <string>
#include <thread>

namespace {

// GLib would reuse closed descriptors 0-2 for its own files, which would then be read and written
// as the terminal. /dev/null reads as the end of the input.
void OpenClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0) {
            static_cast<void>(open("/dev/null", O_RDWR));  // gets the lowest free one: `stream`
        }
    }
}

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
    // Not joined if an exception propagates: std::terminate() must run while both threads exist.
    std::thread menu_thread(RunMenuThread, &obexProxy);
    obexProxy.AwaitMenuThread(start_lock);
    obexProxy.GDBusRun();
    menu_thread.join();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    OpenClosedStreams();
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        morvane::PrintError(error);
        return EXIT_FAILURE;
    }
}
