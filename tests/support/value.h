#pragma once

#include <stdexcept>
#include <string>

#include "interfaces/glib_ptr.h"

namespace morvane_test {

/// A value parsed from GVariant text, such as "{'Size': <uint64 5>}". Converts to the `GVariant*`
/// that it owns: for parameters that do not take ownership.
class Value {
  public:
    /// Throws std::invalid_argument.
    explicit Value(const std::string& text) {
        morvane::ErrorPtr error;
        value_.reset(g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, morvane::Out(error)));
        if (!value_) throw std::invalid_argument(text + ": " + error->message);
    }

    operator GVariant*() const noexcept { return value_.get(); }

  private:
    morvane::VariantPtr value_;
};

}  // namespace morvane_test
