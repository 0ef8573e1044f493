#pragma once

namespace morvane {

/// Prints the file `name` in pieces of 512 bytes, or that it cannot be opened. Only a regular file
/// has contents to print; nothing else is waited for.
void DisplayFile(const char* name);

}  // namespace morvane
