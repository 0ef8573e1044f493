#include "console/console_input.h"

#include "console/console_output.h"
#include "console/frames.h"
#include "console/number.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

namespace morvane {
namespace {

using ShowPrompt = void (*)(const char* text, int show);

// Another process may have set the shared terminal to O_NONBLOCK: EAGAIN is not the end of input.
// Returns true when there is input, false if it has ended.
bool AwaitMoreInput() {
    if (std::ferror(stdin) == 0 || errno != EAGAIN) {
        return false;
    }
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    poll(&input, 1, -1);
    std::clearerr(stdin);
    return true;
}

// Discards input up to the end of the line or of the input, without buffering it.
std::string ReadTypedLine() {
    std::string line;
    while (!PROXY_InputEnded()) {
        const int byte = std::getc(stdin);
        if (byte == '\n') {
            break;
        }
        if (byte != EOF) {
            line += static_cast<char>(byte);
        } else if (!AwaitMoreInput()) {
            break;
        }
    }
    return line;
}

std::string ReadLine(ShowPrompt show_prompt, const char* prompt) {
    show_prompt(prompt, 1);
    std::string line = ReadTypedLine();
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
        const std::string line = ReadLine(PROXY_Input, prompt);
        if (PROXY_InputEnded() || line[0] == 'x') {
            return kInputLeft;
        }
        if (const auto number = ParseNumber(line, base)) {
            return *number;
        }
        if (!line.empty()) {
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
        const std::string line = ReadLine(PROXY_Prompt, prompt);
        if (PROXY_InputEnded()) {
            return 'q';
        }
        if (const std::string_view rest = SkipBlanks(line); !rest.empty()) {
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
    const std::string line = ReadLine(PROXY_Input, prompt);
    const std::size_t count = line.copy(buffer, size - 1);
    buffer[count] = '\0';
    return static_cast<unsigned int>(count);
}

}  // namespace morvane
