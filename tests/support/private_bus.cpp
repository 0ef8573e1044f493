#include "support/private_bus.h"

#include "support/file_descriptor.h"
#include "support/transcript.h"

#include <fcntl.h>

#include <csignal>
#include <fstream>
#include <stdexcept>

namespace morvane_test {
namespace {

// No service directories: the bus starts no services.
std::string Configuration(const std::string& address, const std::string& policies) {
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig>\n"
           "  <listen>" +
           address +
           "</listen>\n"
           "  <auth>EXTERNAL</auth>\n" +
           policies + "</busconfig>\n";
}

// dbus-daemon prints its address when it is listening, and nothing else.
std::string FirstLine(int descriptor) {
    Transcript output;
    const Pump pump(descriptor, output);
    if (output.SkipPast("\n", Patience()) != Transcript::Result::kMatched)
        throw std::runtime_error("dbus-daemon printed no address");
    const std::string line = output.Consumed();
    return line.substr(0, line.size() - 1);
}

}  // namespace

const char PrivateBus::kAllowEverything[] =
    "  <policy context=\"default\">\n"
    "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
    "    <allow eavesdrop=\"true\"/>\n"
    "    <allow own=\"*\"/>\n"
    "  </policy>\n";

PrivateBus::PrivateBus(const std::string& policies) {
    std::ofstream(ConfigurationFile())
        << Configuration(SocketAddress(directory_.File("bus")), policies);
    const FileDescriptor nothing(Checked(open("/dev/null", O_RDWR | O_CLOEXEC), "/dev/null"));
    Pipe output = MakePipe();
    process_ = std::make_unique<ChildProcess>(
        ChildSetup{{"dbus-daemon", "--config-file=" + ConfigurationFile(), "--nofork",
                    "--nopidfile", "--nosyslog", "--print-address"},
                   {"LC_ALL=C"},
                   directory_.Path(),
                   nothing.Number(),
                   output.writer.Number(),
                   nothing.Number()});
    output.writer.Close();
    address_ = FirstLine(output.reader.Number());
}

void PrivateBus::Kill() {
    process_->Signal(SIGKILL);
    process_->AwaitEnd(Patience());
}

std::string SocketAddress(const std::string& path) {
    return std::string("unix:path=") +
           morvane::TextPtr(g_dbus_address_escape_value(path.c_str())).get();
}

morvane::GlibPtr<GDBusConnection> ConnectToBus(const std::string& address) {
    constexpr auto kFlags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    morvane::ErrorPtr error;
    morvane::GlibPtr<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
        address.c_str(), kFlags, nullptr, nullptr, morvane::Out(error)));
    if (!connection) throw std::runtime_error(error->message);
    return connection;
}

morvane::VariantPtr CallOnBus(GDBusConnection* bus, const std::string& bus_name, const char* path,
                              const char* interface, const char* method, GVariant* arguments) {
    morvane::ErrorPtr error;
    morvane::VariantPtr reply(g_dbus_connection_call_sync(
        bus, bus_name.c_str(), path, interface, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
        -1, nullptr, morvane::Out(error)));
    if (!reply) throw std::runtime_error(error->message);
    return reply;
}

}  // namespace morvane_test
