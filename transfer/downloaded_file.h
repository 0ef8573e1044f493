#pragma once

namespace morvane {

/// Prints the file `name` in pieces of 512 bytes, or that it cannot be opened. Prints no contents
/// of files that are not regular, since reading them could block.
void DisplayFile(const char* name);

}  // namespace morvane
