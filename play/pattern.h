#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace play {

/// A line of output in a session file: "[..]" matches any text, a leading backslash is removed, and
/// "\[..]" matches "[..]". Trailing blanks are ignored.
class Pattern {
  public:
    explicit Pattern(std::string_view written);

    [[nodiscard]] bool Matches(std::string_view line) const;

  private:
    std::vector<std::string> parts_;  // separated by wildcards
};

/// The pattern that matches nothing but `line`.
std::string WriteLiteral(std::string_view line);

/// The same with wildcards for text that differs between runs: addresses, directories, times, the
/// numbers of sessions and transfers.
std::string WriteGeneral(std::string_view line);

}  // namespace play
