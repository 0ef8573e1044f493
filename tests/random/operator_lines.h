#pragma once

#include "random/daemon_events.h"
#include "random/random_source.h"
#include "support/menus.h"

#include <set>
#include <string>
#include <vector>

namespace morvane_test {

/// Draws the lines of an operator: mostly valid ones that lead deep into the menus. The next prompt
/// is predicted and not read from the tool, so that the lines depend on the seed only; after a
/// wrong prediction lines are invalid more often until it is correct again.
class OperatorModel {
  public:
    /// `on_terminal`: no control bytes and no long lines. `phones`: the number of devices.
    OperatorModel(RandomSource& random, bool on_terminal, unsigned phones)
        : random_(random), on_terminal_(on_terminal), phones_(phones) {}

    /// Without a newline.
    std::string DrawLine();
    /// Lines that return to the main menu from nearly any prompt.
    std::string GoHome();
    /// An incomplete line before the end of input.
    std::string DrawUnterminated();

    /// Takes into account an event of the daemon before the next line.
    void Expect(const DaemonEvent& event);

  private:
    PromptId Now() const { return prompts_.back(); }
    unsigned LimitOf(PromptId prompt) const;
    bool Fails(PromptId prompt) const;
    std::string DrawPlausible();
    std::string DrawKey();
    std::string DrawNumber();
    std::string DrawText();
    std::string DrawUnusual();
    std::string DrawBytes(std::size_t length);

    void Predict(const std::string& line);
    void PredictKey(char key);
    void PredictNumber(const std::string& line);
    void Finish(PromptId next, bool to_menu_above);

    RandomSource& random_;
    bool on_terminal_;
    unsigned phones_;
    std::vector<PromptId> prompts_ = {PromptId::kMain};
    bool selected_ = false;
    bool session_lost_ = false;
    bool client_exists_ = true;
    std::set<std::string> failing_;  // methods
};

}  // namespace morvane_test
