#pragma once

#include <cstdint>
#include <string>

namespace simulator {

inline constexpr std::uint8_t kConnected = 5;
inline constexpr std::uint8_t kDisconnected = 0;

/// A phone with contents, made from the seed, or a device that was added.
struct PhoneInfo {
    std::string path;  ///< path of the device object
    std::string address;
    std::string name;
    bool demands_authentication;
    bool present;  ///< false between `RemoveDevice` and `ReturnDevice`
};

struct SessionInfo {
    std::string path;
    std::uint8_t state;
    std::string alias;    ///< of the phone
    std::string address;  ///< of the phone
};

struct TransferInfo {
    std::string path;
    std::string status;
    std::uint64_t transferred;
    std::uint64_t size;
    std::string file;
};

}  // namespace simulator
