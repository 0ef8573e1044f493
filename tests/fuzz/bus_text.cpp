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

// The first byte of a character and the bounds of its second byte; the others are 80 to BF.
struct Lead {
    unsigned char first, last;
    std::size_t length;
    unsigned char second_first, second_last;
};

constexpr Lead kLeads[] = {
    {0x01, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

unsigned char At(const std::string& text, std::size_t position) {
    return static_cast<unsigned char>(text[position]);
}

bool Continues(const Lead& lead, unsigned char byte, std::size_t index) {
    return index == 1 ? byte >= lead.second_first && byte <= lead.second_last
                      : byte >= 0x80 && byte <= 0xBF;
}

// A plain decoder: the length of the UTF-8 character at `position`, 0 if there is none. `cut` is
// set if the end of the text is what makes it incomplete.
std::size_t CharacterLength(const std::string& text, std::size_t position, bool& cut) {
    cut = false;
    for (const Lead& lead : kLeads) {
        if (At(text, position) < lead.first || At(text, position) > lead.last) continue;
        for (std::size_t i = 1; i < lead.length; ++i) {
            cut = position + i == text.size();
            if (cut || !Continues(lead, At(text, position + i), i)) return 0;
        }
        return lead.length;
    }
    return 0;
}

bool IsUtf8(const std::string& text) {
    bool cut = false;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = CharacterLength(text, i, cut);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

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
