#include "support/discovery.h"

#include <string_view>

namespace morvane_test {
namespace {

constexpr std::string_view kEnd = "% end\n";
constexpr char kProbe[] = R"(% end
Vantor >
% tell add /com/veltrisonix/hci0/dev_probe 00:00:00:00:00:00 Probe
...
Found Device /com/veltrisonix/hci0/dev_probe
% tell remove Probe
Removed /com/veltrisonix/hci0/dev_probe
)";

}  // namespace

std::string AwaitingDiscovery(std::string session) {
    session.erase(session.find(kEnd), kEnd.size());
    return session.insert(session.find("Vantor > "), kProbe);
}

}  // namespace morvane_test
