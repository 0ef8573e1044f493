#pragma once

#include "random/output_grammar.h"
#include "random/plan.h"
#include "random/player.h"

#include <string>
#include <vector>

namespace morvane_test {

/// What must not have happened in any session, one line each. None if all is well.
std::vector<std::string> FindMistakes(const Plan& plan, const Played& played,
                                      const OutputReading& output);

}  // namespace morvane_test
