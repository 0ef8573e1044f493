#include "random/checker.h"

#include "random/output_grammar.h"
#include "support/console.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <optional>
#include <set>

namespace morvane_test {
namespace {

using Mistakes = std::vector<std::string>;

// The file name of the path in a message that begins with `label`.
std::optional<std::string> NameAfter(const std::string& message, const std::string& label) {
    if (message.rfind(label, 0) != 0) return std::nullopt;
    return std::filesystem::path(message.substr(0, message.find('\n')).substr(label.size()))
        .filename();
}

// The tool aborts if the chosen device has no address.
bool AbortedOnMissingAddress(const Plan& plan, const PlayResult& result) {
    return plan.Has(&DaemonEvent::hides_address) && result.ending->signal == SIGABRT &&
           result.errors.find("null") != std::string::npos;
}

bool IsAllowedEnding(const Plan& plan, const PlayResult& result) {
    const Ending& ending = *result.ending;
    if (ending.status == 0 || AbortedOnMissingAddress(plan, result)) return true;
    return (ending.signal == SIGINT && result.interrupts > 1) ||
           (ending.signal == SIGHUP && result.hung_up) ||
           (ending.signal == SIGTERM && result.bus_died);
}

void CheckEnding(const Plan& plan, const PlayResult& result, Mistakes& mistakes) {
    if (!result.stuck.empty()) mistakes.push_back("no prompt after: " + result.stuck);
    if (!result.not_redrawn.empty())
        mistakes.push_back("prompt not redrawn after: " + result.not_redrawn);
    if (!result.ending) {
        mistakes.emplace_back("does not exit at end of input");
    } else if (!IsAllowedEnding(plan, result)) {
        mistakes.push_back("unexpected end: " + result.ending->Describe());
    }
}

void CheckErrors(const Plan& plan, const PlayResult& result, Mistakes& mistakes) {
    std::vector<std::string> allowed;
    if (plan.Has(&DaemonEvent::mistypes_properties))
        allowed.emplace_back("GLib-GIO-WARNING .* does not match expected type");
    // The first is printed by GLib's object manager if the daemon returns only briefly, the second
    // by the tool if the daemon disconnects during its start.
    if (result.daemon_left) {
        allowed.emplace_back(
            "GLib-GIO-WARNING .* Error calling GetManagedObjects\\(\\) when name owner ");
        allowed.emplace_back("^Error getting object manager client: ");
    }
    if (result.bus_died)
        allowed.emplace_back(
            "GLib-GIO-CRITICAL .* Error while sending (Add|Remove)Match.. message: ");
    if (result.ending && AbortedOnMissingAddress(plan, result)) {
        allowed.emplace_back("^terminate called after throwing an instance of 'std::logic_error'$");
        allowed.emplace_back("^  what\\(\\):  .*null");
    }
    for (const std::string& line : UndeclaredErrors(result.errors, allowed))
        mistakes.push_back("on standard error: " + line);
}

bool ConcernsLost(const simulator::Call& call, const LostSession& lost) {
    const bool same = call.path == lost.path;
    const bool below = call.path.compare(0, lost.path.size() + 1, lost.path + "/") == 0;
    // The filter menu of Pull does not check the connection.
    return (same && call.method != "Pull") || below;
}

void CheckCalls(const PlayResult& result, Mistakes& mistakes) {
    for (const simulator::Call& call : result.calls)
        if (const auto mistake = FindMistake(call))
            mistakes.push_back(*mistake + ": " + Describe(call));
    for (const LostSession& lost : result.lost_sessions)
        for (std::size_t call = lost.from; call < std::min(lost.to, result.calls.size()); ++call)
            if (ConcernsLost(result.calls[call], lost))
                mistakes.push_back("call on a lost session: " + Describe(result.calls[call]));
}

// Files that no transfer deletes: the transfer was replaced, or the daemon disconnected before its
// properties were read.
std::set<std::string> FilesThatMayStay(const std::vector<std::string>& messages) {
    std::set<std::string> names;
    std::string current;
    for (const std::string& message : messages) {
        const std::optional<std::string> removed = NameAfter(message, "Removing: ");
        std::optional<std::string> begun = NameAfter(message, "Filename: ");
        if (NameAfter(message, "Filename property not set!")) begun = "";
        if (!removed && !begun) continue;
        if (begun) names.insert(current);
        current = begun.value_or("");
        names.erase(removed.value_or(current));
    }
    return names;
}

void CheckFiles(const Plan& plan, const PlayResult& result,
                const std::vector<std::string>& messages, Mistakes& mistakes) {
    const bool knows_files = !plan.Has(&DaemonEvent::renames_files) &&
                             !plan.Has(&DaemonEvent::fakes_transfers) && !result.control_c;
    const bool must_delete = knows_files && result.ending && result.ending->status == 0;
    const std::set<std::string> may_stay = FilesThatMayStay(messages);
    for (const std::string& name : result.files) {
        const bool pulled = name == "phonebook.vcf" || name == "card.vcf";
        if (!pulled || (must_delete && may_stay.count(name) == 0))
            mistakes.push_back("remaining file: " + name);
    }
    for (const std::string& process : result.orphans)
        mistakes.push_back("remaining process: " + process);
}

}  // namespace

std::vector<std::string> FindMistakes(const Plan& plan, const PlayResult& result) {
    Mistakes mistakes;
    // Output may be incomplete after a signal or hang-up.
    const bool truncated = !result.ending || result.ending->signal || result.hung_up;
    const OutputReading output = ReadOutput(result.output, truncated, result.control_c);
    if (output.mistake) mistakes.push_back("on standard output: " + *output.mistake);
    CheckEnding(plan, result, mistakes);
    CheckErrors(plan, result, mistakes);
    CheckCalls(result, mistakes);
    CheckFiles(plan, result, output.messages, mistakes);
    return mistakes;
}

}  // namespace morvane_test
