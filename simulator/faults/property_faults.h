#pragma once

#include "console/mutex.h"
#include "interfaces/glib_ptr.h"

#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace simulator {

/// As an object path: every object, including those that do not exist yet.
inline constexpr char kAnyPath[] = "*";

/// Properties that are missing or have an injected value. Safe from any thread.
class PropertyFaults {
  public:
    /// `path` may be `kAnyPath`; a fault of the path itself takes precedence.
    void Override(const std::string& path, const std::string& interface, const std::string& name,
                  morvane::VariantPtr value);
    void Hide(const std::string& path, const std::string& interface, const std::string& name);
    /// Removes the faults set by `Override` and `Hide`; returns whether there were any.
    bool Clear();

    /// Gives an object's interface exactly these properties (a{sv}), until `ForgetExact`.
    void SetExact(const std::string& path, const std::string& interface,
                  morvane::VariantPtr properties);
    void ForgetExact(const std::string& path);

    /// All properties (a{sv}) of an interface with faults applied, in the same order; properties
    /// that a fault adds are last.
    [[nodiscard]] morvane::VariantPtr Apply(const std::string& path, const std::string& interface,
                                            GVariant* properties) const;
    /// The same for some of the properties (a{sv}): adds none.
    [[nodiscard]] morvane::VariantPtr ApplyToChanges(const std::string& path,
                                                     const std::string& interface,
                                                     GVariant* changes) const;

    struct Reading {
        bool faulty = false;        ///< otherwise the property has its real value
        morvane::VariantPtr value;  ///< null when there is no such property
    };
    [[nodiscard]] Reading Read(const std::string& path, const std::string& interface,
                               const std::string& name) const;

  private:
    using Key = std::tuple<std::string, std::string, std::string>;  // path, interface, name
    using Faults = std::map<Key, morvane::VariantPtr>;              // null hides

    [[nodiscard]] const morvane::VariantPtr* Find(const std::string& path,
                                                  const std::string& interface,
                                                  const std::string& name) const
        MORVANE_REQUIRES(mutex_);
    [[nodiscard]] morvane::VariantPtr Edit(const std::string& path, const std::string& interface,
                                           GVariant* properties, bool whole) const
        MORVANE_REQUIRES(mutex_);
    void AddMissing(GVariantBuilder* edited, const std::string& path, const std::string& interface,
                    GVariant* properties) const MORVANE_REQUIRES(mutex_);

    mutable morvane::Mutex mutex_;
    Faults faults_ MORVANE_GUARDED_BY(mutex_);
    std::map<std::pair<std::string, std::string>, morvane::VariantPtr> exact_
        MORVANE_GUARDED_BY(mutex_);
};

}  // namespace simulator
