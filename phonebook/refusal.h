#pragma once

#include "console/errors.h"
#include "interfaces/glib_ptr.h"

#include <string>

namespace morvane {

/// Throws IapiException if the daemon has refused a phone book call.
inline void RequireAccepted(const ErrorPtr& error) {
    if (error) {
        throw IapiException(std::string("Remote Call failed: ") + error->message);
    }
}

}  // namespace morvane
