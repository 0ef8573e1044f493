#pragma once

#include "random/daemon_events.h"
#include "random/random_source.h"
#include "support/menus.h"

#include <set>
#include <string>
#include <vector>

namespace morvane_test {

/// An operator who draws lines that lead deep into the menus, and others. Where the tool will be
/// after a line is forecast and not looked up, so that the lines depend on the random alone; a
/// forecast that fails only makes the lines less apt until the two meet again.
class OperatorModel {
  public:
    /// `on_terminal`: no bytes that a terminal interprets, and no long lines. `phones`: the number
    /// of devices that can be chosen.
    OperatorModel(RandomSource& random, bool on_terminal, unsigned phones)
        : random_(random), on_terminal_(on_terminal), phones_(phones) {}

    /// Without its newline.
    std::string DrawLine();
    /// Lines that lead to the main menu from nearly anywhere.
    std::string GoHome();
    /// What happens to be typed when the input ends.
    std::string DrawUnterminated();

    /// The daemon does this before the next line.
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
