#include "random/verdict.h"

#include "random/call_rules.h"
#include "support/error_output.h"

#include <algorithm>
#include <csignal>
#include <optional>
#include <set>
#include <string_view>

namespace morvane_test {
namespace {

using Mistakes = std::vector<std::string>;

std::optional<std::string> TextAfter(const std::string& message, std::string_view label) {
    if (message.compare(0, label.size(), label) != 0) return std::nullopt;
    return message.substr(label.size(), message.find('\n') - label.size());
}

// A chosen device without an address ends the process: the tool cannot go on without one.
bool DiedOfMissingAddress(const Plan& plan, const Played& played) {
    return plan.Has(&DaemonEvent::hides_address) && played.ending->signal == SIGABRT &&
           played.errors.find("null") != std::string::npos;
}

bool MayEndSo(const Plan& plan, const Played& played) {
    const Ending& ending = *played.ending;
    if (ending.status == 0 || DiedOfMissingAddress(plan, played)) return true;
    return (ending.signal == SIGINT && played.interrupts > 1) ||
           (ending.signal == SIGHUP && played.hung_up) ||
           (ending.signal == SIGTERM && played.bus_died);
}

void CheckEnding(const Plan& plan, const Played& played, Mistakes& mistakes) {
    if (!played.stuck.empty()) mistakes.push_back("asks for nothing after: " + played.stuck);
    if (!played.not_redrawn.empty())
        mistakes.push_back("does not draw its prompt again after: " + played.not_redrawn);
    if (!played.ending) {
        mistakes.emplace_back("does not end when its input has ended");
    } else if (!MayEndSo(plan, played)) {
        mistakes.push_back("ends wrongly: " + played.ending->Describe());
    }
}

void CheckErrors(const Plan& plan, const Played& played, Mistakes& mistakes) {
    ErrorOutputRules rules;
    if (plan.Has(&DaemonEvent::lies_about_types))
        rules.Allow("GLib-GIO-WARNING .* does not match expected type");
    // GLib's object manager says so by itself when the daemon goes again at once, and the tool when
    // it goes while the tool begins.
    if (played.events.count("leave") > 0 || played.events.count("crash") > 0) {
        rules.Allow("GLib-GIO-WARNING .* Error calling GetManagedObjects\\(\\) when name owner ");
        rules.Allow("^Error getting object manager client: ");
    }
    if (played.bus_died)
        rules.Allow("GLib-GIO-CRITICAL .* Error while sending (Add|Remove)Match.. message: ");
    if (played.ending && DiedOfMissingAddress(plan, played)) {
        rules.Allow("^terminate called after throwing an instance of 'std::logic_error'$");
        rules.Allow("^  what\\(\\):  .*null");
    }
    for (const std::string& line : rules.Undeclared(played.errors))
        mistakes.push_back("on standard error: " + line);
}

bool ConcernsLost(const simulator::Call& call, const LostSession& lost) {
    const bool same = call.path == lost.path;
    const bool below = call.path.compare(0, lost.path.size() + 1, lost.path + "/") == 0;
    // The pull's filter menu does not look whether the session is still connected.
    return (same && call.method != "Pull") || below;
}

void CheckCalls(const Played& played, Mistakes& mistakes) {
    for (const simulator::Call& call : played.calls)
        if (const auto mistake = FindMistake(call))
            mistakes.push_back(*mistake + ": " + Describe(call));
    for (const LostSession& lost : played.lost_sessions)
        for (std::size_t call = lost.from; call < std::min(lost.to, played.calls.size()); ++call)
            if (ConcernsLost(played.calls[call], lost))
                mistakes.push_back("on a lost session: " + Describe(played.calls[call]));
}

/// The names of files that a transfer gave up without deleting them: another took its place, or the
/// daemon had gone before the transfer's own properties were read.
class Files {
  public:
    explicit Files(const std::vector<std::string>& messages) {
        for (const std::string& message : messages) {
            if (const auto begun = TextAfter(message, "Filename: ")) Begin(*begun);
            if (const auto removed = TextAfter(message, "Removing: ")) Remove(*removed);
            if (TextAfter(message, "Filename property not set!")) Begin("");
        }
    }

    bool MayStay(const std::string& name) const {
        return std::any_of(left_.begin(), left_.end(), [&name](const std::string& path) {
            return path.substr(path.rfind('/') + 1) == name;
        });
    }

  private:
    void Begin(const std::string& path) {
        if (!held_.empty()) left_.insert(held_);
        left_.erase(path);
        held_ = path;
    }
    void Remove(const std::string& path) {
        left_.erase(path);
        held_.clear();
    }

    std::string held_;
    std::set<std::string> left_;
};

void CheckFiles(const Plan& plan, const Played& played, const OutputReading& output,
                Mistakes& mistakes) {
    const bool told = !plan.Has(&DaemonEvent::renames_files) &&
                      !plan.Has(&DaemonEvent::fakes_transfers) && !played.control_c;
    const bool judge = told && played.ending && played.ending->status == 0;
    const Files files(output.messages);
    for (const std::string& name : played.files) {
        const bool pulled = name == "phonebook.vcf" || name == "card.vcf";
        if (!pulled || (judge && !files.MayStay(name)))
            mistakes.push_back("leaves a file behind: " + name);
    }
    for (const std::string& process : played.orphans)
        mistakes.push_back("leaves a process behind: " + process);
}

}  // namespace

std::vector<std::string> FindMistakes(const Plan& plan, const Played& played,
                                      const OutputReading& output) {
    Mistakes mistakes;
    if (output.mistake) mistakes.push_back("on standard output: " + *output.mistake);
    CheckEnding(plan, played, mistakes);
    CheckErrors(plan, played, mistakes);
    CheckCalls(played, mistakes);
    CheckFiles(plan, played, output, mistakes);
    return mistakes;
}

}  // namespace morvane_test
