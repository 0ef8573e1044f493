#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/file_descriptor.h"
#include "support/patience.h"

namespace morvane_test {

/// The bytes read from a stream, and how many of them the test has consumed. Consumed bytes never
/// match again. Thread-safe: one thread appends while another waits.
class Transcript {
  public:
    enum class Result {
        kMatched,
        kDiffers,  ///< unexpected bytes
        kEnded,    ///< end of the stream
        kTimedOut,
    };

    void Append(std::string_view bytes);
    /// Marks the end of the stream.
    void End();

    /// Consumes `bytes` if they are the next output; nothing otherwise.
    Result ExpectNext(std::string_view bytes, Duration limit);
    /// Consumes everything up to the end of the next occurrence of `bytes`; nothing if there is
    /// none.
    Result SkipPast(std::string_view bytes, Duration limit);
    /// Consumes up to the end of the first occurrence of any of `texts`, and returns its index.
    std::optional<std::size_t> SkipPastAny(const std::vector<std::string>& texts, Duration limit);
    /// Waits for all `texts` in any order and consumes up to the end of the last one.
    Result SkipPastAll(const std::vector<std::string>& texts, Duration limit);
    /// Waits for the end of the stream; consumes nothing.
    Result AwaitEnd(Duration limit);

    std::string Consumed() const;
    std::string Unconsumed() const;
    std::string All() const;

  private:
    template <typename Attempt>
    Result AwaitMatch(Duration limit, Attempt attempt);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::string bytes_;         // guarded by mutex_
    std::size_t consumed_ = 0;  // guarded by mutex_
    bool ended_ = false;        // guarded by mutex_
};

/// Reads from a descriptor into a transcript on its own thread, so that the program never blocks on
/// output. Descriptor and transcript must outlive the pump.
///
/// With a `pause` it reads at that interval, so that writes of the program wake no thread. The pipe
/// buffers 1 MiB.
class Pump {
  public:
    Pump(int descriptor, Transcript& transcript, Duration pause = Duration(0));
    ~Pump() { Stop(); }

    /// Stops reading and marks the end of the transcript.
    void Stop();

  private:
    void Run(int descriptor, Transcript& transcript, Duration pause);
    bool AwaitBytes(int descriptor);

    Pipe stop_;
    std::thread thread_;
};

}  // namespace morvane_test
