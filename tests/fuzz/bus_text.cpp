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

bool IsUtf8(const std::string& text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
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

}  // namespace

void Check(Input input) {
    const unsigned limit = input.Byte();
    const std::string typed = input.Rest();
    const std::string text = Read(typed, limit);
    RequireEqual(text, ExpectedRead(typed, limit), "the text that is read");

    // Which bytes are replaced or dropped is tested in unit/bus_text_test.cpp.
    const std::string sent = morvane::BusText(text);
    Require(IsUtf8(sent) && sent.size() <= limit, "the sent text is UTF-8 within the limit", sent);
    if (IsUtf8(typed) && typed.find('\n') == std::string::npos) CheckPrefix(typed, sent, limit);
}

}  // namespace morvane_fuzz
