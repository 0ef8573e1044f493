#include "simulator/phone/call_history.h"

#include "interfaces/glib_ptr.h"
#include "simulator/phone/people.h"

#include <glib.h>

namespace simulator {
namespace {

using morvane::DateTimePtr;
using morvane::TextPtr;

struct KindNames {
    const char* phonebook;
    const char* type;
};

const KindNames& NamesOf(CallKind kind) {
    static const KindNames kIncoming{"ich", "RECEIVED"};
    static const KindNames kOutgoing{"och", "DIALED"};
    static const KindNames kMissed{"mch", "MISSED"};
    switch (kind) {
        case CallKind::kIncoming:
            return kIncoming;
        case CallKind::kOutgoing:
            return kOutgoing;
        case CallKind::kMissed:
            return kMissed;
    }
    return kMissed;
}

}  // namespace

const char* HistoryOf(CallKind kind) {
    return NamesOf(kind).phonebook;
}

std::string FormatCallTime(std::int64_t time) {
    const DateTimePtr date(g_date_time_new_from_unix_utc(time));
    return TextPtr(g_date_time_format(date.get(), "%Y%m%dT%H%M%S")).get();
}

Card MakeCallCard(const CallEntry& call) {
    Card card = MakeShortContact(call.name, call.number, "");
    card.properties.pop_back();  // the unique id, which only contacts have
    card.properties.push_back(
        {Field::kCallDatetime, {NamesOf(call.kind).type}, {FormatCallTime(call.time)}});
    return card;
}

}  // namespace simulator
