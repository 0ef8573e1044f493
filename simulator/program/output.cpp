#include "simulator/program/output.h"

#include <cstdio>
#include <utility>

namespace simulator {

void Output::Begin(const std::string& first_line) {
    const morvane::LockGuard guard(mutex_);
    waiting_.insert(0, first_line);
    begun_ = true;
    Write();
}

void Output::Print(const std::string& text) {
    const morvane::LockGuard guard(mutex_);
    waiting_ += text;
    if (begun_) {
        Write();
    }
}

void Output::WriteBy(Writer writer) {
    writer_ = std::move(writer);
    const morvane::LockGuard guard(mutex_);
    is_deferred_ = static_cast<bool>(writer_);
    if (flush_ != 0) {
        g_source_remove(std::exchange(flush_, 0));
        Write();
    }
}

void Output::Flush() {
    std::string text;
    {
        const morvane::LockGuard guard(mutex_);
        text.swap(waiting_);
        if (flush_ != 0) {
            g_source_remove(std::exchange(flush_, 0));
        }
    }
    if (writer_ && !text.empty()) {
        writer_(text);
    }
}

void Output::Write() {
    if (!is_deferred_) {
        std::fputs(waiting_.c_str(), stdout);
        std::fflush(stdout);
        waiting_.clear();
    } else if (flush_ == 0 && !waiting_.empty()) {
        const auto flush = [](gpointer self) -> gboolean {
            static_cast<Output*>(self)->Flush();
            return G_SOURCE_CONTINUE;  // Flush() has removed it
        };
        flush_ = g_idle_add_full(G_PRIORITY_DEFAULT, flush, this, nullptr);
    }
}

}  // namespace simulator
