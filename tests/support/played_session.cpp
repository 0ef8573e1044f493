#include "support/played_session.h"

#include "support/text_form.h"

#include <regex>
#include <sstream>

namespace morvane_test {
namespace {

std::string Replace(const std::string& text, const char* pattern, const char* by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

}  // namespace

PlayedSession ParseSession(const std::string& text) {
    static const std::regex answered("(Vantor(?:/.*)? [>?]) (.+)");
    PlayedSession session;
    std::istringstream lines(text);
    std::getline(lines, session.command);
    session.command = Replace(session.command, "^\\$ ", "");
    std::string output;
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, match, answered)) {
            session.steps.push_back({output + match.str(1), match.str(2)});
            output.clear();
        } else {
            output += line + "\n";
        }
    }
    session.rest = output;
    return session;
}

std::string FormatSession(const PlayedSession& session) {
    std::string text = "$ " + session.command + "\n";
    for (const PlayedSession::Step& step : session.steps)
        text += step.output + " " + step.answer + "\n";
    return text + session.rest;
}

std::string AsDocumented(std::string_view bytes) {
    std::string text = AsSeen(bytes);
    text = Replace(text, " /[^\\n]*/morvane-demo\\.[A-Za-z0-9]{6}", " /tmp/morvane-demo.XXXXXX");
    text = Replace(text, "Vantor(/[^\\n]*)? [>?] \\n", "");
    return Replace(text, "[ \\t]+(?=\\n|$)", "");
}

bool EndsInPrompt(const std::string& documented) {
    static const std::regex prompt("Vantor(/.*)? [>?]");
    return std::regex_match(documented.substr(documented.rfind('\n') + 1), prompt);
}

}  // namespace morvane_test
