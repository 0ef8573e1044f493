#pragma once

#include <string>

namespace morvane_test {

/// A directory of the test's own, removed with everything in it at the end. It is in /tmp if the
/// path would be too long for a socket `bus` in it otherwise.
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
