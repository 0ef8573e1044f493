#pragma once

#include "fuzz/fuzz.h"
#include "interfaces/glib_ptr.h"

#include <string>

namespace morvane_fuzz {

/// Makes a value of `type` from the rest of the input, which begins with a letter for its form:
///   t  GVariant's text format
///   n  serialised bytes, brought to normal form: what comes from a bus
///   any other: serialised bytes as they are
/// Null if there is no such value.
morvane::VariantPtr ReadVariant(Input& input, const std::string& type);

/// A value of the type that a line of the input names; null if that is none.
morvane::VariantPtr ReadVariantOfAnyType(Input& input);

}  // namespace morvane_fuzz
