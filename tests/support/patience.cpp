#include "support/patience.h"

#include <cstdlib>

namespace morvane_test {
namespace {

double Factor() {
    const char* const text = std::getenv("MORVANE_TEST_TIMEOUT_FACTOR");
    const double factor = text ? std::strtod(text, nullptr) : 0;
    return factor > 0 ? factor : MORVANE_DEFAULT_TIMEOUT_FACTOR;
}

}  // namespace

Duration Stretched(Duration limit) {
    static const double factor = Factor();
    return std::chrono::duration_cast<Duration>(limit * factor);
}

Duration Patience() {
    return Stretched(std::chrono::seconds(10));
}

}  // namespace morvane_test
