#include "random/checker.h"

#include "interfaces/glib_ptr.h"

#include <device1.h>
#include <obex-client1.h>
#include <obex-phonebook-access1.h>
#include <obex-session1.h>
#include <obex-transfer1.h>

#include <algorithm>
#include <regex>

namespace morvane_test {
namespace {

using morvane::VariantPtr;

struct TextRule {
    const char* method;
    gsize argument;
    const char* pattern;  // ECMAScript, for the complete text
};

constexpr TextRule kTextRules[] = {
    {"SetUserId", 0, "[\\s\\S]{0,20}"},
    {"SetPassword", 0, "[\\s\\S]{0,10}"},
    {"Select", 0, "int|sim1|sim2"},
    {"Select", 1, "pb|cch|ich|och|mch|spd|fav"},
    {"PullAll", 0, "/tmp/phonebook\\.vcf"},
    {"Pull", 0, "X-BT-UID:[\\s\\S]{32}|[ \\t\\n\\v\\f\\r]*[-+]?(0[xX])?[0-9a-fA-F]{1,8}\\.vcf"},
    {"Pull", 1, "/tmp/card\\.vcf"},
    {"Search", 0, "name|number|sound"},
    {"Search", 1, "[\\s\\S]{0,63}"},
};

/// The valid values of a filter, as a pattern for GVariant text with types.
struct FilterRule {
    const char* key;
    const char* methods;  // methods with this filter, as a pattern
    const char* pattern;
};

constexpr char kTextsPattern[] = "@as \\[\\]|\\['[\\s\\S]*'\\]";

constexpr FilterRule kFilterRules[] = {
    {"Target", "CreateSession", "'0000112f-0000-1000-8000-00805f9b34fb'"},
    {"Format", "PullAll|Pull", "'vcard21'|'vcard30'"},
    {"Order", "List|Search", "'indexed'|'alphanumeric'|'phonetic'"},
    {"MaxCount", "PullAll|List|Search", "uint16 [1-9][0-9]*"},
    {"Offset", "PullAll|List|Search", "uint16 [0-9]+"},
    {"ResetNewMissedCalls", "PullAll|List|Search|GetSize(Phonebook|Listing)", "true"},
    {"Fields", "PullAll|Pull", kTextsPattern},
    {"FilterAll", "PullAll|List|Search|GetSize(Phonebook|Listing)", kTextsPattern},
    {"FilterAny", "PullAll|List|Search|GetSize(Phonebook|Listing)", kTextsPattern},
};

const GDBusMethodInfo* FindMethod(const simulator::Call& call) {
    for (GDBusInterfaceInfo* const interface :
         {device1_interface_info(), obex_client1_interface_info(), obex_session1_interface_info(),
          obex_phonebook_access1_interface_info(), obex_transfer1_interface_info()})
        if (call.interface == interface->name)
            return g_dbus_interface_info_lookup_method(interface, call.method.c_str());
    return nullptr;
}

std::string SignatureOf(const GDBusMethodInfo& method) {
    std::string signature = "(";
    for (GDBusArgInfo** argument = method.in_args; argument && *argument; ++argument)
        signature += (*argument)->signature;
    return signature + ")";
}

bool Matches(const std::string& text, const char* pattern) {
    return std::regex_match(text, std::regex(pattern));
}

std::optional<std::string> FindMistakeInFilter(const std::string& method, const std::string& key,
                                               GVariant* value) {
    const auto rule = std::find_if(std::begin(kFilterRules), std::end(kFilterRules),
                                   [&](const FilterRule& row) { return key == row.key; });
    if (rule == std::end(kFilterRules) || !Matches(method, rule->methods))
        return "no such filter: " + key;
    const std::string text = morvane::TextPtr(g_variant_print(value, TRUE)).get();
    if (!Matches(text, rule->pattern)) return "no such value of " + key + ": " + text;
    return std::nullopt;
}

std::optional<std::string> FindMistakeInText(const std::string& method, gsize argument,
                                             const std::string& text) {
    for (const TextRule& rule : kTextRules)
        if (method == rule.method && argument == rule.argument && !Matches(text, rule.pattern))
            return "no such text as argument " + std::to_string(argument) + ": " + text;
    return std::nullopt;
}

std::optional<std::string> FindMistakeInArgument(const std::string& method, gsize index,
                                                 GVariant* argument) {
    if (g_variant_is_of_type(argument, G_VARIANT_TYPE_STRING))
        return FindMistakeInText(method, index, g_variant_get_string(argument, nullptr));
    if (!g_variant_is_of_type(argument, G_VARIANT_TYPE_VARDICT)) return std::nullopt;
    for (gsize entry = 0; entry < g_variant_n_children(argument); ++entry) {
        const gchar* key = nullptr;
        VariantPtr value;
        g_variant_get_child(argument, entry, "{&sv}", &key,
                            static_cast<GVariant**>(morvane::Out(value)));
        if (auto mistake = FindMistakeInFilter(method, key, value.get())) return mistake;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> FindMistake(const simulator::Call& call) {
    const GDBusMethodInfo* const method = FindMethod(call);
    if (!method) return "no such method";
    if (!g_utf8_validate(call.body.data(), static_cast<gssize>(call.body.size()), nullptr))
        return "not UTF-8";
    const VariantPtr body(g_variant_parse(nullptr, call.body.c_str(), nullptr, nullptr, nullptr));
    if (!body || SignatureOf(*method) != g_variant_get_type_string(body.get()))
        return "the signature is not " + SignatureOf(*method);
    for (gsize index = 0; index < g_variant_n_children(body.get()); ++index) {
        const VariantPtr argument(g_variant_get_child_value(body.get(), index));
        if (auto mistake = FindMistakeInArgument(call.method, index, argument.get()))
            return mistake;
    }
    return std::nullopt;
}

}  // namespace morvane_test
