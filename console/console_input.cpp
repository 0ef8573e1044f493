#include "console/console_input.h"

#include "console/console_output.h"
#include "console/frames.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <istream>
#include <streambuf>
#include <string>

namespace morvane {
namespace {

using ShowPrompt = void (*)(const char* text, int show);
using NumberBase = std::ios_base& (*)(std::ios_base&);

/// Reads from the line itself: a line may be long, and is not copied.
class LineBuffer : public std::streambuf {
  public:
    explicit LineBuffer(std::string& line) {
        setg(line.data(), line.data(), line.data() + line.size());
    }
};

template <typename... Extracted>
bool Extract(std::string& line, Extracted&... extracted) {
    LineBuffer buffer(line);
    std::istream stream(&buffer);
    return static_cast<bool>((stream >> ... >> extracted));
}

std::string ReadLine(ShowPrompt show_prompt, const char* prompt) {
    show_prompt(prompt, 1);
    std::string line;
    std::getline(std::cin, line);
    PROXY_Prompt("", 0);
    return line;
}

void PrintNumberBox(const char* title) {
    PrintHeading(title);
    PrintExitLine();
    PrintStars();
}

unsigned int ReadNumber(const char* prompt, const char* title, NumberBase base) {
    if (title != nullptr) {
        PrintNumberBox(title);
    }
    for (;;) {
        std::string line = ReadLine(PROXY_Input, prompt);
        if (PROXY_InputEnded() || line[0] == 'x') {
            return kInputLeft;
        }
        unsigned int number = 0;
        if (Extract(line, base, number)) {
            return number;
        }
        if (!line.empty()) {
            PROXY_Print(kRed, "Invalid value\n");
        }
    }
}

}  // namespace

bool PROXY_InputEnded() {
    return !std::cin.good();
}

char PROXY_MenuInput(const char* prompt) {
    for (;;) {
        std::string line = ReadLine(PROXY_Prompt, prompt);
        char key = 'q';
        if (PROXY_InputEnded() || Extract(line, key)) {
            return key;
        }
    }
}

unsigned int PROXY_InputUint32(const char* prompt, const char* title) {
    return ReadNumber(prompt, title, std::dec);
}

unsigned int PROXY_InputHex(const char* prompt, const char* title) {
    return ReadNumber(prompt, title, std::hex);
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
    const auto count = static_cast<unsigned int>(std::min<std::size_t>(size - 1, line.size()));
    std::memcpy(buffer, line.data(), count);
    buffer[count] = '\0';
    return count;
}

}  // namespace morvane
