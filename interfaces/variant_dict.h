#pragma once

#include "interfaces/glib_ptr.h"

#include <gio/gio.h>

#include <string>
#include <vector>

namespace morvane {

/// A builder of an `a{sv}`; released if it was not ended.
class VariantDict {
  public:
    VariantDict() { g_variant_dict_init(&dict_, nullptr); }
    VariantDict(const VariantDict&) = delete;
    VariantDict& operator=(const VariantDict&) = delete;
    ~VariantDict() { g_variant_dict_clear(&dict_); }

    [[nodiscard]] GVariantDict* Get() { return &dict_; }

    /// Returns the dictionary and leaves the builder empty.
    [[nodiscard]] VariantPtr End() {
        return VariantPtr(g_variant_ref_sink(g_variant_dict_end(&dict_)));
    }

  private:
    GVariantDict dict_;
};

/// Inserts `texts`, in their order, as an `as` under `key`.
void InsertTexts(GVariantDict* dict, const char* key, const std::vector<std::string>& texts);

}  // namespace morvane
