#include "simulator/recorder.h"

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
        const std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_back({std::move(call)});
    }
    arrival_.notify_all();
}

void Recorder::Forget() {
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
}

std::vector<Call> Recorder::Calls() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<Call> calls;
    for (const Entry& entry : entries_) {
        calls.push_back(entry.call);
    }
    return calls;
}

std::optional<Call> Recorder::Await(const std::string& method, std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mutex_);
    std::optional<Call> found;
    arrival_.wait_for(lock, timeout, [&] {
        found = TakeFirst(method);
        return found.has_value();
    });
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
