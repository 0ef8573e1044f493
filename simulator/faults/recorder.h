#pragma once

#include "console/mutex.h"

#include <chrono>
#include <condition_variable>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// A method call as it arrived.
struct Call {
    std::string sender;  ///< unique name of the caller
    std::string path;
    std::string interface;
    std::string method;
    std::string body;  ///< GVariant text with type annotations; "()" without arguments
};

/// How a call was answered.
struct Answer {
    enum class Kind {
        kReply,
        kError,
        kHangs,      ///< no answer yet; another one follows if the call is released
        kNotWanted,  ///< the caller expects no reply
    };
    Call call;
    Kind kind;
    std::string error_name;  ///< for kError, otherwise empty
    std::string body;        ///< GVariant text with type annotations; empty without an answer
    /// The command whose fault changed the answer, such as "refuse"; empty if none did.
    std::string fault;
};

/// One line for a failure message: "/path interface.Method(body)".
std::string Describe(const Call& call);

/// Records calls in the order of their arrival. Safe from any thread.
class Recorder {
  public:
    void Record(Call call);
    /// Returns whether there were any calls.
    bool Forget();
    [[nodiscard]] std::vector<Call> Calls() const;

    /// Waits for a call of `method` ("Select" or "interface.Select") and returns the first that no
    /// earlier `Await` has returned; nothing after the time-out.
    std::optional<Call> Await(const std::string& method, std::chrono::milliseconds timeout);

  private:
    struct Entry {
        Call call;
        bool awaited = false;
    };
    std::optional<Call> TakeFirst(const std::string& method) MORVANE_REQUIRES(mutex_);

    mutable morvane::Mutex mutex_;
    std::condition_variable_any arrival_;
    std::vector<Entry> entries_ MORVANE_GUARDED_BY(mutex_);
};

}  // namespace simulator
