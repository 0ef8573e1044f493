#include "simulator/objects/devices.h"

#include "simulator/objects/names.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace simulator {
namespace {

using morvane::TextPtr;
using morvane::VariantPtr;

constexpr std::array<const char*, 6> kNames = {"Aster", "Birch", "Zoë's Clover",
                                               "Дуб",   "Elder", "Fern & Co."};

std::string NameOf(unsigned index) {
    const std::string name = kNames.at(index % kNames.size());
    const unsigned round = index / static_cast<unsigned>(kNames.size());
    return round == 0 ? name : name + " " + std::to_string(round + 1);
}

/// Locally administered addresses, which no real phone has.
std::string AddressOf(unsigned index) {
    const TextPtr text(g_strdup_printf("02:00:5E:10:00:%02X", index + 1));
    return text.get();
}

std::string PathOf(const std::string& address) {
    std::string path = "/com/veltrisonix/hci0/dev_" + address;
    std::replace(path.begin(), path.end(), ':', '_');
    return path;
}

std::string TextProperty(GVariant* properties, const char* name) {
    const gchar* text = "";
    g_variant_lookup(properties, name, "&s", &text);
    return text;
}

}  // namespace

Devices::Devices(World& world, Sessions& sessions) : world_(world), sessions_(sessions) {
    for (unsigned index = 0; index < world_.options.phones; ++index) {
        MakePhone(index);
    }
}

void Devices::MakePhone(unsigned index) {
    const Options& options = world_.options;
    const std::string address = AddressOf(index);
    const bool last_of_several = options.phones > 1 && index + 1 == options.phones;
    const std::vector<Card> cards = index == 0 ? options.phone_book : std::vector<Card>();
    devices_.push_back(
        {PathOf(address), address, NameOf(index), false, last_of_several,
         std::make_shared<Phone>(NameOf(index), options.seed + index, options.contacts, cards),
         nullptr});
    Show(devices_.back());
}

void Devices::Show(Device& device) {
    const std::string address = device.address;
    device.object =
        std::make_unique<DeviceObject>(world_, device.path, address, device.alias,
                                       [this, address] { sessions_.LoseDestination(address); });
}

const Devices::Device* Devices::FindInReach(const std::string& address) const {
    const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const Device& device) {
        return device.object && !address.empty() &&
               g_ascii_strcasecmp(device.address.c_str(), address.c_str()) == 0;
    });
    return found == devices_.end() ? nullptr : &*found;
}

Devices::Device& Devices::Get(const std::string& path_or_address) {
    const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const Device& device) {
        return device.path == path_or_address || device.address == path_or_address;
    });
    if (found == devices_.end()) {
        throw std::runtime_error("No such device: " + path_or_address);
    }
    return *found;
}

std::vector<PhoneInfo> Devices::Phones() const {
    return Describe([](const Device& device) { return !device.scripted; });
}

std::vector<PhoneInfo> Devices::All() const {
    return Describe([](const Device&) { return true; });
}

template <typename Condition>
std::vector<PhoneInfo> Devices::Describe(const Condition& condition) const {
    std::vector<PhoneInfo> phones;
    for (const Device& device : devices_) {
        if (condition(device)) {
            phones.push_back({device.path, device.address, device.alias,
                              device.demands_authentication, device.object != nullptr});
        }
    }
    return phones;
}

Devices::Device& Devices::AddScripted(const std::string& path, const std::string& address,
                                      const std::string& alias) {
    if (path == "/") {
        throw std::invalid_argument("Not a path for a device: /");
    }
    if (world_.tree.Has(path)) {
        throw std::runtime_error("The path is in use: " + path);
    }
    const Options& options = world_.options;
    devices_.push_back({path, address, alias, true, false,
                        std::make_shared<Phone>(alias, options.seed, options.contacts), nullptr});
    return devices_.back();
}

void Devices::Add(const std::string& path, const std::string& address, const std::string& alias) {
    Show(AddScripted(path, address, alias));
}

void Devices::AddExact(const std::string& path, GVariant* properties) {
    Device& device =
        AddScripted(path, TextProperty(properties, "Address"), TextProperty(properties, "Alias"));
    world_.property_faults.SetExact(path, kDeviceInterface, VariantPtr(g_variant_ref(properties)));
    Show(device);
}

void Devices::Remove(const std::string& path) {
    Device& device = Get(path);
    if (!device.object) {
        throw std::runtime_error("The device is not there: " + path);
    }
    sessions_.LoseDestination(device.address);
    device.object.reset();
    if (!device.scripted) {
        return;
    }
    world_.property_faults.ForgetExact(device.path);
    devices_.erase(std::find_if(devices_.begin(), devices_.end(),
                                [&device](const Device& one) { return &one == &device; }));
}

bool Devices::Return(const std::string& path) {
    Device& device = Get(path);
    if (device.object) {
        return false;
    }
    Show(device);
    return true;
}

}  // namespace simulator
