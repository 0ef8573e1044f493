#include "interfaces/bus_text.h"

#include "app/obex_proxy.h"
#include "fuzz/fuzz.h"
#include "support/captured_output.h"

#include <glib.h>

#include <algorithm>
#include <mutex>
#include <string>

namespace morvane_fuzz {
namespace {

// The position of the first byte at or after `position` that belongs to no UTF-8 character.
std::size_t FindInvalid(const std::string& text, std::size_t position = 0) {
    const char* end = nullptr;
    g_utf8_validate(text.data() + position, static_cast<gssize>(text.size() - position), &end);
    return static_cast<std::size_t>(end - text.data());
}

bool IsUtf8(const std::string& text) {
    return FindInvalid(text) == text.size();
}

std::string Read(const std::string& typed, unsigned limit) {
    static morvane::ObexProxy proxy("Title");
    const TypedInput input(typed + "\n");
    std::mutex mutex;
    morvane::MenuLock lock(mutex);
    std::string text;
    morvane_test::Printed([&] { text = proxy.AskText(lock, "Path", "What", limit).value(); });
    Require(lock.owns_lock(), "the lock is locked again");
    return text;
}

// C strings: a zero byte ends them.
std::string ExpectedRead(const std::string& typed, unsigned limit) {
    const std::string cut = typed.substr(0, std::min<std::size_t>(limit, typed.find('\n')));
    return cut.substr(0, cut.find('\0'));
}

// Of a text that was UTF-8 nothing but its last character may be missing.
void CheckPrefix(const std::string& whole, const std::string& sent, unsigned limit) {
    Require(whole.compare(0, sent.size(), sent) == 0, "what is sent was typed", sent);
    if (sent.size() == whole.size()) return;
    const auto next = static_cast<unsigned char>(whole[sent.size()]);
    Require(sent.size() + static_cast<std::size_t>(g_utf8_skip[next]) > limit,
            "as much is sent as can be", sent);
}

// The unit tests have tables of what is incomplete, and what is invalid.
void CheckReplacement(const std::string& text) {
    std::string valid = text;
    for (std::size_t i = FindInvalid(text); i < text.size(); i = FindInvalid(text, i + 1))
        valid[i] = '?';
    RequireEqual(morvane::ReplaceInvalidBytes(text), valid, "a whole text");
    const std::string sent = morvane::BusText(text);
    const std::string rest = valid.substr(std::min(sent.size(), valid.size()));
    Require(
        sent + rest == valid && rest.size() < 4 && rest.find_first_not_of('?') == std::string::npos,
        "only an incomplete character is missing from a text that may be cut", sent);
}

}  // namespace

void Check(Input input) {
    const unsigned limit = input.Byte();
    const std::string typed = input.Rest();
    const std::string text = Read(typed, limit);
    RequireEqual(text, ExpectedRead(typed, limit), "the text that is read");

    const std::string sent = morvane::BusText(text);
    Require(IsUtf8(sent) && sent.size() <= limit, "what is sent is UTF-8 within the limit", sent);
    if (IsUtf8(typed) && typed.find('\n') == std::string::npos) CheckPrefix(typed, sent, limit);
    CheckReplacement(text);
    CheckReplacement(typed);
}

}  // namespace morvane_fuzz
