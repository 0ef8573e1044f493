#pragma once

#include "interfaces/glib_ptr.h"
#include "simulator/phone/refusal.h"

#include <exception>

namespace simulator {

/// Signal handler for a generated skeleton. Calls a member function with the arguments of a method
/// and replies with the tuple that it returns (null: an empty tuple), or with an error for an
/// exception.
template <auto Member>
struct Handler;

template <typename Object, typename... Arguments,
          morvane::VariantPtr (Object::*Member)(Arguments...)>
struct Handler<Member> {
    static gboolean Handle(gpointer /*skeleton*/, GDBusMethodInvocation* invocation,
                           Arguments... arguments, gpointer object) {
        try {
            const morvane::VariantPtr reply = (static_cast<Object*>(object)->*Member)(arguments...);
            g_dbus_method_invocation_return_value(invocation, reply.get());
        } catch (const Refusal& refusal) {
            g_dbus_method_invocation_return_dbus_error(invocation, refusal.name().c_str(),
                                                       refusal.what());
        } catch (const std::exception& failure) {
            g_dbus_method_invocation_return_dbus_error(invocation, kFailed, failure.what());
        }
        return TRUE;
    }
};

/// `object` must outlive the export of the skeleton.
template <auto Member, typename Object>
void Handle(gpointer skeleton, const char* signal, Object* object) {
    g_signal_connect(skeleton, signal, G_CALLBACK(Handler<Member>::Handle), object);
}

}  // namespace simulator
