#pragma once

#include <string>
#include <vector>

namespace morvane_test {

// What the tool writes, to the byte. Every message is a colour, a text and the reset; line ends are
// part of the text.

inline constexpr char kGreenSequence[] = "\x1b[1;32m";
inline constexpr char kRedSequence[] = "\x1b[1;31m";
inline constexpr char kResetSequence[] = "\x1b[0m";

std::string Green(const std::string& text);
std::string Red(const std::string& text);
std::string Normal(const std::string& text);

/// A menu's prompt, and a value's. `segment` is what follows the title, such as "/Phonebook Menu";
/// without one it is the main menu's.
std::string Prompt(const std::string& segment = "");
std::string ValuePrompt(const std::string& segment);

/// A message that arrives while a prompt stands, and the prompt drawn again beneath it: always with
/// a menu's marker, also under a value's prompt.
std::string Notice(const std::string& segment, const std::string& text,
                   const char* colour = kResetSequence);

/// Frame lines.
std::string Stars();
std::string Dashes();

/// Stars, " `title`", dashes.
std::string Heading(const std::string& title);

/// " 0) first", " 1) second" and so on.
std::string Choices(const std::vector<std::string>& choices);

/// Each text in normal colour, on a line of its own.
std::string Lines(const std::vector<std::string>& texts);

/// What stands above the prompt of a text.
std::string TextBox(const std::string& title);

// Whole blocks; the menus are in support/menus.h.
std::string Banner();  ///< the first thing that the main menu prints

// Devices are given as "address | alias".
std::string DeviceList(const std::vector<std::string>& devices);  ///< what "l" prints
std::string DeviceBox(const std::vector<std::string>& devices);   ///< what "c" asks to choose from

/// What is printed of a session that opens: one to the device with this address, which is like any
/// that the simulator makes, and one of which nothing is known but its `state`, "Connected" or
/// "Disconnected".
std::string OpenedSession(const std::string& address);
std::string UnknownSession(const std::string& state);

}  // namespace morvane_test
