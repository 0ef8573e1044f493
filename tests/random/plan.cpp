#include "random/plan.h"

#include "random/operator_lines.h"
#include "support/text_form.h"

#include <algorithm>

namespace morvane_test {
namespace {

constexpr std::size_t kShownOfLine = 120;

// Of several phones one demands these. They are set at the main menu.
constexpr char kCredentials[] = "u\nengineer\np\n1234\n";

struct FarewellRow {
    Farewell farewell;
    unsigned weight;
    bool on_terminals_only;
    const char* name;
};

constexpr FarewellRow kFarewells[] = {
    {Farewell::kEndOfInput, 50, false, "end of input"},
    {Farewell::kUnterminatedLine, 25, false, "end of input within a line"},
    {Farewell::kQuit, 15, false, "quit"},
    {Farewell::kHangUp, 12, true, "the terminal hangs up"},
    {Farewell::kBusDies, 4, false, "the bus dies"},
};

simulator::Options DrawOptions(Dice& dice) {
    simulator::Options options;
    options.phones = dice.Chance(50) ? 1 : 2 + static_cast<unsigned>(dice.Below(2));
    options.contacts = static_cast<unsigned>(dice.Below(30));
    options.seed = static_cast<std::uint32_t>(dice.Below(1000));
    options.pace =
        dice.Chance(60) ? simulator::TransferPace::kByHand : simulator::TransferPace::kByRate;
    options.rate = dice.Below(3) * 10000;
    options.size_in_reply = dice.Chance(70);
    options.announce = dice.Chance(60);
    if (dice.Chance(3)) options.connection_state = static_cast<std::uint8_t>(dice.Below(5));
    return options;
}

// What a pull downloads. Escape sequences would make the output ambiguous.
std::string DrawContent(Dice& dice) {
    constexpr std::size_t kSizes[] = {0, 1, 511, 512, 513, 1024, 5000};
    std::string content;
    const std::size_t size = dice.Pick(kSizes);
    const bool binary = dice.Chance(30);
    while (content.size() < size) {
        const auto byte = static_cast<char>(binary ? dice.Below(256) : 32 + dice.Below(95));
        content += byte == '\x1b' ? '\n' : byte;
    }
    return content;
}

/// Draws the steps, one after the other.
class Author {
  public:
    Author(Dice& dice, Operator& typist, bool on_terminal)
        : dice_(dice), operator_(typist), on_terminal_(on_terminal), moods_(dice) {}

    Step DrawStep() {
        if (dice_.Chance(72)) return DrawTyping();
        if (dice_.Chance(5)) return {Step::Kind::kContent, DrawContent(dice_), {}, true};
        if (dice_.Chance(3)) return DrawInterrupt();
        return DrawEvent();
    }

  private:
    Step DrawTyping() {
        if (dice_.Chance(3)) return {Step::Kind::kType, operator_.GoHome(), {}, true};
        const std::size_t lines = dice_.Chance(15) ? 2 + dice_.Below(5) : 1;
        std::string bytes;
        for (std::size_t line = 0; line < lines; ++line) bytes += operator_.DrawLine() + "\n";
        return {Step::Kind::kType, bytes, {}, dice_.Chance(90)};
    }

    Step DrawInterrupt() {
        const bool typed = on_terminal_ && dice_.Chance(50);
        return {typed ? Step::Kind::kControlC : Step::Kind::kInterrupt, "", {}, dice_.Chance(50)};
    }

    Step DrawEvent() {
        const DaemonEvent event = moods_.Draw();
        operator_.Expect(event);
        return {Step::Kind::kCommand, "", event, dice_.Chance(70)};
    }

    Dice& dice_;
    Operator& operator_;
    bool on_terminal_;
    DaemonMoods moods_;
};

std::string Shown(const std::string& bytes) {
    std::string text = Escaped(bytes.substr(0, kShownOfLine));
    text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
    if (bytes.size() > kShownOfLine) text += "... (" + std::to_string(bytes.size()) + " bytes)";
    return '"' + text + '"';
}

std::string WhatHappens(const Step& step) {
    switch (step.kind) {
        case Step::Kind::kType:
            return "type " + Shown(step.bytes);
        case Step::Kind::kCommand:
            return step.event.command;
        case Step::Kind::kContent:
            return "pulls bring " + Shown(step.bytes);
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
    Dice dice(seed);
    const bool on_terminal = dice.Chance(50);
    Plan plan = {};
    plan.seed = seed;
    plan.wiring = on_terminal ? Wiring::kTerminal : Wiring::kPipes;
    plan.daemon = DrawOptions(dice);
    plan.waits_for_first_prompt = dice.Chance(80);
    Operator typist(dice, on_terminal, plan.daemon.phones);
    Author author(dice, typist, on_terminal);
    if (dice.Chance(80)) plan.steps.push_back({Step::Kind::kType, kCredentials, {}, true});
    const std::size_t steps = 6 + dice.Below(18) + dice.Below(18);
    for (std::size_t step = 0; step < steps; ++step) plan.steps.push_back(author.DrawStep());
    const auto weight = [on_terminal](const FarewellRow& row) {
        return row.on_terminals_only && !on_terminal ? 0 : row.weight;
    };
    plan.farewell = dice.PickWeighted(kFarewells, weight).farewell;
    if (plan.farewell == Farewell::kQuit) plan.last_words = dice.Chance(50) ? "q\n" : "Quit\n";
    if (plan.farewell == Farewell::kUnterminatedLine) plan.last_words = typist.DrawUnterminated();
    return plan;
}

std::string Describe(const Step& step) {
    return WhatHappens(step) + (step.awaited ? "" : " (and go on at once)");
}

std::string Describe(const Plan& plan) {
    const bool by_hand = plan.daemon.pace == simulator::TransferPace::kByHand;
    std::string text = std::string(plan.wiring == Wiring::kPipes ? "Pipes" : "Terminal") + ", " +
                       std::to_string(plan.daemon.phones) + " phones of " +
                       std::to_string(plan.daemon.contacts) + " contacts, transfers by " +
                       (by_hand ? "hand" : "rate") + ", at the end ";
    for (const FarewellRow& row : kFarewells)
        if (row.farewell == plan.farewell) text += row.name;
    return text + " " + Shown(plan.last_words);
}

}  // namespace morvane_test
