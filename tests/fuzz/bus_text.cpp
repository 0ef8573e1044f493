#include "interfaces/bus_text.h"

#include "app/obex_proxy.h"
#include "fuzz/fuzz.h"
#include "fuzz/typed_input.h"
#include "support/captured_output.h"

#include <algorithm>
#include <mutex>
#include <string>

namespace morvane_fuzz {
namespace {

// What the operator types, as the menus get it.
std::string Read(const std::string& typed, unsigned limit) {
    static morvane::ObexProxy proxy("Title");
    const TypedInput input(typed + "\n");
    std::mutex mutex;
    morvane::MenuLock lock(mutex);
    std::string text;
    morvane_test::Printed([&] { text = proxy.AskText(lock, "Path", "What", limit); });
    Require(lock.owns_lock(), "the lock is held again");
    return text;
}

// The texts are C's: a zero byte ends them.
std::string ExpectedRead(const std::string& typed, unsigned limit) {
    const std::string cut = typed.substr(0, std::min<std::size_t>(limit, typed.find('\n')));
    return cut.substr(0, cut.find('\0'));
}

std::string ExpectedText(const std::string& text, bool may_be_cut) {
    std::string valid;
    for (std::size_t i = 0; i < text.size();) {
        bool cut = false;
        const std::size_t length = CharacterLength(text, i, cut);
        if (cut && may_be_cut) break;
        valid += length == 0 ? "?" : text.substr(i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return valid;
}

// Nothing but the last character may be missing from a text that was UTF-8.
void CheckCutOnly(const std::string& whole, const std::string& sent, unsigned limit) {
    bool cut = false;
    Require(whole.compare(0, sent.size(), sent) == 0, "what is sent was typed", sent);
    Require(sent.size() == whole.size() ||
                sent.size() + CharacterLength(whole, sent.size(), cut) > limit,
            "as much is sent as can be", sent);
}

}  // namespace

void Check(Input input) {
    const unsigned limit = input.Byte();
    const std::string typed = input.Rest();
    const std::string text = Read(typed, limit);
    RequireEqual(text, ExpectedRead(typed, limit), "the text that is read");

    const std::string sent = morvane::BusText(text);
    Require(IsUtf8(sent) && sent.size() <= limit, "what is sent is UTF-8 within the limit", sent);
    if (IsUtf8(typed) && typed.find('\n') == std::string::npos) CheckCutOnly(typed, sent, limit);

    for (const std::string& any : {text, typed}) {
        RequireEqual(morvane::BusText(any), ExpectedText(any, true), "a text that may be cut");
        RequireEqual(morvane::ReplaceInvalidBytes(any), ExpectedText(any, false), "a whole text");
    }
}

}  // namespace morvane_fuzz
