#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/patience.h"

namespace morvane_test {

/// Everything that a stream has carried, and how much of it a test has consumed. Consumed bytes
/// never match again. One thread appends, another awaits.
class Transcript {
  public:
    enum class Result {
        kMatched,
        kDiffers,  ///< other bytes came than the expected ones
        kEnded,    ///< the stream ended first
        kTimedOut,
    };

    void Append(std::string_view bytes);
    /// No more bytes will come.
    void End();

    /// Consumes `bytes` if exactly they come next; nothing otherwise.
    Result ExpectNext(std::string_view bytes, Duration limit);
    /// Consumes everything up to the end of the next occurrence of `bytes`; nothing otherwise.
    Result SkipPast(std::string_view bytes, Duration limit);
    /// Consumes everything up to the end of whichever of `texts` comes first, and tells which.
    std::optional<std::size_t> SkipPastAny(const std::vector<std::string>& texts, Duration limit);
    /// Awaits all `texts` in whatever order, and consumes up to the end of the last of them.
    Result SkipPastAll(const std::vector<std::string>& texts, Duration limit);
    /// Consumes everything that has come, once `accepts` says yes to it; nothing before.
    Result TakeAllIf(const std::function<bool(std::string_view)>& accepts, Duration limit);
    /// Awaits the end of the stream; consumes nothing.
    Result AwaitEnd(Duration limit);

    std::string Consumed() const;
    std::string Unconsumed() const;
    std::string All() const;

  private:
    template <typename Attempt>
    Result AwaitMatch(Duration limit, Attempt attempt);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::string bytes_;         // mutex_
    std::size_t consumed_ = 0;  // mutex_
    bool ended_ = false;        // mutex_
};

}  // namespace morvane_test
