#include "simulator/bus/event_thread.h"

namespace simulator {

EventThread::EventThread()
    : context_(g_main_context_new()),
      loop_(g_main_loop_new(context_.get(), FALSE)),
      thread_([this] { Serve(); }) {}

EventThread::~EventThread() {
    // g_main_loop_quit() has no effect before the loop runs.
    Run([this] { g_main_loop_quit(loop_.get()); });
    thread_.join();
}

void EventThread::Run(std::function<void()> task) {
    std::future<void> done;
    {
        const morvane::LockGuard guard(mutex_);
        tasks_.emplace_back(std::move(task));
        done = tasks_.back().get_future();
    }
    const auto run_tasks = [](gpointer self) -> gboolean {
        static_cast<EventThread*>(self)->RunTasks();
        return G_SOURCE_REMOVE;
    };
    g_main_context_invoke_full(context_.get(), G_PRIORITY_DEFAULT, run_tasks, this, nullptr);
    done.get();
}

void EventThread::RunTasks() {
    std::deque<std::packaged_task<void()>> tasks;
    {
        const morvane::LockGuard guard(mutex_);
        tasks.swap(tasks_);
    }
    for (std::packaged_task<void()>& task : tasks) {
        task();
    }
}

void EventThread::Serve() {
    g_main_context_push_thread_default(context_.get());
    g_main_loop_run(loop_.get());
    // GLib calls GDestroyNotify of removed filters and subscriptions in this context.
    while (g_main_context_pending(context_.get()) != FALSE) {
        g_main_context_iteration(context_.get(), FALSE);
    }
    g_main_context_pop_thread_default(context_.get());
}

}  // namespace simulator
