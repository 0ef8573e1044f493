#pragma once

#include "simulator/phone/card.h"

#include <string>
#include <vector>

namespace simulator {

/// The cards of a file of vCards. Prints a line on standard error for each that is malformed, and
/// skips it. Throws `std::runtime_error` with one line if the file cannot be read, or has no card
/// or too many.
std::vector<Card> LoadPhoneBook(const std::string& path);

}  // namespace simulator
