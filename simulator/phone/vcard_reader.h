#pragma once

#include "simulator/phone/card.h"

#include <cstddef>
#include <string>
#include <vector>

namespace simulator {

/// Why a part of a file was skipped.
struct VcardComplaint {
    std::size_t line;  ///< the first is 1
    std::string reason;
};

struct VcardFile {
    std::vector<Card> cards;
    std::vector<VcardComplaint> complaints;
};

/// Reads vCards 2.1 and 3.0 as phones export them. Each card that is malformed is skipped with a
/// complaint. Skipped without one are properties that are not in `Field`, pictures and sounds that
/// are elsewhere (URI), and cards inside cards. What a card lacks of N and FN is made from the
/// other one.
VcardFile ReadVcards(const std::string& text);

}  // namespace simulator
