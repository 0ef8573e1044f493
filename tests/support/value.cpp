#include "support/value.h"

#include <stdexcept>

namespace morvane_test {

Value::Value(const std::string& text) {
    morvane::ErrorPtr error;
    value_.reset(g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, morvane::Out(error)));
    if (!value_) throw std::invalid_argument(text + ": " + error->message);
}

std::string Canonical(const std::string& text) {
    return morvane::TextPtr(g_variant_print(Value(text), TRUE)).get();
}

}  // namespace morvane_test
