#include "simulator/program/private_bus.h"

#include "simulator/program/file_descriptor.h"
#include "simulator/program/spawn.h"

#include <gio/gio.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace simulator {
namespace {

using morvane::ErrorPtr;
using morvane::TextPtr;

// Without service activation; monitors may receive all messages. The parser requires <listen>,
// which --address overrides.
constexpr char kConfiguration[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
  "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
  </policy>
</busconfig>
)";

void PrepareDaemon(gpointer parent) {
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    setsid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != *static_cast<const pid_t*>(parent)) {
        _exit(EXIT_FAILURE);  // the parent ended before prctl()
    }
}

/// dbus-daemon's address is its only line of output, printed when it listens.
pid_t StartDaemon(const WorkDirectory& directory, int output, int errors) {
    const TextPtr socket(g_dbus_address_escape_value(directory.File("bus").c_str()));
    const std::string configuration = directory.File("bus.conf");
    std::ofstream(configuration) << kConfiguration;
    pid_t parent = getpid();
    ErrorPtr error;
    const pid_t process = Start(
        {{"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", "--config-file=" + configuration,
          std::string("--address=unix:path=") + socket.get(), "--print-address"},
         G_SPAWN_DEFAULT,
         nullptr,
         output,
         errors,
         PrepareDaemon,
         &parent},
        error);
    if (error) {
        throw std::runtime_error(std::string("Cannot start a bus: ") + error->message);
    }
    return process;
}

/// The next line, or the rest of the file, without its newline.
std::string ReadLine(int file) {
    std::string line;
    for (char byte = 0; read(file, &byte, 1) == 1 && byte != '\n';) {
        line += byte;
    }
    return line;
}

}  // namespace

PrivateBus::PrivateBus(const WorkDirectory& directory) : PrivateBus() {
    std::array<int, 2> ends = {-1, -1};
    Checked(pipe2(ends.data(), O_CLOEXEC), "pipe2");
    const FileDescriptor reader(ends[0]);
    FileDescriptor writer(ends[1]);
    const std::string error_file = directory.File("bus.errors");
    const FileDescriptor errors(Checked(
        open(error_file.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600), error_file));
    process_ = StartDaemon(directory, writer.number(), errors.number());
    writer.Close();
    address_ = ReadLine(reader.number());
    if (address_.empty()) {
        lseek(errors.number(), 0, SEEK_SET);
        throw std::runtime_error("Cannot start a bus: " + ReadLine(errors.number()));
    }
}

PrivateBus::~PrivateBus() {
    if (process_ > 0) {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
    }
}

}  // namespace simulator
