#pragma once

#include <string>

namespace morvane_test {

/// A directory of the test's own, gone with everything in it at the end. The path is short, as it
/// must hold the address of a socket.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    const std::string& Path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

}  // namespace morvane_test
