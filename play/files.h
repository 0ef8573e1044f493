#pragma once

#include <string>
#include <vector>

namespace play {

// These functions throw a std::system_error that names the file.

std::string ReadFile(const std::string& name);
/// Fails if the file exists.
void CreateFile(const std::string& name, const std::vector<std::string>& lines);
/// If it fails, the file is unchanged.
void ReplaceFile(const std::string& name, const std::vector<std::string>& lines);

}  // namespace play
