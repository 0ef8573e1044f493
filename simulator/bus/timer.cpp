#include "simulator/bus/timer.h"

namespace simulator {
namespace {

using Action = std::function<bool()>;

gboolean CallAction(gpointer action) {
    return (*static_cast<Action*>(action))() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

void FreeAction(gpointer action) {
    std::unique_ptr<Action>(static_cast<Action*>(action));
}

}  // namespace

void Timer::Start(std::chrono::milliseconds interval, std::function<bool()> action) {
    source_.reset(g_timeout_source_new(static_cast<guint>(interval.count())));
    auto owned = std::make_unique<Action>(std::move(action));
    g_source_set_callback(source_.get(), CallAction, owned.release(), FreeAction);
    g_source_attach(source_.get(), g_main_context_get_thread_default());
}

}  // namespace simulator
