#include "console/console_input.h"

#include "console/console_output.h"
#include "console/frames.h"
#include "console/number.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

namespace morvane {
namespace {

using ShowPrompt = void (*)(const char* text, int show);

struct Free {
    void operator()(char* bytes) const noexcept { std::free(bytes); }
};

/// A line of standard input without its newline. It may be long, and is not copied.
class Line {
  public:
    /// Empty at the end of the input.
    static Line Read() {
        Line line;
        if (PROXY_InputEnded()) {
            return line;
        }
        char* bytes = nullptr;
        std::size_t room = 0;
        const ssize_t length = getline(&bytes, &room, stdin);
        line.bytes_.reset(bytes);
        if (length >= 0) {
            line.text_ = {bytes, static_cast<std::size_t>(length)};
        } else if (!PROXY_InputEnded()) {
            throw std::bad_alloc();
        }
        if (!line.text_.empty() && line.text_.back() == '\n') {
            line.text_.remove_suffix(1);
        }
        return line;
    }

    [[nodiscard]] std::string_view Text() const { return text_; }

  private:
    std::unique_ptr<char, Free> bytes_;
    std::string_view text_;
};

Line ReadLine(ShowPrompt show_prompt, const char* prompt) {
    show_prompt(prompt, 1);
    Line line = Line::Read();
    PROXY_Prompt("", 0);
    return line;
}

void PrintNumberBox(const char* title) {
    PrintHeading(title);
    PrintExitLine();
    PrintStars();
}

unsigned int ReadNumber(const char* prompt, const char* title, int base) {
    if (title != nullptr) {
        PrintNumberBox(title);
    }
    for (;;) {
        const Line line = ReadLine(PROXY_Input, prompt);
        if (PROXY_InputEnded() || line.Text().substr(0, 1) == "x") {
            return kInputLeft;
        }
        if (const auto number = ParseNumber(line.Text(), base)) {
            return *number;
        }
        if (!line.Text().empty()) {
            PROXY_Print(kRed, "Invalid value\n");
        }
    }
}

}  // namespace

bool PROXY_InputEnded() {
    return std::feof(stdin) != 0 || std::ferror(stdin) != 0;
}

char PROXY_MenuInput(const char* prompt) {
    for (;;) {
        const Line line = ReadLine(PROXY_Prompt, prompt);
        if (PROXY_InputEnded()) {
            return 'q';
        }
        if (const std::string_view rest = SkipBlanks(line.Text()); !rest.empty()) {
            return rest.front();
        }
    }
}

unsigned int PROXY_InputUint32(const char* prompt, const char* title) {
    return ReadNumber(prompt, title, 10);
}

unsigned int PROXY_InputHex(const char* prompt, const char* title) {
    return ReadNumber(prompt, title, 16);
}

unsigned int PROXY_InputString(const char* prompt, const char* title, char* buffer,
                               unsigned int size) {
    if (prompt == nullptr || buffer == nullptr || size == 0) {
        return 0;
    }
    if (title != nullptr) {
        PrintStars();
        PROXY_Print(kNormal, " %s\n", title);
        PrintStars();
    }
    const Line line = ReadLine(PROXY_Input, prompt);
    const std::string_view kept = line.Text().substr(0, size - 1);
    std::copy(kept.begin(), kept.end(), buffer);
    const auto count = static_cast<unsigned int>(kept.size());
    buffer[count] = '\0';
    return count;
}

}  // namespace morvane
