#pragma once

#include <string>

namespace morvane_test {

/// A session whose first answer is typed when the tool has found all phones and can choose each.
/// It must begin with "% any order", and the simulator must carry out its "% tell".
///
/// On a slow machine the tool finds phones after the banner: what precedes the first answer is
/// awaited in any order. It reports a phone before it can be chosen, but the removal of a device
/// only after that: the simulator adds and removes one.
std::string AwaitingDiscovery(std::string session);

}  // namespace morvane_test
