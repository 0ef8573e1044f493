#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace morvane_test {

/// A run of the tool as documents show it: the command line behind a "$ ", then what appears, with
/// what is typed behind the prompts.
struct PlayedSession {
    struct Step {
        std::string output;  ///< ends with the prompt
        std::string answer;
    };

    std::string command;
    std::vector<Step> steps;
    std::string rest;  ///< what appears after the last answer
};

PlayedSession ParseSession(const std::string& text);
std::string FormatSession(const PlayedSession& session);

/// Output as documents show it: without colours and trailing blanks, without the prompts under
/// which a message came and that were therefore drawn again, and with X for the random letters in
/// the name of the demo's directory.
std::string AsDocumented(std::string_view bytes);

/// Whether a prompt stands at the end of output as documents show it.
bool EndsInPrompt(const std::string& documented);

}  // namespace morvane_test
