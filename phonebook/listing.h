#pragma once

#include <gio/gio.h>

#include <string>
#include <vector>

namespace morvane {

/// Prints the handle and the name of each vCard of the `a(ss)` `listing`, under a heading.
void PrintListing(GVariant* listing);

/// Prints the fields by which vCards can be filtered, under a heading.
void PrintFilterFields(const std::vector<std::string>& fields);

}  // namespace morvane
