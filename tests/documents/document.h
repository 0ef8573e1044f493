#pragma once

#include <set>
#include <string>
#include <vector>

namespace morvane_test {

using Names = std::set<std::string>;

/// Where this build's sources and documents are.
std::string SourcePath(const std::string& name);

/// A file of the sources. Throws std::runtime_error if it cannot be read.
std::string ReadSource(const std::string& name);
void WriteSource(const std::string& name, const std::string& text);

/// The sources' files whose names match `pattern` (ECMAScript), sorted, as names that `ReadSource`
/// takes; nothing of the build, of git or otherwise hidden.
std::vector<std::string> FindSources(const std::string& pattern);

/// Every match of `pattern` (ECMAScript) in `text`: its first group that matched.
std::vector<std::string> FindAll(const std::string& text, const std::string& pattern);

/// The same, each once and sorted.
Names FindNames(const std::string& text, const std::string& pattern);

/// `text` in the letters that the name of a test may have.
std::string AsTestName(const std::string& text);

/// The text of the first block of Markdown that is fenced as ```kind; throws if there is none.
std::string FencedBlock(const std::string& markdown, const std::string& kind);

/// `markdown` with another text in that block.
std::string ReplaceFencedBlock(const std::string& markdown, const std::string& kind,
                               const std::string& text);

}  // namespace morvane_test
