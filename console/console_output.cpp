#include "console/console_output.h"

#include "console/mutex.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <type_traits>

namespace morvane {
namespace {

constexpr std::size_t kTextRoom = 1000;
constexpr std::size_t kPromptRoom = 101;
constexpr const char* kMenuMarker = " > ";
constexpr const char* kValueMarker = " ? ";

struct ConsoleState {
    Mutex lock;
    char saved_prompt[kPromptRoom] MORVANE_GUARDED_BY(lock) = {};
    bool prompt_showing MORVANE_GUARDED_BY(lock) = false;
};

// Never destroyed: destructors that run after main() print.
static_assert(std::is_trivially_destructible_v<ConsoleState>);
ConsoleState console;

enum class Redraw { kIfShowing, kNever };

/// One message on its way to the terminal.
class Message {
  public:
    void Append(const char* text) {
        const std::size_t length = std::min(strnlen(text, kTextRoom - 1), sizeof bytes_ - length_);
        std::memcpy(bytes_ + length_, text, length);
        length_ += length;
    }

    void Write() const {
        std::size_t written = 0;
        while (written < length_) {
            const ssize_t count = write(STDOUT_FILENO, bytes_ + written, length_ - written);
            if (count >= 0) {
                written += static_cast<std::size_t>(count);
            } else if (errno == EAGAIN) {
                AwaitRoom();
            } else if (errno != EINTR) {
                return;
            }
        }
    }

  private:
    // Another process may have set the shared terminal to O_NONBLOCK.
    static void AwaitRoom() {
        pollfd output = {STDOUT_FILENO, POLLOUT, 0};
        poll(&output, 1, -1);
    }

    char bytes_[kTextRoom + kPromptRoom + 64];
    std::size_t length_ = 0;
};

void Emit(Redraw redraw, const char* colour, const char* text) MORVANE_REQUIRES(console.lock) {
    const bool showing = redraw == Redraw::kIfShowing && console.prompt_showing;
    Message message;
    if (showing) {
        message.Append("\n");
    }
    message.Append(colour);
    message.Append(text);
    if (showing) {
        for (const char* part :
             {kGreen, static_cast<const char*>(console.saved_prompt), kRed, kMenuMarker}) {
            message.Append(part);
        }
    }
    message.Append(kNormal);
    message.Write();
}

__attribute__((format(printf, 3, 0))) int FormatAndEmit(Redraw redraw, const char* colour,
                                                        const char* format, va_list arguments)
    MORVANE_EXCLUDES(console.lock) {
    char text[kTextRoom];
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): both callers have started it
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    if (length < 0) {
        return length;  // `text` is unspecified then
    }
    const LockGuard guard(console.lock);
    Emit(redraw, colour, text);
    return length;
}

// Display the prompt and set the flag under one lock: a message of the other thread in between
// would not display the prompt again.
void SetPrompt(const char* text, int show, const char* marker) MORVANE_EXCLUDES(console.lock) {
    const LockGuard guard(console.lock);
    std::strncpy(console.saved_prompt, text, kPromptRoom - 1);
    if (show == 1) {
        Emit(Redraw::kIfShowing, kGreen, text);
        Emit(Redraw::kIfShowing, kRed, marker);
    }
    console.prompt_showing = show != 0;
}

}  // namespace

int PROXY_Print(const char* colour, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatAndEmit(Redraw::kIfShowing, colour, format, arguments);
    va_end(arguments);
    return length;
}

int PROXY_PrintNoPrompt(const char* colour, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatAndEmit(Redraw::kNever, colour, format, arguments);
    va_end(arguments);
    return length;
}

void PROXY_Prompt(const char* text, int show) {
    SetPrompt(text, show, kMenuMarker);
}

void PROXY_Input(const char* text, int show) {
    SetPrompt(text, show, kValueMarker);
}

}  // namespace morvane
