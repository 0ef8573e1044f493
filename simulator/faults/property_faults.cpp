#include "simulator/faults/property_faults.h"

namespace simulator {
namespace {

using morvane::Out;
using morvane::VariantPtr;

VariantPtr Share(const VariantPtr& value) {
    return VariantPtr(value ? g_variant_ref(value.get()) : nullptr);
}

}  // namespace

void PropertyFaults::Override(const std::string& path, const std::string& interface,
                              const std::string& name, VariantPtr value) {
    const morvane::LockGuard guard(mutex_);
    faults_.insert_or_assign({path, interface, name}, std::move(value));
}

void PropertyFaults::Hide(const std::string& path, const std::string& interface,
                          const std::string& name) {
    Override(path, interface, name, nullptr);
}

bool PropertyFaults::Clear() {
    const morvane::LockGuard guard(mutex_);
    const bool any = !faults_.empty();
    faults_.clear();
    return any;
}

void PropertyFaults::SetExact(const std::string& path, const std::string& interface,
                              VariantPtr properties) {
    const morvane::LockGuard guard(mutex_);
    exact_.insert_or_assign({path, interface}, std::move(properties));
}

void PropertyFaults::ForgetExact(const std::string& path) {
    const morvane::LockGuard guard(mutex_);
    for (auto entry = exact_.begin(); entry != exact_.end();) {
        entry = entry->first.first == path ? exact_.erase(entry) : std::next(entry);
    }
}

VariantPtr PropertyFaults::Apply(const std::string& path, const std::string& interface,
                                 GVariant* properties) const {
    const morvane::LockGuard guard(mutex_);
    const auto exact = exact_.find({path, interface});
    return Edit(path, interface, exact == exact_.end() ? properties : exact->second.get(), true);
}

VariantPtr PropertyFaults::ApplyToChanges(const std::string& path, const std::string& interface,
                                          GVariant* changes) const {
    const morvane::LockGuard guard(mutex_);
    return Edit(path, interface, changes, false);
}

PropertyFaults::Reading PropertyFaults::Read(const std::string& path, const std::string& interface,
                                             const std::string& name) const {
    const morvane::LockGuard guard(mutex_);
    if (const VariantPtr* fault = Find(path, interface, name)) {
        return {true, Share(*fault)};
    }
    const auto exact = exact_.find({path, interface});
    if (exact == exact_.end()) {
        return {};
    }
    return {true, VariantPtr(g_variant_lookup_value(exact->second.get(), name.c_str(), nullptr))};
}

const VariantPtr* PropertyFaults::Find(const std::string& path, const std::string& interface,
                                       const std::string& name) const {
    for (const std::string& where : {path, std::string(kAnyPath)}) {
        const auto found = faults_.find({where, interface, name});
        if (found != faults_.end()) {
            return &found->second;
        }
    }
    return nullptr;
}

VariantPtr PropertyFaults::Edit(const std::string& path, const std::string& interface,
                                GVariant* properties, bool whole) const {
    GVariantBuilder edited;
    g_variant_builder_init(&edited, G_VARIANT_TYPE_VARDICT);
    GVariantIter iterator;
    g_variant_iter_init(&iterator, properties);
    while (const VariantPtr entry{g_variant_iter_next_value(&iterator)}) {
        const gchar* name = nullptr;
        VariantPtr value;
        g_variant_get(entry.get(), "{&sv}", &name, static_cast<GVariant**>(Out(value)));
        if (const VariantPtr* fault = Find(path, interface, name)) {
            value = Share(*fault);
        }
        if (value) {
            g_variant_builder_add(&edited, "{sv}", name, value.get());
        }
    }
    if (whole) {
        AddMissing(&edited, path, interface, properties);
    }
    return VariantPtr(g_variant_ref_sink(g_variant_builder_end(&edited)));
}

void PropertyFaults::AddMissing(GVariantBuilder* edited, const std::string& path,
                                const std::string& interface, GVariant* properties) const {
    for (const auto& [key, value] : faults_) {
        const auto& [where, of, name] = key;
        const bool concerned = of == interface && (where == path || where == kAnyPath);
        const VariantPtr present(g_variant_lookup_value(properties, name.c_str(), nullptr));
        // A fault of this path overrides that of all paths; applying both would add the property
        // twice.
        if (!concerned || present || !value || Find(path, interface, name) != &value) {
            continue;
        }
        g_variant_builder_add(edited, "{sv}", name.c_str(), value.get());
    }
}

}  // namespace simulator
