#pragma once

#include <string>

#include "interfaces/glib_ptr.h"

namespace morvane_test {

/// A value, made from its GVariant text, such as "{'Size': <uint64 5>}". Stands for the `GVariant*`
/// that it owns: for parameters that only refer to theirs, as the daemon's do.
class Value {
  public:
    /// Throws std::invalid_argument.
    explicit Value(const std::string& text);

    operator GVariant*() const noexcept { return value_.get(); }

  private:
    morvane::VariantPtr value_;
};

/// The text in the one form in which GVariant prints it, with types.
std::string Canonical(const std::string& text);

}  // namespace morvane_test
