#include "console/errors.h"
#include "console/frames.h"
#include "phonebook/phonebook_context.h"
#include "phonebook/prompts.h"

namespace morvane {

namespace {

// A prompt for a number in the filter dictionary.
struct NumberPrompt {
    const char* segment;  // last part of the prompt path
    const char* title;
    const char* error;
    const char* key;
    unsigned int smallest;
};

constexpr ChoicePrompt kFormatPrompt = {"/Select Format", "Select a Phonebook Format",
                                        "Invalid format selected"};
constexpr ChoicePrompt kOrderPrompt = {"/Select Order", "Select a Phonebook Sort Order",
                                       "Invalid order selected"};
constexpr ChoicePrompt kFieldPrompt = {"/Select Filter Field", "Select a Filter Field",
                                       "Invalid filter selected"};
constexpr ChoicePrompt kSelectorPrompt = {"/Select vCard Selector Filter",
                                          "Select a vCard Selector Filter",
                                          "Invalid vCard selector selected"};

// A count of 0 is refused: it would make the phone return only the size.
constexpr NumberPrompt kCountPrompt = {"/MaxCount", "Enter number of Phonebook Entries to return",
                                       "Invalid MaxCount entered", "MaxCount", 1};
constexpr NumberPrompt kOffsetPrompt = {"/Offset", "Enter the Phonebook List Start Offset",
                                        "Invalid Offset entered", "Offset", 0};

void InsertNumber(MenuLock& lock, const NumberPrompt& prompt, GVariantDict* dict) {
    PrintHeading(prompt.title);
    const unsigned int number = AskNumber(lock, prompt.segment);
    if (number < prompt.smallest || number > G_MAXUINT16) {
        throw InvalidValueException(prompt.error);
    }
    g_variant_dict_insert_value(dict, prompt.key,
                                g_variant_new_uint16(static_cast<guint16>(number)));
}

void InsertChoice(MenuLock& lock, const ChoicePrompt& prompt, const Choices& choices,
                  const char* key, GVariantDict* dict) {
    const std::string choice = Choose(lock, prompt, choices);
    g_variant_dict_insert(dict, key, "s", choice.c_str());
}

}  // namespace

void PhonebookContext::SelectFormat(MenuLock&& lock, GVariantDict* dict) {
    InsertChoice(lock, kFormatPrompt, {"vcard21", "vcard30"}, "Format", dict);
}

void PhonebookContext::SelectOrder(MenuLock&& lock, GVariantDict* dict) {
    InsertChoice(lock, kOrderPrompt, {"indexed", "alphanumeric", "phonetic"}, "Order", dict);
}

void PhonebookContext::SelectCount(MenuLock&& lock, GVariantDict* dict) {
    InsertNumber(lock, kCountPrompt, dict);
}

void PhonebookContext::SelectOffset(MenuLock&& lock, GVariantDict* dict) {
    InsertNumber(lock, kOffsetPrompt, dict);
}

std::string PhonebookContext::SelectField(MenuLock&& lock) {
    return Choose(lock, kFieldPrompt, filter_fields_);
}

std::string PhonebookContext::SelectFilter(MenuLock&& lock) {
    return Choose(lock, kSelectorPrompt, {"FilterAll", "FilterAny"});
}

}  // namespace morvane
