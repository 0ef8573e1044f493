#pragma once

namespace morvane {

/// The lines above and below menus, choice lists and results.
void PrintStars();
void PrintDashes();

/// Opens a list: stars, " `title`", dashes.
void PrintHeading(const char* title);

/// One numbered choice; the number that the operator types is `index`.
void PrintChoice(int index, const char* text);

/// " x) Exit this input"
void PrintExitLine();

}  // namespace morvane
