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

// The bus library's own descriptors would take the places of those with which we were not started,
// and be read and written as the terminal. Closed input is at its end.
void OpenClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0) {
            static_cast<void>(open("/dev/null", O_RDWR));  // the lowest free descriptor: this one
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
    // Joined on the way out only: an exception with both threads running ends the process.
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
