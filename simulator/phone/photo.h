#pragma once

#include <cstdint>
#include <string>

namespace simulator {

/// A small square picture (GIF) with a pattern of its own for each number; about as many bytes as
/// it has pixels, and a few hundred more.
std::string MakePhoto(std::uint32_t number, unsigned side);

}  // namespace simulator
