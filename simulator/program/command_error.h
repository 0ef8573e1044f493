#pragma once

#include <stdexcept>
#include <string>

namespace simulator {

enum class CommandErrorKind {
    kUnknownCommand,
    kBadArguments,  ///< too few or too many, malformed, or with a name that the interfaces lack
    kNoSuchObject,  ///< no such session, transfer or device
    kOtherFailure,  ///< valid, but currently impossible
};

/// Why a command was not executed, in one line.
class CommandError : public std::runtime_error {
  public:
    CommandError(CommandErrorKind kind, const std::string& message)
        : std::runtime_error(message), kind_(kind) {}
    [[nodiscard]] CommandErrorKind kind() const noexcept { return kind_; }

  private:
    CommandErrorKind kind_;
};

inline CommandError Invalid(const std::string& message) {
    return {CommandErrorKind::kBadArguments, message};
}

}  // namespace simulator
