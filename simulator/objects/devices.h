#pragma once

#include "simulator/objects/descriptions.h"
#include "simulator/objects/device_object.h"
#include "simulator/objects/session.h"
#include "simulator/phone/phone.h"

#include <memory>
#include <string>
#include <vector>

namespace simulator {

/// The phones and other devices, in reach or not.
class Devices {
  public:
    Devices(World& world, Sessions& sessions);

    struct Device {
        std::string path;
        std::string address;  ///< empty if the device has none
        std::string alias;
        bool scripted;
        bool demands_authentication;
        std::shared_ptr<Phone> phone;          ///< the contents that sessions access
        std::unique_ptr<DeviceObject> object;  ///< null while the device is out of reach
    };

    /// The device with that address that is in reach, or null.
    [[nodiscard]] const Device* FindInReach(const std::string& address) const;
    /// The device with that path or address, in reach or not. Throws `std::runtime_error` if there
    /// is none.
    Device& Get(const std::string& path_or_address);
    [[nodiscard]] std::vector<PhoneInfo> Phones() const;
    [[nodiscard]] std::vector<PhoneInfo> All() const;

    // Documented at the members of `Daemon` with the same names.
    void Add(const std::string& path, const std::string& address, const std::string& alias);
    void AddExact(const std::string& path, GVariant* properties);
    void Remove(const std::string& path);
    bool Return(const std::string& path);

  private:
    template <typename Condition>
    [[nodiscard]] std::vector<PhoneInfo> Describe(const Condition& condition) const;
    void MakePhone(unsigned index);
    Device& AddScripted(const std::string& path, const std::string& address,
                        const std::string& alias);
    void Show(Device& device);

    World& world_;
    Sessions& sessions_;
    std::vector<Device> devices_;
};

}  // namespace simulator
