#include "simulator/faults/recorder.h"

#include <algorithm>

namespace simulator {
namespace {

bool IsCallOf(const Call& call, const std::string& method) {
    return method == call.method || method == call.interface + "." + call.method;
}

}  // namespace

std::string Describe(const Call& call) {
    return call.path + " " + call.interface + "." + call.method + call.body;
}

void Recorder::Record(Call call) {
    {
        const morvane::LockGuard guard(mutex_);
        entries_.push_back({std::move(call)});
    }
    arrival_.notify_all();
}

bool Recorder::Forget() {
    const morvane::LockGuard guard(mutex_);
    const bool any = !entries_.empty();
    entries_.clear();
    return any;
}

std::vector<Call> Recorder::Calls() const {
    const morvane::LockGuard guard(mutex_);
    std::vector<Call> calls;
    calls.reserve(entries_.size());
    for (const Entry& entry : entries_) {
        calls.push_back(entry.call);
    }
    return calls;
}

std::optional<Call> Recorder::Await(const std::string& method, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    const morvane::LockGuard guard(mutex_);
    std::optional<Call> found = TakeFirst(method);
    for (auto status = std::cv_status::no_timeout;
         !found && status == std::cv_status::no_timeout;) {
        status = arrival_.wait_until(mutex_, deadline);
        found = TakeFirst(method);
    }
    return found;
}

std::optional<Call> Recorder::TakeFirst(const std::string& method) {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return !entry.awaited && IsCallOf(entry.call, method);
    });
    if (found == entries_.end()) {
        return std::nullopt;
    }
    found->awaited = true;
    return found->call;
}

}  // namespace simulator
