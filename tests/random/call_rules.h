#pragma once

#include "simulator/recorder.h"

#include <optional>
#include <string>

namespace morvane_test {

/// What is wrong with a call that the tool made, whatever was typed before: a method or interface
/// that does not exist, a body that is not of the described signature or not UTF-8, an argument
/// that the tool must never send. Nothing if all is well.
std::optional<std::string> FindMistake(const simulator::Call& call);

}  // namespace morvane_test
