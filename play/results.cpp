#include "play/results.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace play {
namespace {

void PrintLines(std::string_view text, const char* prefix) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        std::printf("%s%.*s\n", prefix, static_cast<int>(line.size()), line.data());
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
}

const char* Describe(Results::Verdict verdict) {
    switch (verdict) {
        case Results::Verdict::kAgrees:
            return "agrees";
        case Results::Verdict::kUpdated:
            return "updated";
        case Results::Verdict::kFailed:
            break;
    }
    return "FAILED";
}

}  // namespace

Results::Results(bool tap, std::size_t files)
    : tap_(tap), shows_progress_(!tap && isatty(STDERR_FILENO) == 1) {
    if (tap_) {
        std::printf("TAP version 13\n1..%zu\n", files);
    }
}

void Results::Progress(const std::string& file, std::size_t line, std::size_t lines) const {
    if (shows_progress_) {
        std::fprintf(stderr, "\r\x1b[K%s: line %zu of %zu", file.c_str(), line, lines);
    }
}

void Results::EraseProgress() const {
    if (shows_progress_) {
        std::fputs("\r\x1b[K", stderr);
    }
}

void Results::Add(const std::string& file, Verdict verdict, const std::string& report) {
    EraseProgress();
    ++number_;
    if (tap_) {
        const char* const result = verdict == Verdict::kFailed ? "not ok" : "ok";
        std::printf("%s %zu - %s\n", result, number_, file.c_str());
        PrintLines(verdict == Verdict::kUpdated ? "updated" : report, "# ");
    } else {
        PrintLines(report, "");
        std::printf("%s: %s\n", file.c_str(), Describe(verdict));
    }
    std::fflush(stdout);
}

}  // namespace play
