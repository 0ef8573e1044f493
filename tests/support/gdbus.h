#pragma once

#include <string>
#include <vector>

namespace morvane_test {

/// Calls a method with gdbus(1), a client that shares no code with this project. Returns its
/// standard output and standard error.
std::string Gdbus(const std::string& bus_address, const std::string& bus_name,
                  const std::string& path, const std::string& method,
                  const std::vector<std::string>& arguments = {});

/// Calls a method of the simulator's control interface.
std::string CallControl(const std::string& bus_address, const std::string& method,
                        const std::vector<std::string>& arguments = {});

}  // namespace morvane_test
