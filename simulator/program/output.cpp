#include "simulator/program/output.h"

#include <cstdio>

namespace simulator {

void Output::Begin(const std::string& first_line) {
    const morvane::Hold hold(mutex_);
    waiting_.insert(0, first_line);
    begun_ = true;
    Write();
}

void Output::Print(const std::string& text) {
    const morvane::Hold hold(mutex_);
    waiting_ += text;
    if (begun_) {
        Write();
    }
}

void Output::Write() {
    std::fputs(waiting_.c_str(), stdout);
    std::fflush(stdout);
    waiting_.clear();
}

}  // namespace simulator
