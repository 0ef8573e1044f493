#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/file_descriptor.h"
#include "support/patience.h"

namespace morvane_test {

/// Everything that was read from a stream, and how much of it a test has consumed. Consumed bytes
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
    /// Consumes up to the end of the first occurrence of any of `texts`, and returns its index.
    std::optional<std::size_t> SkipPastAny(const std::vector<std::string>& texts, Duration limit);
    /// Awaits all `texts` in any order, and consumes up to the end of the last of them.
    Result SkipPastAll(const std::vector<std::string>& texts, Duration limit);
    /// Consumes everything so far once `accepts` returns true for it; nothing before.
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

/// Reads from a descriptor into a transcript, on its own thread, so that the program at the other
/// end never waits for the test. Descriptor and transcript must outlive the pump.
///
/// With a `pause` it reads only that often: a pipe buffers 1 MiB meanwhile, and the program's
/// writes wake no thread.
class Pump {
  public:
    Pump(int descriptor, Transcript& transcript, Duration pause = Duration(0));
    Pump(const Pump&) = delete;
    Pump& operator=(const Pump&) = delete;
    ~Pump() { Stop(); }

    /// Stops reading and ends the transcript before it returns.
    void Stop();

  private:
    void Run(int descriptor, Transcript& transcript, Duration pause);
    bool AwaitBytes(int descriptor);

    Pipe stop_;
    std::thread thread_;
};

}  // namespace morvane_test
