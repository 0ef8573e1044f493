#include "support/temporary_directory.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace morvane_test {

TemporaryDirectory::TemporaryDirectory() {
    path_ = std::filesystem::temp_directory_path() / "morvane-test-XXXXXX";
    if (!mkdtemp(path_.data())) throw std::system_error(errno, std::generic_category(), path_);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace morvane_test
