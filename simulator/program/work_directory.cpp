#include "simulator/program/work_directory.h"

#include "simulator/program/file_descriptor.h"

#include <glib.h>

#include <cstdlib>
#include <filesystem>

namespace simulator {
namespace {

constexpr std::size_t kLongestSocket = 99;  // longest path that dbus-daemon accepts

std::string Pattern() {
    const std::filesystem::path name = "morvane-demo.XXXXXX";
    const auto path = std::filesystem::absolute(g_get_tmp_dir()).lexically_normal() / name;
    return (path / "bus").native().size() > kLongestSocket ? "/tmp" / name : path;
}

}  // namespace

WorkDirectory::WorkDirectory() : path_(Pattern()) {
    Checked(mkdtemp(path_.data()) == nullptr ? -1 : 0, "Cannot create " + path_);
}

WorkDirectory::~WorkDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace simulator
