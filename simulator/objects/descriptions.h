#pragma once

#include <string>

namespace simulator {

/// A phone with contents, made from the seed.
struct PhoneInfo {
    std::string path;  ///< of its device object
    std::string address;
    std::string name;
    bool demands_authentication;
    bool present;  ///< false between `RemoveDevice` and `ReturnDevice`
};

}  // namespace simulator
