#pragma once

#include "console/mutex.h"
#include "interfaces/glib_ptr.h"
#include "simulator/faults/recorder.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

using MessagePtr = morvane::GlibPtr<GDBusMessage>;

/// A fault of a method.
struct CallFault {
    enum class Kind { kRefuse, kReply, kHang };
    Kind kind;
    std::string error_name;     ///< for kRefuse
    std::string error_message;  ///< for kRefuse
    morvane::VariantPtr body;   ///< for kReply
};

/// A fault's answer to a call.
struct FaultyAnswer {
    const char* fault = nullptr;  ///< name of the fault's command; null when no fault applies
    MessagePtr message;           ///< null when the call hangs
};

/// Faults of methods, and the calls that hang. Safe from any thread.
class CallFaults {
  public:
    struct Released {
        std::vector<MessagePtr> calls;
        bool faults_ended;
    };

    /// `method` is given with or without its interface; `times` 0 means always.
    void Set(const std::string& method, CallFault fault, unsigned times);
    /// Returns whether there were any faults.
    bool Clear();

    /// The answer of the fault that applies to the call, if any. Stores a call that hangs.
    /// `description` describes the same call.
    FaultyAnswer AnswerTo(GDBusMessage* call, const Call& description);

    /// Removes faults that make calls hang, and returns the calls that hang, oldest first, which
    /// the caller must answer.
    Released Release();
    void ForgetHanging();

  private:
    struct Planned {
        CallFault fault;
        unsigned times;
    };
    using Plans = std::map<std::string, Planned>;

    Plans::iterator Find(const Call& call) MORVANE_REQUIRES(mutex_);
    void CountDown(Plans::iterator planned) MORVANE_REQUIRES(mutex_);

    morvane::Mutex mutex_;
    Plans plans_ MORVANE_GUARDED_BY(mutex_);
    std::vector<MessagePtr> hanging_ MORVANE_GUARDED_BY(mutex_);
};

}  // namespace simulator
