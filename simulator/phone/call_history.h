#pragma once

#include "simulator/phone/card.h"

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

enum class CallKind { kIncoming, kOutgoing, kMissed };

struct CallEntry {
    CallKind kind;
    std::int64_t time;  ///< seconds since 1970, UTC
    std::string number;
    std::string name;  ///< empty when the caller is no contact
};

/// The vCard of an entry: name, number and X-IRMC-CALL-DATETIME.
Card MakeCallCard(const CallEntry& call);

/// Name of the phone book with only this kind of calls.
const char* HistoryOf(CallKind kind);

/// "YYYYMMDDTHHMMSS"
std::string FormatCallTime(std::int64_t time);

}  // namespace simulator
