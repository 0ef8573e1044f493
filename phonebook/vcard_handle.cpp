#include "phonebook/vcard_handle.h"

#include "console/errors.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

namespace morvane {
namespace {

constexpr std::string_view kUniqueIdPrefix = "X-BT-UID:";
constexpr std::size_t kUniqueIdLength = 32;
constexpr std::size_t kMaxHandleDigits = 8;

bool IsHandle(const std::string& typed) {
    char* end = nullptr;
    errno = 0;
    static_cast<void>(std::strtoul(typed.c_str(), &end, 16));  // only `end` is used
    const auto consumed = static_cast<std::size_t>(end - typed.c_str());
    return errno == 0 && consumed > 0 && consumed <= kMaxHandleDigits && consumed == typed.size();
}

}  // namespace

std::string VcardName(const std::optional<std::string>& answer) {
    if (!answer) {
        throw InvalidValueException("Invalid vCard handle entered");
    }
    const std::string& typed = *answer;
    if (typed.compare(0, kUniqueIdPrefix.size(), kUniqueIdPrefix) == 0) {
        if (typed.size() != kUniqueIdPrefix.size() + kUniqueIdLength) {
            throw InvalidValueException("Invalid X-BT-UID entered");
        }
        return typed;
    }
    if (!IsHandle(typed)) {
        throw InvalidValueException(
            "Invalid handle entered: must be 8-char hex string or UUID prefixed with 'X-BT-UID:'");
    }
    return typed + ".vcf";
}

}  // namespace morvane
