#pragma once

#include <stdexcept>
#include <string>

namespace simulator {

// The names of the errors with which the daemon refuses a call.
inline constexpr char kInvalidArguments[] = "com.veltrisonix.Error.InvalidArguments";
inline constexpr char kDoesNotExist[] = "com.veltrisonix.Error.DoesNotExist";
inline constexpr char kNotSupported[] = "com.veltrisonix.Error.NotSupported";
inline constexpr char kNotAuthorized[] = "com.veltrisonix.Error.NotAuthorized";
inline constexpr char kNotConnected[] = "com.veltrisonix.Error.NotConnected";
inline constexpr char kForbidden[] = "com.veltrisonix.Error.Forbidden";
inline constexpr char kNotInProgress[] = "com.veltrisonix.Error.NotInProgress";
inline constexpr char kFailed[] = "com.veltrisonix.Error.Failed";

/// Thrown by the handler of a call; becomes the error reply.
class Refusal : public std::runtime_error {
  public:
    Refusal(std::string name, const std::string& message)
        : std::runtime_error(message), name_(std::move(name)) {}
    [[nodiscard]] const std::string& name() const noexcept { return name_; }

  private:
    std::string name_;
};

}  // namespace simulator
