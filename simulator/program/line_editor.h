#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace simulator {

/// Replacements for the last word of a line that is being typed.
struct Completion {
    std::size_t from;  ///< offset in bytes of the word that is completed
    std::vector<std::string> words;
};

/// Edits lines on a terminal, with completion and a history in memory, in the thread of the default
/// main context. The destructor restores the terminal's modes.
class LineEditor {
  public:
    /// Returns whether another line is wanted.
    using Execute = std::function<bool(const std::string& line)>;
    using Complete = std::function<Completion(const std::string& typed)>;

    LineEditor() = default;
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;
    virtual ~LineEditor() = default;

    /// Displays the prompt and reads lines until the end of input.
    virtual void Start() = 0;
    /// Writes whole lines above the line that is being typed.
    virtual void Write(const std::string& text) = 0;
};

/// Whether lines can be edited here: standard input and output are a terminal with a cursor, in
/// whose foreground this process is, and the program was built with the library. Sets the encoding
/// of the process to that of commands: call it before there are other threads.
bool CanEditLines();

std::unique_ptr<LineEditor> MakeLineEditor(LineEditor::Execute execute,
                                           LineEditor::Complete complete);

}  // namespace simulator
