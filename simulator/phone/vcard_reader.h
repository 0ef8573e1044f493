#pragma once

#include "simulator/phone/card.h"

#include <cstddef>
#include <string>
#include <vector>

namespace simulator {

/// Why a part of a file was skipped.
struct VcardComplaint {
    std::size_t line;  ///< counted from 1
    std::string reason;
};

struct VcardFile {
    std::vector<Card> cards;
    std::vector<VcardComplaint> complaints;
};

/// Reads vCards 2.1 and 3.0 as phones export them. A malformed card is skipped with a complaint.
/// Properties that are not in `Field`, pictures and sounds given by a URI, and cards inside cards
/// are skipped without one. If a card lacks N or FN, it is derived from the other one.
VcardFile ReadVcards(const std::string& text);

}  // namespace simulator
