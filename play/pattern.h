#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace play {

/// A line of output as a session file has it: "[..]" matches any text, a leading backslash is left
/// out, "\[..]" is that text itself. Blanks at the end of a line do not count.
class Pattern {
  public:
    explicit Pattern(std::string_view written);

    [[nodiscard]] bool Matches(std::string_view line) const;

  private:
    std::vector<std::string> parts_;  // with a wildcard between each two
};

/// The pattern that matches nothing but `line`.
std::string WriteLiteral(std::string_view line);

/// The same with a wildcard for what differs from run to run: addresses, directories, times, the
/// numbers of sessions and transfers.
std::string WriteGeneral(std::string_view line);

}  // namespace play
