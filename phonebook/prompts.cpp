#include "phonebook/prompts.h"

#include "app/obex_proxy.h"
#include "console/errors.h"
#include "console/frames.h"

namespace morvane {

void RequireSession() {
    if (!obexProxy.IsValid()) {
        throw InvalidObjectException("Phonebook Access Proxy is invalid");
    }
}

std::optional<std::string> AskText(MenuLock& lock, const char* segment, const char* title,
                                   unsigned int limit) {
    std::optional<std::string> text =
        obexProxy.AskText(lock, obexProxy.PromptPath(segment), title, limit);
    RequireSession();
    return text;
}

unsigned int AskNumber(MenuLock& lock, const char* segment) {
    const unsigned int number = obexProxy.AskNumber(lock, obexProxy.PromptPath(segment));
    RequireSession();
    return number;
}

std::string Choose(MenuLock& lock, const ChoicePrompt& prompt, const Choices& choices) {
    PrintHeading(prompt.title);
    int index = 0;
    for (const std::string& choice : choices) {
        PrintChoice(index++, choice.c_str());
    }
    const unsigned int chosen = AskNumber(lock, prompt.segment);
    if (chosen >= choices.size()) {
        throw InvalidValueException(prompt.error);
    }
    return choices[chosen];
}

}  // namespace morvane
