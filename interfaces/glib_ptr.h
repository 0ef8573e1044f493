#pragma once

#include <gio/gio.h>

#include <memory>

namespace morvane {

/// Unreferences or frees a GLib object of any type that the project owns.
struct GlibRelease {
    void operator()(gchar* text) const noexcept { g_free(text); }
    void operator()(gchar** texts) const noexcept { g_strfreev(texts); }
    void operator()(GError* error) const noexcept { g_error_free(error); }
    void operator()(GVariant* variant) const noexcept { g_variant_unref(variant); }
    void operator()(GDateTime* date) const noexcept { g_date_time_unref(date); }
    void operator()(GMainLoop* loop) const noexcept { g_main_loop_unref(loop); }
    void operator()(GMainContext* context) const noexcept { g_main_context_unref(context); }
    template <typename Object>
    void operator()(Object* object) const noexcept {
        g_object_unref(object);
    }
};

/// Sole owner of one reference. `GlibPtr<gchar*>` owns a string array.
template <typename T>
using GlibPtr = std::unique_ptr<T, GlibRelease>;

using TextPtr = GlibPtr<gchar>;
using TextArrayPtr = GlibPtr<gchar*>;
using ErrorPtr = GlibPtr<GError>;
using VariantPtr = GlibPtr<GVariant>;
using DateTimePtr = GlibPtr<GDateTime>;

/// For a new variant: sinks its floating reference.
inline VariantPtr Own(GVariant* value) {
    return VariantPtr(g_variant_ref_sink(value));
}

/// Lets a C function fill a `GlibPtr` through its out parameter: `f(..., Out(error))`.
/// The pointer takes ownership when the full expression ends.
template <typename T>
class Out {
  public:
    explicit Out(GlibPtr<T>& target) noexcept : target_(target) {}
    Out(const Out&) = delete;
    Out& operator=(const Out&) = delete;
    ~Out() { target_.reset(raw_); }

    operator T**() noexcept { return &raw_; }  // NOLINT(google-explicit-constructor): used like `&`

  private:
    GlibPtr<T>& target_;
    T* raw_ = nullptr;
};

}  // namespace morvane
