#pragma once

#include "interfaces/glib_ptr.h"

#include "device1.h"

#include <string>

namespace morvane {

/// One remote Bluetooth device that the daemon publishes.
class ObexDeviceContext {
  public:
    /// Both throw ProxyException. Without a bus name, or with an empty one, the daemon's default
    /// name is used.
    ObexDeviceContext(const std::string& bus_name, const std::string& path);
    explicit ObexDeviceContext(const std::string& path);

    void BuildProxy(const std::string& bus_name);

    /// Prints the device's line, with `select` numbered by `index`.
    void Display(bool select, int index) const;

    /// Throws std::logic_error, which no menu catches, if the daemon has announced no address.
    [[nodiscard]] std::string GetAddress() const;

    [[nodiscard]] std::string GetPathName() const { return path_; }

  private:
    GlibPtr<Device1> proxy_;
    std::string path_;
};

}  // namespace morvane
