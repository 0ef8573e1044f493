#pragma once

#include <set>
#include <string>
#include <vector>

namespace morvane_test {

using Names = std::set<std::string>;

/// Absolute path of a file in the sources.
std::string SourcePath(const std::string& name);

/// Content of a source file. Throws std::runtime_error if it cannot be read.
std::string ReadSource(const std::string& name);

/// Sorted names of the source files that match `pattern` (ECMAScript), without build and hidden
/// folders.
std::vector<std::string> FindSources(const std::string& pattern);

/// The first matched group of every match of `pattern` (ECMAScript) in `text`.
std::vector<std::string> FindAll(const std::string& text, const std::string& pattern);

/// The same as a set.
Names FindNames(const std::string& text, const std::string& pattern);

/// `text` with all characters replaced that a test name must not contain.
std::string AsTestName(const std::string& text);

/// The text of the first Markdown block fenced as ```kind; throws std::runtime_error if there is
/// none.
std::string FencedBlock(const std::string& markdown, const std::string& kind);

}  // namespace morvane_test
