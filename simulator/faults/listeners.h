#pragma once

#include "console/mutex.h"

#include <functional>
#include <list>
#include <memory>

namespace simulator {

/// Keeps a handler registered. Once the last copy is destroyed, the handler is neither running nor
/// called again. The handler itself must not destroy it.
using Subscription = std::shared_ptr<void>;

/// Handlers of one kind of event, called one after the other. Safe from any thread; subscriptions
/// may outlive the listeners.
template <typename Event>
class Listeners {
  public:
    using Handler = std::function<void(const Event&)>;

    [[nodiscard]] Subscription Add(Handler handler) {
        const std::shared_ptr<State> state = state_;
        const morvane::LockGuard guard(state->mutex);
        const auto entry = state->handlers.insert(state->handlers.end(), std::move(handler));
        return {state.get(), [state, entry](void*) {
                    const morvane::LockGuard removal(state->mutex);
                    state->handlers.erase(entry);
                }};
    }
    [[nodiscard]] bool IsEmpty() const {
        const State& state = *state_;
        const morvane::LockGuard guard(state.mutex);
        return state.handlers.empty();
    }
    void Announce(const Event& event) const {
        const State& state = *state_;
        const morvane::LockGuard guard(state.mutex);
        for (const Handler& handler : state.handlers) {
            handler(event);
        }
    }

  private:
    struct State {
        mutable morvane::Mutex mutex;
        std::list<Handler> handlers MORVANE_GUARDED_BY(mutex);
    };
    const std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace simulator
