#pragma once

#include "random/plan.h"
#include "random/player.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane_test {

/// What must not have happened in any conversation, one line each. Empty if nothing is wrong.
std::vector<std::string> FindMistakes(const Plan& plan, const PlayResult& result);

/// What is wrong with a call that the tool made, whatever was typed before: a method or interface
/// that does not exist, a body that is not of the described signature or not UTF-8, an argument
/// that the tool must never send.
std::optional<std::string> FindMistake(const simulator::Call& call);

}  // namespace morvane_test
