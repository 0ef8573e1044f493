#include "support/gdbus.h"

#include "support/console.h"

namespace morvane_test {

std::string Gdbus(const std::string& bus_address, const std::string& bus_name,
                  const std::string& path, const std::string& method,
                  const std::vector<std::string>& arguments) {
    ConsoleOptions options = Wired(Wiring::kPipes);
    options.program = "gdbus";
    options.arguments = {"call",          "--system", "--dest",   bus_name,
                         "--object-path", path,       "--method", method};
    options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
    options.bus_address = bus_address;
    options.directory = "/";
    Console console(options);
    console.AwaitEnd(Patience());
    console.AwaitEndOfOutput();
    return console.Output() + console.Errors();
}

std::string CallControl(const std::string& bus_address, const std::string& method,
                        const std::vector<std::string>& arguments) {
    return Gdbus(bus_address, "org.morvane.Simulator", "/org/morvane/Simulator",
                 "org.morvane.Simulator1." + method, arguments);
}

}  // namespace morvane_test
