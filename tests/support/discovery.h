#pragma once

#include <string>

namespace morvane_test {

/// Changes a session so that its first answer is typed when the tool has found all phones and each
/// can be chosen. It must begin with "% any order", and the simulator must execute its "% tell".
///
/// On a slow machine the tool finds phones after the banner, so the output before the first answer
/// is awaited in any order. The tool reports a phone before it can be chosen, but the removal of a
/// device only afterwards: therefore the simulator adds and removes one.
std::string AwaitingDiscovery(std::string session);

}  // namespace morvane_test
