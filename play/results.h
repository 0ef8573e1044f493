#pragma once

#include <cstddef>
#include <string>

namespace play {

/// Prints the result of each file to standard output, as text or in the Test Anything Protocol.
/// As text, also displays the progress if standard error is a terminal.
class Results {
  public:
    Results(bool tap, std::size_t files);
    Results(const Results&) = delete;
    Results& operator=(const Results&) = delete;
    /// Erases the progress line if a signal has interrupted a file.
    ~Results() { EraseProgress(); }

    void Progress(const std::string& file, std::size_t line, std::size_t lines) const;
    enum class Verdict { kAgrees, kUpdated, kFailed };
    /// `report`: see Player::Play.
    void Add(const std::string& file, Verdict verdict, const std::string& report);

  private:
    void EraseProgress() const;

    bool tap_;
    bool shows_progress_;
    std::size_t number_ = 0;
};

}  // namespace play
