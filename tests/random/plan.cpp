#include "random/plan.h"

#include "random/operator_lines.h"
#include "support/text_form.h"

#include <algorithm>

namespace morvane_test {
namespace {

constexpr std::size_t kShownOfLine = 120;

// One of several phones requires these credentials.
constexpr char kCredentials[] = "u\nengineer\np\n1234\n";

struct TerminationRow {
    Termination termination;
    unsigned weight;
    bool needs_terminal;
    const char* name;
};

constexpr TerminationRow kTerminations[] = {
    {Termination::kEndOfInput, 50, false, "end of input"},
    {Termination::kUnterminatedLine, 25, false, "end of input within a line"},
    {Termination::kQuit, 15, false, "quit"},
    {Termination::kHangUp, 12, true, "terminal hang-up"},
    {Termination::kBusDies, 4, false, "loss of the bus"},
};

simulator::Options DrawOptions(RandomSource& random) {
    simulator::Options options;
    options.phones = random.Chance(50) ? 1 : 2 + static_cast<unsigned>(random.Below(2));
    options.contacts = static_cast<unsigned>(random.Below(30));
    options.seed = static_cast<std::uint32_t>(random.Below(1000));
    options.pace =
        random.Chance(60) ? simulator::TransferPace::kByHand : simulator::TransferPace::kByRate;
    options.rate = random.Below(3) * 10000;
    options.size_in_reply = random.Chance(70);
    options.announce = random.Chance(60);
    if (random.Chance(3)) options.connection_state = static_cast<std::uint8_t>(random.Below(5));
    return options;
}

// The content of pulls, without escape sequences, which would make the output ambiguous.
std::string DrawContent(RandomSource& random) {
    constexpr std::size_t kSizes[] = {0, 1, 511, 512, 513, 1024, 5000};
    std::string content;
    const std::size_t size = random.Pick(kSizes);
    const bool binary = random.Chance(30);
    while (content.size() < size) {
        const auto byte = static_cast<char>(binary ? random.Below(256) : 32 + random.Below(95));
        content += byte == '\x1b' ? '\n' : byte;
    }
    return content;
}

/// Draws the steps in order.
class StepGenerator {
  public:
    StepGenerator(RandomSource& random, OperatorModel& typist, bool on_terminal)
        : random_(random), operator_(typist), on_terminal_(on_terminal), events_(random) {}

    Step DrawStep() {
        if (random_.Chance(72)) return DrawTyping();
        if (random_.Chance(5)) return {Step::Kind::kContent, DrawContent(random_), {}, true};
        if (random_.Chance(3)) return DrawInterrupt();
        return DrawEvent();
    }

  private:
    Step DrawTyping() {
        if (random_.Chance(3)) return {Step::Kind::kType, operator_.GoHome(), {}, true};
        const std::size_t lines = random_.Chance(15) ? 2 + random_.Below(5) : 1;
        std::string bytes;
        for (std::size_t line = 0; line < lines; ++line) bytes += operator_.DrawLine() + "\n";
        return {Step::Kind::kType, bytes, {}, random_.Chance(90)};
    }

    Step DrawInterrupt() {
        const bool typed = on_terminal_ && random_.Chance(50);
        return {typed ? Step::Kind::kControlC : Step::Kind::kInterrupt, "", {}, random_.Chance(50)};
    }

    Step DrawEvent() {
        const DaemonEvent event = events_.Draw();
        operator_.Expect(event);
        return {Step::Kind::kCommand, "", event, random_.Chance(70)};
    }

    RandomSource& random_;
    OperatorModel& operator_;
    bool on_terminal_;
    DaemonEventGenerator events_;
};

std::string Shown(const std::string& bytes) {
    std::string text = Escaped(bytes.substr(0, kShownOfLine));
    text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
    if (bytes.size() > kShownOfLine) text += "... (" + std::to_string(bytes.size()) + " bytes)";
    return '"' + text + '"';
}

std::string DescribeAction(const Step& step) {
    switch (step.kind) {
        case Step::Kind::kType:
            return "type " + Shown(step.bytes);
        case Step::Kind::kCommand:
            return step.event.command;
        case Step::Kind::kContent:
            return "pulls return " + Shown(step.bytes);
        case Step::Kind::kInterrupt:
            return "SIGINT";
        case Step::Kind::kControlC:
            return "Ctrl-C";
    }
    return "";
}

}  // namespace

bool Plan::Has(DaemonTrait trait) const {
    return std::any_of(steps.begin(), steps.end(),
                       [trait](const Step& step) { return step.event.*trait; });
}

Plan DrawPlan(std::uint64_t seed) {
    RandomSource random(seed);
    const bool on_terminal = random.Chance(50);
    Plan plan = {};
    plan.seed = seed;
    plan.wiring = on_terminal ? Wiring::kTerminal : Wiring::kPipes;
    plan.daemon = DrawOptions(random);
    plan.waits_for_first_prompt = random.Chance(80);
    OperatorModel typist(random, on_terminal, plan.daemon.phones);
    StepGenerator steps_of(random, typist, on_terminal);
    if (random.Chance(80)) plan.steps.push_back({Step::Kind::kType, kCredentials, {}, true});
    const std::size_t steps = 6 + random.Below(18) + random.Below(18);
    for (std::size_t step = 0; step < steps; ++step) plan.steps.push_back(steps_of.DrawStep());
    const auto weight = [on_terminal](const TerminationRow& row) {
        return row.needs_terminal && !on_terminal ? 0 : row.weight;
    };
    plan.termination = random.PickWeighted(kTerminations, weight).termination;
    if (plan.termination == Termination::kQuit)
        plan.last_input = random.Chance(50) ? "q\n" : "Quit\n";
    if (plan.termination == Termination::kUnterminatedLine)
        plan.last_input = typist.DrawUnterminated();
    return plan;
}

std::string Describe(const Step& step) {
    return DescribeAction(step) + (step.awaited ? "" : " (without waiting)");
}

std::string Describe(const Plan& plan) {
    const bool by_hand = plan.daemon.pace == simulator::TransferPace::kByHand;
    std::string text = std::string(plan.wiring == Wiring::kPipes ? "Pipes" : "Terminal") + ", " +
                       std::to_string(plan.daemon.phones) + " phones of " +
                       std::to_string(plan.daemon.contacts) + " contacts, transfers by " +
                       (by_hand ? "hand" : "rate") + ", at the end ";
    for (const TerminationRow& row : kTerminations)
        if (row.termination == plan.termination) text += row.name;
    return text + " " + Shown(plan.last_input);
}

}  // namespace morvane_test
