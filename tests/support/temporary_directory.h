#pragma once

#include <string>

namespace morvane_test {

/// A temporary directory, removed with its contents by the destructor. It is created in /tmp if the
/// path of a socket `bus` in it would be too long otherwise.
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
