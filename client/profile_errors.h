#pragma once

#include "console/reporting.h"

namespace morvane {

/// Runs an action of the session's menu. The errors that end only the action are printed in red,
/// those of a service with their code; any other goes up.
template <typename Action>
void ReportProfileErrors(const Action& action) {
    try {
        ReportErrors<InvalidValueException, IapiException>(action);
    } catch (const SapiException& error) {
        PROXY_Print(kRed, "%s %d\n", error.what(), error.Code());
    } catch (const InputEnded&) {  // NOLINT(bugprone-empty-catch): the menu's own next read quits
    }
}

}  // namespace morvane
