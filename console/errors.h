#pragma once

#include <stdexcept>
#include <string>

namespace morvane {

// What may go wrong in a menu's action. None derives from another: each menu names the types that
// it reports, and whatever it does not name goes up to the menu above.

/// A typed proxy could not be created.
class ProxyException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The operator chose or typed something unusable, or has not selected what an action needs.
class InvalidValueException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The object that a menu works on went away while the operator was asked.
class InvalidObjectException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The daemon refused a call.
class IapiException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A service refused with a code of its own. The menus report it; nothing throws it yet.
class SapiException : public std::runtime_error {
  public:
    SapiException(const std::string& text, int code) : std::runtime_error(text), code_(code) {}

    [[nodiscard]] int Code() const noexcept { return code_; }

  private:
    int code_;
};

/// No error and never printed: standard input ended in a menu that offers no key to quit. Unwinds
/// to a menu whose next read will find the end of the input and quit.
class InputEnded {};

}  // namespace morvane
