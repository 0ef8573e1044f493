#pragma once

#include "console/console_output.h"
#include "console/errors.h"

namespace morvane {

inline void PrintError(const std::exception& error) {
    PROXY_Print(kRed, "%s\n", error.what());
}

inline void PrintError(const SapiException& error) {
    PROXY_Print(kRed, "%s %d\n", error.what(), error.Code());
}

/// Runs `action`. Catches errors of the listed types and prints them in red; others propagate.
template <typename Caught, typename... Others, typename Action>
void ReportErrors(const Action& action) {
    try {
        if constexpr (sizeof...(Others) == 0) {
            action();
        } else {
            ReportErrors<Others...>(action);
        }
    } catch (const Caught& error) {
        PrintError(error);
    }
}

}  // namespace morvane
