#include "support/temporary_directory.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace morvane_test {
namespace {

constexpr std::size_t kMaxSocketPath = 99;  // path length that dbus-daemon accepts

std::string Pattern() {
    const std::filesystem::path name = "morvane-test-XXXXXX";
    const auto path = std::filesystem::absolute(std::filesystem::temp_directory_path()) / name;
    return (path / "bus").native().size() > kMaxSocketPath ? "/tmp" / name : path;
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() : path_(Pattern()) {
    if (!mkdtemp(path_.data())) throw std::system_error(errno, std::generic_category(), path_);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace morvane_test
