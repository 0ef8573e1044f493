#include "simulator/program/known_names.h"

#include "simulator/program/command_error.h"

#include "interfaces/glib_ptr.h"

#include <device1.h>
#include <obex-client1.h>
#include <obex-phonebook-access1.h>
#include <obex-session1.h>
#include <obex-transfer1.h>

#include <algorithm>
#include <memory>
#include <numeric>

namespace simulator {
namespace {

using Names = std::vector<std::string>;

// GLib implements these, but exports no descriptions of them.
constexpr char kStandardInterfaces[] = R"(<node>
  <interface name="org.freedesktop.DBus.Properties">
    <method name="Get"/><method name="GetAll"/><method name="Set"/>
  </interface>
  <interface name="org.freedesktop.DBus.ObjectManager"><method name="GetManagedObjects"/></interface>
  <interface name="org.freedesktop.DBus.Introspectable"><method name="Introspect"/></interface>
  <interface name="org.freedesktop.DBus.Peer">
    <method name="Ping"/><method name="GetMachineId"/>
  </interface>
</node>)";

struct NodeRelease {
    void operator()(GDBusNodeInfo* node) const noexcept { g_dbus_node_info_unref(node); }
};

std::vector<GDBusInterfaceInfo*> DescribeInterfaces() {
    std::vector<GDBusInterfaceInfo*> interfaces = {
        device1_interface_info(), obex_client1_interface_info(),
        obex_phonebook_access1_interface_info(), obex_session1_interface_info(),
        obex_transfer1_interface_info()};
    static const std::unique_ptr<GDBusNodeInfo, NodeRelease> standard(
        g_dbus_node_info_new_for_xml(kStandardInterfaces, nullptr));
    for (GDBusInterfaceInfo** interface = standard->interfaces; *interface != nullptr;
         ++interface) {
        interfaces.push_back(*interface);
    }
    return interfaces;
}

const std::vector<GDBusInterfaceInfo*>& Interfaces() {
    static const std::vector<GDBusInterfaceInfo*> interfaces = DescribeInterfaces();
    return interfaces;
}

/// The names in a null-terminated array of methods or properties.
template <typename Info>
Names NamesOf(Info* const* infos) {
    Names names;
    for (; infos != nullptr && *infos != nullptr; ++infos) {
        names.emplace_back((*infos)->name);
    }
    return names;
}

bool Contains(const Names& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Throws "No <what> <word> of <interface>; did you mean ...?" unless `names` contains the word.
void DemandKnown(const char* what, const std::string& word, const std::string& interface,
                 const Names& names) {
    if (Contains(names, word)) {
        return;
    }
    const std::string of = interface.empty() ? "" : " of " + LastPart(interface, '.');
    throw Invalid(std::string("No ") + what + " " + word + of + Suggest(word, names));
}

char Lower(char letter) {
    return g_ascii_tolower(letter);
}

/// Optimal string alignment distance, ignoring letter case: insertions, deletions, replacements and
/// swaps of adjacent letters that turn one name into the other.
std::size_t EditDistance(const std::string& from, const std::string& to) {
    std::vector<std::vector<std::size_t>> distances(from.size() + 1,
                                                    std::vector<std::size_t>(to.size() + 1));
    std::iota(distances[0].begin(), distances[0].end(), 0U);
    const auto same = [&](std::size_t i, std::size_t j) { return Lower(from[i]) == Lower(to[j]); };
    for (std::size_t i = 0; i < from.size(); ++i) {
        distances[i + 1][0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            std::size_t& distance = distances[i + 1][j + 1];
            distance = std::min({distances[i][j] + (same(i, j) ? 0U : 1U), distances[i][j + 1] + 1,
                                 distances[i + 1][j] + 1});
            if (i > 0 && j > 0 && same(i, j - 1) && same(i - 1, j)) {
                distance = std::min(distance, distances[i - 1][j - 1] + 1);
            }
        }
    }
    return distances.back().back();
}

}  // namespace

std::string Folded(const std::string& text) {
    return morvane::TextPtr(g_utf8_casefold(text.c_str(), -1)).get();
}

std::string LastPart(const std::string& name, char separator) {
    return name.substr(name.rfind(separator) + 1);
}

Names InterfaceNames() {
    Names names;
    for (const GDBusInterfaceInfo* info : Interfaces()) {
        names.push_back(LastPart(info->name, '.'));
    }
    return names;
}

Names MethodNames(const std::string& interface) {
    Names methods;
    for (const GDBusInterfaceInfo* info : Interfaces()) {
        if (interface.empty() || interface == info->name) {
            const Names some = NamesOf(info->methods);
            methods.insert(methods.end(), some.begin(), some.end());
        }
    }
    return methods;
}

Names PropertyNames(const std::string& interface) {
    for (const GDBusInterfaceInfo* info : Interfaces()) {
        if (interface == info->name) {
            return NamesOf(info->properties);
        }
    }
    return {};
}

std::string Suggest(const std::string& word, const std::vector<std::string>& names) {
    std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
    std::string suggestion;
    for (const std::string& name : names) {
        const std::size_t distance = EditDistance(word, name);
        if (distance < least) {
            least = distance;
            suggestion = "; did you mean " + name + "?";
        }
    }
    return suggestion;
}

std::string ResolveInterface(const std::string& word, bool insists) {
    Names names;
    for (const GDBusInterfaceInfo* info : Interfaces()) {
        const std::string last = LastPart(info->name, '.');
        if (word == info->name || word == last) {
            return info->name;
        }
        names.push_back(word.find('.') == std::string::npos ? last : info->name);
    }
    if (!insists) {
        DemandKnown("interface", word, "", names);
    }
    return word;
}

std::string ResolveMethod(const std::string& word, bool insists) {
    const std::size_t dot = word.rfind('.');
    const bool has_interface = dot != std::string::npos;
    const std::string interface =
        has_interface ? ResolveInterface(word.substr(0, dot), insists) : "";
    const std::string method = LastPart(word, '.');
    if (!insists) {
        DemandKnown("method", method, interface, MethodNames(interface));
    }
    return has_interface ? interface + "." + method : method;
}

std::string ResolveProperty(const std::string& interface, const std::string& word, bool insists) {
    if (!insists) {
        DemandKnown("property", word, interface, PropertyNames(interface));
    }
    return word;
}

}  // namespace simulator
