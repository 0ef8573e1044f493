#pragma once

#include <thread>

#include "support/file_descriptor.h"
#include "support/patience.h"
#include "support/transcript.h"

namespace morvane_test {

/// Carries what a descriptor yields into a transcript, on a thread of its own, so that the program
/// at the other end never waits for the test. Descriptor and transcript must outlive the pump.
///
/// With a `pause` it looks only so often whether something has come: a pipe holds 1 MiB meanwhile,
/// and the program's writes wake nobody.
class Pump {
  public:
    Pump(int descriptor, Transcript& transcript, Duration pause = Duration(0));
    Pump(const Pump&) = delete;
    Pump& operator=(const Pump&) = delete;
    ~Pump() { Stop(); }

    /// Reads no further and ends the transcript. Returns when that is so.
    void Stop();

  private:
    void Run(int descriptor, Transcript& transcript, Duration pause);
    bool AwaitBytes(int descriptor);

    Pipe stop_;
    std::thread thread_;
};

}  // namespace morvane_test
