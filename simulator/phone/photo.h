#pragma once

#include <string_view>

namespace simulator {

/// The bytes of photo.gif, the photo of every contact that has one.
extern const std::string_view kPhoto;

}  // namespace simulator
