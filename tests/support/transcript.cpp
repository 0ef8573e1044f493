#include "support/transcript.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

namespace morvane_test {

void Transcript::Append(std::string_view bytes) {
    const std::lock_guard<std::mutex> lock(mutex_);
    bytes_ += bytes;
    changed_.notify_all();
}

void Transcript::End() {
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

// `attempt` returns nullopt if the result depends on further bytes.
template <typename Attempt>
Transcript::Result Transcript::AwaitMatch(Duration limit, Attempt attempt) {
    std::unique_lock<std::mutex> lock(mutex_);
    std::optional<Result> result;
    const auto decided = [&] {
        result = attempt();
        if (!result && ended_) result = Result::kEnded;
        return result.has_value();
    };
    return changed_.wait_for(lock, limit, decided) ? *result : Result::kTimedOut;
}

Transcript::Result Transcript::ExpectNext(std::string_view bytes, Duration limit) {
    return AwaitMatch(limit, [&]() -> std::optional<Result> {
        const std::string_view next =
            std::string_view(bytes_).substr(consumed_).substr(0, bytes.size());
        if (bytes.substr(0, next.size()) != next) return Result::kDiffers;
        if (next.size() < bytes.size()) return std::nullopt;
        consumed_ += bytes.size();
        return Result::kMatched;
    });
}

Transcript::Result Transcript::SkipPast(std::string_view bytes, Duration limit) {
    std::size_t searched = 0;  // avoids quadratic time: the output may be megabytes
    return AwaitMatch(limit, [&]() -> std::optional<Result> {
        const std::size_t found = bytes_.find(bytes, std::max(consumed_, searched));
        if (found == std::string::npos) {
            searched = bytes_.size() - std::min(bytes_.size(), bytes.size());
            return std::nullopt;
        }
        consumed_ = found + bytes.size();
        return Result::kMatched;
    });
}

std::optional<std::size_t> Transcript::SkipPastAny(const std::vector<std::string>& texts,
                                                   Duration limit) {
    std::optional<std::size_t> which;
    AwaitMatch(limit, [&]() -> std::optional<Result> {
        std::size_t first = std::string::npos;
        for (std::size_t index = 0; index < texts.size(); ++index) {
            const std::size_t found = bytes_.find(texts[index], consumed_);
            if (found < first) which = index;
            first = std::min(first, found);
        }
        if (!which) return std::nullopt;
        consumed_ = first + texts[*which].size();
        return Result::kMatched;
    });
    return which;
}

Transcript::Result Transcript::SkipPastAll(const std::vector<std::string>& texts, Duration limit) {
    return AwaitMatch(limit, [&]() -> std::optional<Result> {
        std::size_t end = consumed_;
        for (const std::string& text : texts) {
            const std::size_t found = bytes_.find(text, consumed_);
            if (found == std::string::npos) return std::nullopt;
            end = std::max(end, found + text.size());
        }
        consumed_ = end;
        return Result::kMatched;
    });
}

Transcript::Result Transcript::AwaitEnd(Duration limit) {
    return AwaitMatch(limit, [&]() -> std::optional<Result> {
        return ended_ ? std::optional(Result::kMatched) : std::nullopt;
    });
}

std::string Transcript::Consumed() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return bytes_.substr(0, consumed_);
}

std::string Transcript::Unconsumed() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return bytes_.substr(consumed_);
}

std::string Transcript::All() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return bytes_;
}

Pump::Pump(int descriptor, Transcript& transcript, Duration pause)
    : stop_(MakePipe()),
      thread_([this, descriptor, &transcript, pause] { Run(descriptor, transcript, pause); }) {
    if (pause > Duration(0)) Checked(fcntl(descriptor, F_SETPIPE_SZ, 1 << 20), "F_SETPIPE_SZ");
}

void Pump::Stop() {
    stop_.writer.Close();
    if (thread_.joinable()) thread_.join();
}

bool Pump::AwaitBytes(int descriptor) {
    std::array<pollfd, 2> waits = {{{descriptor, POLLIN, 0}, {stop_.reader.Number(), POLLIN, 0}}};
    while (poll(waits.data(), waits.size(), -1) < 0 && errno == EINTR) {
    }
    return waits[1].revents == 0;
}

void Pump::Run(int descriptor, Transcript& transcript, Duration pause) {
    std::array<char, 65536> chunk;
    while (AwaitBytes(descriptor)) {
        const ssize_t count = read(descriptor, chunk.data(), chunk.size());
        // At the end read() returns 0 on a pipe and fails with EIO on a terminal.
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) break;
        if (count > 0) transcript.Append({chunk.data(), static_cast<std::size_t>(count)});
        if (count < static_cast<ssize_t>(chunk.size())) std::this_thread::sleep_for(pause);
    }
    transcript.End();
}

}  // namespace morvane_test
