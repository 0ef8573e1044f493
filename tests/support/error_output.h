#pragma once

#include <regex>
#include <string>
#include <vector>

namespace morvane_test {

/// What a test has declared that the tool may write to standard error. Everything else there is a
/// failure: GLib's criticals and warnings, a sanitizer's report, anything.
class ErrorOutputRules {
  public:
    /// Lines in which `pattern` (ECMAScript) is found are no failure.
    void Allow(const std::string& pattern);
    /// Lines that hold a line of `text` are no failure.
    void AllowText(const std::string& text);

    /// The lines of `output` that nobody declared.
    std::vector<std::string> Undeclared(const std::string& output) const;

  private:
    bool IsAllowed(const std::string& line) const;

    std::vector<std::regex> patterns_;
    std::vector<std::string> texts_;
};

}  // namespace morvane_test
