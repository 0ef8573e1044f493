#pragma once

#include "simulator/bus/timer.h"
#include "simulator/objects/transfer.h"
#include "simulator/objects/world.h"
#include "simulator/phone/phone.h"
#include "simulator/phone/selection.h"

#include <obex-phonebook-access1.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace simulator {

/// The phone book interface of a session.
class PhonebookAccess {
  public:
    /// `path` is that of the session; `is_connected` is called before each method.
    PhonebookAccess(World& world, std::shared_ptr<Phone> phone, std::string path,
                    std::function<bool()> is_connected);
    ~PhonebookAccess() = default;
    PhonebookAccess(const PhonebookAccess&) = delete;
    PhonebookAccess& operator=(const PhonebookAccess&) = delete;

    [[nodiscard]] GDBusInterfaceSkeleton* skeleton() const {
        return G_DBUS_INTERFACE_SKELETON(skeleton_.get());
    }
    [[nodiscard]] const std::vector<std::unique_ptr<Transfer>>& transfers() const {
        return transfers_;
    }
    void AbortTransfers();

  private:
    using Reply = morvane::VariantPtr;

    Reply Select(const gchar* location, const gchar* phonebook);
    Reply PullAll(const gchar* target, GVariant* filters);
    Reply Pull(const gchar* vcard, const gchar* target, GVariant* filters);
    Reply List(GVariant* filters);
    Reply Search(const gchar* field, const gchar* value, GVariant* filters);
    Reply GetSize();
    Reply GetSizeFiltered(GVariant* filters);
    Reply ListFilterFields();
    Reply UpdateVersion();

    void HandleMethods();
    void SetConstants();
    void DemandConnection() const;
    [[nodiscard]] const Phonebook& Selected() const;
    Reply Listing(const simulator::Selected& entries);
    Reply StartTransfer(const std::string& name, const std::string& target,
                        const std::string& content);
    [[nodiscard]] std::string FileFor(const std::string& target) const;

    void LearnMissedCalls(const Filters& filters);
    void Learn(const char* name, GVariant* value);
    void AnnounceLearnt();

    World& world_;
    const std::shared_ptr<Phone> phone_;
    const std::string path_;
    const std::function<bool()> is_connected_;
    const morvane::GlibPtr<ObexPhonebookAccess1> skeleton_;
    std::string location_;
    std::string phonebook_;  // empty until one is selected
    std::vector<std::pair<std::string, morvane::VariantPtr>> learnt_;  // not announced yet
    Timer announcement_;
    std::vector<std::unique_ptr<Transfer>> transfers_;  // oldest first
};

}  // namespace simulator
