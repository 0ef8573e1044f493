#pragma once

#include <string>
#include <vector>

namespace simulator {

// The names in the descriptions of the daemon's interfaces, and those of the standard interfaces.
// Unknown names are refused by a `CommandError` that suggests the nearest known name, unless
// `insists` is set.

/// The full name of an interface, from its full name or its last part, such as "Device1".
std::string ResolveInterface(const std::string& word, bool insists);
/// A method's name, with the full name of its interface if the word names one: "Select" or
/// "PhonebookAccess1.Select".
std::string ResolveMethod(const std::string& word, bool insists);
/// A property's name. `interface` is a full name.
std::string ResolveProperty(const std::string& interface, const std::string& word, bool insists);

/// The last parts of the interfaces' names.
std::vector<std::string> InterfaceNames();
/// The names of the interface with this full name, or of all interfaces if it is empty.
std::vector<std::string> MethodNames(const std::string& interface);
std::vector<std::string> PropertyNames(const std::string& interface);

/// "; did you mean <the nearest name>?", or empty when no name is near.
std::string Suggest(const std::string& word, const std::vector<std::string>& names);

/// Folds letter case, for comparison.
std::string Folded(const std::string& text);

/// The part after the last separator, such as "Device1" or "session0"; all of it if there is none.
std::string LastPart(const std::string& name, char separator);

}  // namespace simulator
