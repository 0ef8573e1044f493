#include "console/console_input.h"

#include "fuzz/fuzz.h"
#include "support/captured_output.h"
#include "support/messages.h"

#include <istream>
#include <sstream>
#include <string>
#include <vector>

namespace morvane_fuzz {
namespace {

using morvane_test::Green;
using morvane_test::Printed;
using morvane_test::Red;

/// Model of the console: the typed lines, of which the last has no newline, and the output.
struct Console {
    std::string typed;
    std::string shown;
    bool ended = false;

    std::string Ask(const char* marker) {
        shown += Green("Path") + Red(marker);
        const std::size_t end = typed.find('\n');
        ended = ended || end == std::string::npos;
        const std::string line = typed.substr(0, end);
        typed = ended ? "" : typed.substr(end + 1);
        return line;
    }
};

std::string ModelKey(Console& console, unsigned /*size*/) {
    for (;;) {
        const std::string line = console.Ask(" > ");
        const std::size_t key = line.find_first_not_of(" \t\v\f\r");
        if (console.ended) return "q";
        if (key != std::string::npos) return line.substr(key, 1);
    }
}

template <std::ios_base& (*kBase)(std::ios_base&)>
std::string ModelNumber(Console& console, unsigned /*size*/) {
    for (;;) {
        const std::string line = console.Ask(" ? ");
        if (console.ended || line[0] == 'x') return std::to_string(morvane::kInputLeft);
        std::istringstream stream(line);
        unsigned number = 0;
        if (stream >> kBase >> number) return std::to_string(number);
        if (!line.empty()) console.shown += Red("Invalid value\n");
    }
}

std::string ModelText(Console& console, unsigned size) {
    return size == 0 ? "" : console.Ask(" ? ").substr(0, size - 1);
}

std::string ReadKey(unsigned /*size*/) {
    return std::string(1, morvane::PROXY_MenuInput("Path"));
}

template <unsigned (*kRead)(const char*, const char*)>
std::string ReadNumber(unsigned /*size*/) {
    return std::to_string(kRead("Path", nullptr));
}

std::string ReadText(unsigned size) {
    std::vector<char> buffer(size + 1, '!');
    const unsigned length =
        morvane::PROXY_InputString("Path", nullptr, size == 0 ? nullptr : buffer.data(), size);
    Require(size == 0 ? length == 0 : length < size && buffer[length] == '\0',
            "a text and its terminator fit");
    Require(buffer.back() == '!', "nothing is written behind the buffer");
    return std::string(buffer.data(), length);
}

struct Reader {
    char letter;
    std::string (*read)(unsigned size);
    std::string (*model)(Console& console, unsigned size);
};

constexpr Reader kReaders[] = {
    {'k', ReadKey, ModelKey},
    {'n', ReadNumber<morvane::PROXY_InputUint32>, ModelNumber<std::dec>},
    {'h', ReadNumber<morvane::PROXY_InputHex>, ModelNumber<std::hex>},
};

// Other bytes select a text prompt; their value is the buffer size.
Reader FindReader(char letter) {
    for (const Reader& reader : kReaders)
        if (reader.letter == letter) return reader;
    return {letter, ReadText, ModelText};
}

}  // namespace

// The first line has a letter for each prompt; the rest is typed.
void Check(Input input) {
    const std::string readers = input.Line();
    Console console{input.Rest(), "", false};
    const TypedInput typed(console.typed);
    for (const char letter : readers) {
        const Reader reader = FindReader(letter);
        const unsigned size = static_cast<unsigned char>(letter);
        std::string answer;
        const std::string shown = Printed([&] { answer = reader.read(size); });
        console.shown.clear();
        RequireEqual(answer, reader.model(console, size), "the answer");
        RequireEqual(shown, console.shown, "the output");
        RequireEqual(morvane::PROXY_InputEnded(), console.ended, "whether the input has ended");
    }
}

}  // namespace morvane_fuzz
