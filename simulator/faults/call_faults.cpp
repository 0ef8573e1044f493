#include "simulator/faults/call_faults.h"

#include <array>
#include <utility>

namespace simulator {
namespace {

const char* NameOf(CallFault::Kind kind) {
    constexpr std::array<const char*, 3> kNames = {"refuse", "reply", "hang"};
    return kNames.at(static_cast<std::size_t>(kind));
}

MessagePtr MakeAnswer(GDBusMessage* call, const CallFault& fault) {
    if (fault.kind == CallFault::Kind::kRefuse) {
        return MessagePtr(g_dbus_message_new_method_error_literal(call, fault.error_name.c_str(),
                                                                  fault.error_message.c_str()));
    }
    MessagePtr reply(g_dbus_message_new_method_reply(call));
    g_dbus_message_set_body(reply.get(), fault.body.get());
    return reply;
}

}  // namespace

void CallFaults::Set(const std::string& method, CallFault fault, unsigned times) {
    const morvane::LockGuard guard(mutex_);
    plans_.insert_or_assign(method, Planned{std::move(fault), times});
}

bool CallFaults::Clear() {
    const morvane::LockGuard guard(mutex_);
    const bool any = !plans_.empty();
    plans_.clear();
    return any;
}

FaultyAnswer CallFaults::AnswerTo(GDBusMessage* call, const Call& description) {
    const morvane::LockGuard guard(mutex_);
    const auto planned = Find(description);
    if (planned == plans_.end()) {
        return {};
    }
    const CallFault& fault = planned->second.fault;
    FaultyAnswer answer{NameOf(fault.kind), nullptr};
    if (fault.kind == CallFault::Kind::kHang) {
        hanging_.emplace_back(static_cast<GDBusMessage*>(g_object_ref(call)));
    } else {
        answer.message = MakeAnswer(call, fault);
    }
    CountDown(planned);
    return answer;
}

CallFaults::Plans::iterator CallFaults::Find(const Call& call) {
    const auto exact = plans_.find(call.interface + "." + call.method);
    return exact == plans_.end() ? plans_.find(call.method) : exact;
}

void CallFaults::CountDown(Plans::iterator planned) {
    if (planned->second.times == 0) {
        return;
    }
    if (--planned->second.times == 0) {
        plans_.erase(planned);
    }
}

CallFaults::Released CallFaults::Release() {
    const morvane::LockGuard guard(mutex_);
    const std::size_t planned = plans_.size();
    for (auto plan = plans_.begin(); plan != plans_.end();) {
        const bool hangs = plan->second.fault.kind == CallFault::Kind::kHang;
        plan = hangs ? plans_.erase(plan) : std::next(plan);
    }
    return {std::exchange(hanging_, {}), plans_.size() != planned};
}

void CallFaults::ForgetHanging() {
    const morvane::LockGuard guard(mutex_);
    hanging_.clear();
}

}  // namespace simulator
