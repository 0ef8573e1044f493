#pragma once

#include <stdexcept>
#include <string>

namespace morvane {

// Errors of a menu's action. None derives from another: each menu lists the types that it catches
// and reports; others propagate to the calling menu.

/// A typed proxy could not be created.
class ProxyException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The operator's answer is invalid, or a required selection is missing.
class InvalidValueException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The object of a menu was removed while the menu waited for input.
class InvalidObjectException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The daemon refused a call.
class IapiException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A service refused with its own error code. Reported by the menus; nothing throws it yet.
class SapiException : public std::runtime_error {
  public:
    SapiException(const std::string& text, int code) : std::runtime_error(text), code_(code) {}

    [[nodiscard]] int Code() const noexcept { return code_; }

  private:
    int code_;
};

/// Standard input ended in a menu without a key to quit. Not an error and never printed: it unwinds
/// to a menu whose next read returns the key to quit.
class InputEnded {};

}  // namespace morvane
