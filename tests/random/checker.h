#pragma once

#include "random/plan.h"
#include "random/player.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane_test {

/// The rules that the conversation violates, one line each.
std::vector<std::string> FindMistakes(const Plan& plan, const PlayResult& result);

/// Checks one call independently of the conversation: the method must exist, the body must be UTF-8
/// and have the described signature, and the arguments must be ones that the tool may send. Returns
/// the violation.
std::optional<std::string> FindMistake(const simulator::Call& call);

}  // namespace morvane_test
