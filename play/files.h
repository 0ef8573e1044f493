#pragma once

#include <string>
#include <vector>

namespace play {

// All throw std::system_error that names the file.

std::string ReadFile(const std::string& name);
/// Fails if the file exists.
void CreateFile(const std::string& name, const std::vector<std::string>& lines);
/// Leaves the file as it is if it fails.
void ReplaceFile(const std::string& name, const std::vector<std::string>& lines);

}  // namespace play
