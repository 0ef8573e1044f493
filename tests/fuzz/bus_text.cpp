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

// Offset of the first invalid UTF-8 byte at or after `position`.
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
    Require(lock.owns_lock(), "the mutex is locked again");
    return text;
}

// The text ends at a zero byte.
std::string ExpectedRead(const std::string& typed, unsigned limit) {
    const std::string cut = typed.substr(0, std::min<std::size_t>(limit, typed.find('\n')));
    return cut.substr(0, cut.find('\0'));
}

// Only the last character of a valid text may be dropped.
void CheckPrefix(const std::string& whole, const std::string& sent, unsigned limit) {
    Require(whole.compare(0, sent.size(), sent) == 0, "the sent text is a prefix of the typed one",
            sent);
    if (sent.size() == whole.size()) return;
    const auto next = static_cast<unsigned char>(whole[sent.size()]);
    Require(sent.size() + static_cast<std::size_t>(g_utf8_skip[next]) > limit,
            "the sent text is as long as possible", sent);
}

// Which sequences are incomplete or invalid is tested by tables in the unit tests.
void CheckReplacement(const std::string& text) {
    std::string valid = text;
    for (std::size_t i = FindInvalid(text); i < text.size(); i = FindInvalid(text, i + 1))
        valid[i] = '?';
    RequireEqual(morvane::ReplaceInvalidBytes(text), valid, "a whole text");
    const std::string sent = morvane::BusText(text);
    const std::string rest = valid.substr(std::min(sent.size(), valid.size()));
    Require(
        sent + rest == valid && rest.size() < 4 && rest.find_first_not_of('?') == std::string::npos,
        "only an incomplete last character is dropped", sent);
}

}  // namespace

void Check(Input input) {
    const unsigned limit = input.Byte();
    const std::string typed = input.Rest();
    const std::string text = Read(typed, limit);
    RequireEqual(text, ExpectedRead(typed, limit), "the text that is read");

    const std::string sent = morvane::BusText(text);
    Require(IsUtf8(sent) && sent.size() <= limit, "the sent text is UTF-8 within the limit", sent);
    if (IsUtf8(typed) && typed.find('\n') == std::string::npos) CheckPrefix(typed, sent, limit);
    CheckReplacement(text);
    CheckReplacement(typed);
}

}  // namespace morvane_fuzz
