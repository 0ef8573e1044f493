#pragma once

#include "simulator/phone/vcard_writer.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace simulator {

/// Thrown when a card cannot be parsed. `line` is the line number in the file, counted from 1.
class MalformedVcard : public std::runtime_error {
  public:
    MalformedVcard(std::size_t line, const std::string& reason)
        : std::runtime_error(reason), line_(line) {}
    [[nodiscard]] std::size_t line() const { return line_; }

  private:
    std::size_t line_;
};

/// Reads a text line by line, without line ends (LF or CR LF). The text must outlive the reader. To
/// look ahead, use a copy.
class LineReader {
  public:
    explicit LineReader(const std::string& text);

    [[nodiscard]] bool AtEnd() const { return position_ >= text_.size(); }
    /// The number of the next line, counted from 1.
    [[nodiscard]] std::size_t Number() const { return number_; }
    /// The next line, without consuming it. Must not be called at the end.
    [[nodiscard]] std::string Next() const;
    std::string Take();

  private:
    const std::string& text_;
    std::size_t position_ = 0;
    std::size_t number_ = 1;
};

enum class Encoding { kNone, kQuotedPrintable, kBase64 };

/// An unfolded line: a property as it is in the file.
struct ContentLine {
    std::size_t number = 0;          ///< number of the first line
    std::string name;                ///< in upper case, without a group
    std::vector<std::string> types;  ///< in upper case
    Encoding encoding = Encoding::kNone;
    std::string charset;  ///< empty: UTF-8
    bool is_uri = false;
    std::string value;  ///< still encoded
};

/// Reads one property, of at least one line. Throws `MalformedVcard`.
ContentLine ReadContentLine(LineReader& lines, VcardFormat version);

/// The decoded bytes of the value. Throws `MalformedVcard`.
std::string Decode(const ContentLine& line);
/// The same as UTF-8 with LF for each line end, still escaped.
std::string DecodeText(const ContentLine& line);

/// Splits a text at each ";" if it is `compound`, and removes the escapes of the version.
std::vector<std::string> SplitText(const std::string& text, VcardFormat version, bool compound);
/// For a value without escapes, such as a URL: removes backslashes and line ends that some phones
/// insert.
std::string WithoutEscapes(const std::string& text);

std::string Upper(const std::string& text);
/// Without white space at both ends.
std::string Trimmed(const std::string& text);

}  // namespace simulator
