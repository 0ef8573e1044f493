#include "play/prompt.h"

#include <algorithm>

namespace play {
namespace {

constexpr std::string_view kTitle = "Vantor";
constexpr std::string_view kMenuMarker = " > ";
constexpr std::string_view kValueMarker = " ? ";

bool IsMarker(std::string_view text) {
    return text == kMenuMarker || text == kValueMarker;
}

}  // namespace

std::size_t PromptLength(std::string_view line) {
    if (line.substr(0, kTitle.size()) != kTitle) {
        return 0;
    }
    std::size_t marker = kTitle.size();
    if (line.substr(marker, 1) == "/") {
        while (marker < line.size() && !IsMarker(line.substr(marker, kMenuMarker.size()))) {
            ++marker;
        }
    }
    return IsMarker(line.substr(marker, kMenuMarker.size())) ? marker + kMenuMarker.size() : 0;
}

std::size_t FindLastPrompt(std::string_view line) {
    if (line.size() < kMenuMarker.size() ||
        !IsMarker(line.substr(line.size() - kMenuMarker.size()))) {
        return std::string_view::npos;
    }
    const std::size_t title = line.rfind(kTitle);
    if (title == std::string_view::npos) {
        return title;
    }
    const std::size_t length = PromptLength(line.substr(title));
    return length > 0 && title + length == line.size() ? title : std::string_view::npos;
}

bool IsRedrawn(std::string_view prompt, std::string_view original) {
    const std::size_t path = prompt.size() - std::min(prompt.size(), kMenuMarker.size());
    return prompt.size() == original.size() && prompt.substr(path) == kMenuMarker &&
           prompt.substr(0, path) == original.substr(0, path);
}

}  // namespace play
