#pragma once

#include <string>

namespace simulator {

/// A temporary directory for the socket of a bus and for pulled files, removed with its contents by
/// the destructor. It is in TMPDIR, or in /tmp if the path of a socket would be too long there.
class WorkDirectory {
  public:
    /// Throws `std::system_error` if it cannot be created.
    WorkDirectory();
    WorkDirectory(const WorkDirectory&) = delete;
    WorkDirectory& operator=(const WorkDirectory&) = delete;
    ~WorkDirectory();

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string File(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

}  // namespace simulator
