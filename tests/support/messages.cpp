#include "support/messages.h"

#include <cstddef>

namespace morvane_test {
namespace {

constexpr char kTitle[] = "Vantor";
constexpr std::size_t kFrameWidth = 53;

}  // namespace

std::string Green(const std::string& text) {
    return kGreenSequence + text + kResetSequence;
}

std::string Red(const std::string& text) {
    return kRedSequence + text + kResetSequence;
}

std::string Normal(const std::string& text) {
    return kResetSequence + text + kResetSequence;
}

std::string Prompt(const std::string& segment) {
    return Green(kTitle + segment) + Red(" > ");
}

std::string ValuePrompt(const std::string& segment) {
    return Green(kTitle + segment) + Red(" ? ");
}

std::string Notification(const std::string& segment, const std::string& text, const char* colour) {
    return "\n" + (colour + text) + kGreenSequence + kTitle + segment + Red(" > ");
}

std::string Stars() {
    return Green(std::string(kFrameWidth, '*') + "\n");
}

std::string Dashes() {
    return Green(std::string(kFrameWidth, '-') + "\n");
}

std::string Heading(const std::string& title) {
    return Stars() + Normal(" " + title + "\n") + Dashes();
}

std::string Choices(const std::vector<std::string>& choices) {
    std::string lines;
    for (std::size_t index = 0; index < choices.size(); ++index)
        lines += Normal(" " + std::to_string(index) + ") " + choices[index] + "\n");
    return lines;
}

std::string Lines(const std::vector<std::string>& texts) {
    std::string lines;
    for (const std::string& text : texts) lines += Normal(text + "\n");
    return lines;
}

std::string TextBox(const std::string& title) {
    return Stars() + Normal(" " + title + "\n") + Stars();
}

std::string Banner() {
    return Green("\n") + Stars() + Green("********************** Vantor **********************\n") +
           Stars() + Green("* Type 'help' for Menu Options, or 'quit' to Exit   *\n") + Stars() +
           Green("\n");
}

std::string DeviceList(const std::vector<std::string>& devices) {
    std::string lines;
    for (const std::string& device : devices) lines += Lines({" " + device});
    return Stars() + lines + Stars();
}

std::string DeviceBox(const std::vector<std::string>& devices) {
    return Heading("Select a Client") + Choices(devices) + Dashes() +
           Normal(" x) Exit this input\n") + Stars();
}

std::string OpenedSession(const std::string& address) {
    return Lines({"Session Connected", "Source Address: 02:00:5E:00:00:01",
                  "Destination Address: " + address,
                  "Target UUID: 0000112f-0000-1000-8000-00805f9b34fb", "Channel: 19",
                  "Fixed Image Size: Supported"});
}

std::string UnknownSession(const std::string& state) {
    return Lines({"Session " + state, "Source Address: Unknown", "Destination Address: Unknown",
                  "Target UUID: Unknown", "Channel: 0", "Fixed Image Size: Not Supported"});
}

}  // namespace morvane_test
