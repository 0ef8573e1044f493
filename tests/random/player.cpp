#include "random/player.h"

#include "simulator/program/commands.h"
#include "support/console.h"
#include "support/messages.h"
#include "support/temporary_directory.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace morvane_test {
namespace {

constexpr char kIdleProbePath[] = "/com/veltrisonix/hci0/dev_settled";
constexpr std::size_t kNotRedrawn = 1;  // which of two awaited texts
constexpr Duration kHangingCall{300};
constexpr Duration kBriefly{1000};

// The ends of prompts drawn for input. Redrawn prompts have no reset before the marker.
const std::vector<std::string> kPromptEnds = {kResetSequence + Red(" > "),
                                              kResetSequence + Red(" ? ")};

// The tool was started with setsid(2): its children have its id as session id.
std::vector<std::string> ChildrenLeft(pid_t tool) {
    std::vector<std::string> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        const auto id = static_cast<pid_t>(std::strtol(name.c_str(), nullptr, 10));
        if (id > 0 && getsid(id) == tool) children.push_back(name);
    }
    return children;
}

class Player {
  public:
    Player(const Plan& plan, PrivateBus& bus, const std::string& program)
        : plan_(plan),
          bus_(bus),
          daemon_(bus.Address(), InDirectory(plan.daemon, directory_.Path())),
          commands_(daemon_),
          console_(Options(program)) {}

    PlayResult Play() {
        if (plan_.waits_for_first_prompt) AwaitIdle("the start");
        for (const Step& step : plan_.steps) {
            PlayStep(step);
            if (console_.HasEnded()) break;
        }
        Terminate();
        AwaitEnd();
        return CollectResult();
    }

  private:
    static simulator::Options InDirectory(simulator::Options options,
                                          const std::string& directory) {
        options.directory = directory;
        return options;
    }

    ConsoleOptions Options(const std::string& program) const {
        ConsoleOptions options = Wired(plan_.wiring);
        options.bus_address = bus_.Address();
        options.directory = directory_.Path();
        options.program = program;
        return options;
    }

    void PlayStep(const Step& step) {
        std::string outcome;
        switch (step.kind) {
            case Step::Kind::kType:
                outcome = Type(step.bytes);
                break;
            case Step::Kind::kCommand:
                outcome = Command(step.event);
                break;
            case Step::Kind::kContent:
                daemon_.SetPullContent(step.bytes);
                break;
            case Step::Kind::kInterrupt:
            case Step::Kind::kControlC:
                Interrupt(step.kind == Step::Kind::kControlC);
                break;
        }
        if (step.awaited) AwaitIdle(Describe(step));
        log_ += "  " + Describe(step) + outcome + "\n";
        RecordLoss(step);
    }

    std::string Type(const std::string& bytes) {
        pending_prompts_ += static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n'));
        if (console_.TryWrite(bytes, hanging_ ? kBriefly : Patience())) return "";
        prompt_count_is_known_ = false;
        return " (not read)";
    }

    std::string Command(const DaemonEvent& event) {
        calls_before_ = daemon_.Calls().size();
        try {
            command_ = Resolved(event.command);
            commands_.Execute(command_);
        } catch (const std::exception& failure) {
            command_.clear();
            return std::string(" (") + failure.what() + ")";
        }
        hanging_ = (hanging_ || event.makes_calls_hang) && command_ != "release";
        const bool leaves = command_ == "leave" || command_ == "crash";
        result_.daemon_left = result_.daemon_left || leaves;
        away_ = (away_ || leaves) && command_ != "come-back";
        return command_ == event.command ? "" : " (" + command_ + ")";
    }

    // Replaces the placeholders. Throws std::runtime_error if the object does not exist.
    std::string Resolved(std::string command) const {
        const auto replace = [&command](const char* word, const std::vector<std::string>& paths) {
            const std::size_t found = command.find(word);
            if (found == command.npos) return;
            if (paths.empty()) throw std::runtime_error(std::string("no ") + word);
            command.replace(found, std::strlen(word), paths.back());
        };
        replace("{session}", daemon_.Sessions());
        replace("{transfer}", daemon_.Transfers());
        replace("{phone}", {daemon_.Phones().front().path});
        return command;
    }

    void Interrupt(bool typed) {
        AwaitPrompts("an interrupt");  // before the first prompt there may be no signal handler
        ++result_.interrupts;
        if (!typed || pending_prompts_ > 0) return console_.Interrupt();
        if (!result_.control_c) result_.control_c = console_.Output().size();
        console_.TryWrite("\x03", Patience());
    }

    /// Waits for a prompt for each typed line.
    void AwaitPrompts(const std::string& what) {
        while (pending_prompts_ > 0) {
            const bool may_be_missing = hanging_ || !prompt_count_is_known_;
            const Duration limit = may_be_missing ? kHangingCall : 3 * Patience();
            if (console_.SkipPastAny(kPromptEnds, limit)) {
                --pending_prompts_;
            } else {
                if (!may_be_missing && !console_.AwaitEnd(kBriefly)) result_.stuck = what;
                return;
            }
        }
    }

    /// Also waits until the tool has processed everything that the daemon has sent.
    void AwaitIdle(const std::string& what) {
        AwaitPrompts(what);
        is_idle_ = false;
        if (pending_prompts_ > 0 || !prompt_count_is_known_ || hanging_ || away_ ||
            result_.interrupts > 0)
            return;
        // The device is removed immediately: its address is invalid.
        const std::string path = kIdleProbePath;
        daemon_.AddDevice(path, "00:00:00:00:00:00", "settled");
        const std::string found_line = "Found Device " + path + "\n";
        const std::optional<std::size_t> found = console_.SkipPastAny(
            {found_line + kGreenSequence, found_line + kResetSequence}, Patience());
        if (found == kNotRedrawn) result_.not_redrawn = what;
        daemon_.RemoveDevice(path);
        is_idle_ = found && console_.SkipPastAny({"Removed " + path + "\n"}, Patience());
    }

    void RecordLoss(const Step& step) {
        std::istringstream words(step.kind == Step::Kind::kCommand ? command_ : "");
        std::string verb;
        std::string path;
        std::string state;
        words >> verb >> path >> state;
        if (verb != "state" && verb != "close") return;
        for (LostSession& lost : result_.lost_sessions)
            if (lost.path == path) lost.to = std::min(lost.to, calls_before_);
        if (state != "5" && step.awaited && is_idle_)
            result_.lost_sessions.push_back(
                {path, daemon_.Calls().size(), static_cast<std::size_t>(-1)});
    }

    void Terminate() {
        if (plan_.termination == Termination::kHangUp) {
            result_.hung_up = true;
            return console_.HangUp();
        }
        if (plan_.termination == Termination::kBusDies) {
            result_.bus_died = true;
            bus_.Kill();
            if (console_.AwaitEnd(kBriefly)) return;
        }
        console_.TryWrite(plan_.last_input, kBriefly);
        CloseInput();
    }

    // On a terminal Ctrl-D in an incomplete line only submits it, so it is typed twice.
    void CloseInput() {
        constexpr char kControlD[] = "\x04";
        if (plan_.wiring == Wiring::kPipes) return console_.CloseInput();
        console_.TryWrite(kControlD, kBriefly);
        console_.TryWrite(kControlD, kBriefly);
    }

    void AwaitEnd() {
        if (!console_.AwaitEnd(kBriefly) && hanging_) {
            log_ += "  (releasing pending calls)\n";
            daemon_.Release();
        }
        result_.ending = console_.AwaitEnd(3 * Patience());
        if (!result_.ending) console_.Kill();
        console_.AwaitEndOfOutput();
    }

    PlayResult CollectResult() {
        result_.orphans = ChildrenLeft(console_.ProcessId());
        result_.output = console_.Output();
        result_.errors = console_.Errors();
        result_.calls = daemon_.Calls();
        for (const auto& entry : std::filesystem::directory_iterator(directory_.Path()))
            result_.files.push_back(entry.path().filename());
        result_.report =
            "---- " + Describe(plan_) + "\n" + log_ + console_.FailureReport() + "---- Calls\n";
        for (const simulator::Call& call : result_.calls)
            result_.report += simulator::Describe(call) + "\n";
        return result_;
    }

    const Plan& plan_;
    PrivateBus& bus_;
    TemporaryDirectory directory_;
    simulator::Daemon daemon_;
    simulator::Commands commands_;
    Console console_;
    PlayResult result_;
    std::string log_;
    std::string command_;                // last executed command; empty if it failed
    std::size_t calls_before_ = 0;       // number of calls before it
    std::size_t pending_prompts_ = 1;    // the first one, and one for each line
    bool prompt_count_is_known_ = true;  // false if input was read partly
    bool hanging_ = false;               // calls may get no reply
    bool away_ = false;                  // the daemon is not on the bus
    bool is_idle_ = false;
};

}  // namespace

PlayResult Play(const Plan& plan, PrivateBus& bus, const std::string& program) {
    return Player(plan, bus, program).Play();
}

}  // namespace morvane_test
