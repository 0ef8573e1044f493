#pragma once

#include <string>
#include <vector>

namespace morvane_test {

// The exact bytes that the tool writes. Every message is a colour sequence, a text and a reset
// sequence; newlines are part of the text.

inline constexpr char kGreenSequence[] = "\x1b[1;32m";
inline constexpr char kRedSequence[] = "\x1b[1;31m";
inline constexpr char kResetSequence[] = "\x1b[0m";

std::string Green(const std::string& text);
std::string Red(const std::string& text);
std::string Normal(const std::string& text);

/// The prompt of a menu, and that of a value. `segment` is the text after the title, such as
/// "/Phonebook Menu"; it is empty for the main menu.
std::string Prompt(const std::string& segment = "");
std::string ValuePrompt(const std::string& segment);

/// A message printed while a prompt is displayed, followed by the redrawn prompt: always with the
/// marker of a menu prompt, even for a value prompt.
std::string Notification(const std::string& segment, const std::string& text,
                         const char* colour = kResetSequence);

/// Frame lines.
std::string Stars();
std::string Dashes();

/// Stars, " `title`", dashes.
std::string Heading(const std::string& title);

/// " 0) first", " 1) second" and so on.
std::string Choices(const std::vector<std::string>& choices);

/// Each text in normal colour on its own line.
std::string Lines(const std::vector<std::string>& texts);

/// The box above the prompt for a text.
std::string TextBox(const std::string& title);

// Blocks of lines; for menus see support/menus.h.
std::string Banner();  ///< printed once before the main menu

// Devices are given as "address | alias".
std::string DeviceList(const std::vector<std::string>& devices);  ///< output of "l"
std::string DeviceBox(const std::vector<std::string>& devices);   ///< choices of "c"

/// Output for a new session with this address and the simulator's properties, and for one with no
/// property but its `state`, "Connected" or "Disconnected".
std::string OpenedSession(const std::string& address);
std::string UnknownSession(const std::string& state);

}  // namespace morvane_test
