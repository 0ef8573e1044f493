#include "console/frames.h"

#include "console/console_output.h"

namespace morvane {

void PrintStars() {
    PROXY_Print(kGreen, "*****************************************************\n");
}

void PrintDashes() {
    PROXY_Print(kGreen, "-----------------------------------------------------\n");
}

void PrintHeading(const char* title) {
    PrintStars();
    PROXY_Print(kNormal, " %s\n", title);
    PrintDashes();
}

void PrintChoice(int index, const char* text) {
    PROXY_Print(kNormal, " %d) %s\n", index, text);
}

void PrintExitLine() {
    PROXY_Print(kNormal, " x) Exit this input\n");
}

}  // namespace morvane
