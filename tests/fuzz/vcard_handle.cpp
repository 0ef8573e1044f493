#include "phonebook/vcard_handle.h"

#include "console/errors.h"
#include "fuzz/fuzz.h"
#include "interfaces/bus_text.h"

#include <string>

namespace morvane_fuzz {
namespace {

constexpr char kBlanks[] = " \t\n\v\f\r";
constexpr char kDigits[] = "0123456789abcdefABCDEF";

// [blanks][sign]["0x"]digits, eight characters in all at most.
bool IsHandle(const std::string& text) {
    std::size_t digits = text.find_first_not_of(kBlanks);
    if (digits == std::string::npos || text.size() > 8) return false;
    if (text[digits] == '+' || text[digits] == '-') ++digits;
    if (text.compare(digits, 2, "0x") == 0 || text.compare(digits, 2, "0X") == 0) digits += 2;
    return digits < text.size() && text.find_first_not_of(kDigits, digits) == std::string::npos;
}

std::string Expected(const std::string& typed) {
    if (typed.rfind("X-BT-UID:", 0) == 0)
        return typed.size() == 41 ? typed : "Invalid X-BT-UID entered";
    return IsHandle(typed) ? typed + ".vcf"
                           : "Invalid handle entered: must be 8-char hex string or UUID prefixed "
                             "with 'X-BT-UID:'";
}

std::string Outcome(const std::string& typed) {
    try {
        std::string name = morvane::VcardName(typed);
        const std::string sent = morvane::ReplaceInvalidBytes(name);
        Require(IsUtf8(sent), "what is sent is UTF-8", sent);
        Require(sent.size() == name.size() && sent.size() <= morvane::kMaxVcardHandleLength,
                "what is sent is as long as what was typed, and not too long", sent);
        return name;
    } catch (const morvane::InvalidValueException& error) {
        return error.what();
    }
}

}  // namespace

void Check(Input input) {
    const std::string typed = input.Rest();
    RequireEqual(Outcome(typed), Expected(typed), "the name of a vCard");
}

}  // namespace morvane_fuzz
