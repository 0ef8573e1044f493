#include "console/console_output.h"
#include "interfaces/remote_call.h"
#include "phonebook/phonebook_context.h"
#include "phonebook/prompts.h"
#include "phonebook/refusal.h"

namespace morvane {
namespace {

constexpr const char* kInternalMemory = "int";

constexpr ChoicePrompt kLocation = {"/Select Location", "Select a Phonebook Location",
                                    "Invalid location selected"};
constexpr ChoicePrompt kPhonebook = {"/Select Phonebook", "Select a Phonebook",
                                     "Invalid phone book selected"};

}  // namespace

std::string PhonebookContext::SelectLocation(MenuLock&& lock) {
    return Choose(lock, kLocation, {kInternalMemory, "sim1", "sim2"});
}

std::string PhonebookContext::SelectPhonebook(MenuLock&& lock, const std::string& location) {
    Choices phonebooks = {"pb", "cch", "ich", "och", "mch"};
    if (location == kInternalMemory) {
        phonebooks.insert(phonebooks.end(), {"spd", "fav"});
    }
    return Choose(lock, kPhonebook, phonebooks);
}

void PhonebookContext::Select(MenuLock&& lock) {
    const std::string location = SelectLocation(Lend(lock));
    const std::string phonebook = SelectPhonebook(Lend(lock), location);
    const ErrorPtr error = CallRemote(obex_phonebook_access1_call_select_sync, phonebook_proxy_,
                                      location.c_str(), phonebook.c_str());
    phonebook_selected_ = !error;
    RequireAccepted(error);
    PROXY_Print(kNormal, "Phonebook selected successfully\n");
}

}  // namespace morvane
