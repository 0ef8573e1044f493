#include "client/client_proxy_context.h"

#include "app/obex_proxy.h"
#include "console/console_output.h"
#include "console/errors.h"
#include "interfaces/bus_text.h"
#include "interfaces/remote_call.h"
#include "interfaces/variant_dict.h"
#include "uuid/uuid.h"

namespace morvane {
namespace {

constexpr unsigned short kPhonebookAccessServer = 0x112F;  // NOLINT(google-runtime-int): a UUID

VariantPtr SessionArguments() {
    char target[kUuidTextSize];
    ConvertUUID32to128Char(target, ConvertUUID16toUUID32(kPhonebookAccessServer));
    VariantDict arguments;
    g_variant_dict_insert(arguments.Get(), "Target", "s", target);
    return arguments.End();
}

bool Accepted(const char* operation, const ErrorPtr& error) {
    if (error) {
        PROXY_Print(kRed, "%s failed %s\n", operation, error->message);
    }
    return !error;
}

}  // namespace

/// A text that the operator sets on the client object.
struct ClientProxyContext::Credential {
    const char* prompt_segment;
    const char* title;
    unsigned int limit;
    decltype(&obex_client1_call_set_user_id_sync) call;
    const char* operation;
};

ClientProxyContext::ClientProxyContext(const std::string& path) : path_(path) {
    BuildProxy();
}

// The proxy first: the destructor of the session's context prints.
ClientProxyContext::~ClientProxyContext() {
    proxy_.reset();
    phonebook_.reset();
}

void ClientProxyContext::BuildProxy() {
    proxy_ =
        MakeProxy(obex_client1_proxy_new_for_bus_sync, obexProxy.GetBusName(), path_, "Client");
}

bool ClientProxyContext::CreateSession(const std::string& destination, MenuLock&& /*lock*/) {
    const VariantPtr arguments = SessionArguments();
    TextPtr session_path;
    const ErrorPtr error = CallRemote(obex_client1_call_create_session_sync, proxy_,
                                      destination.c_str(), arguments.get(), Out(session_path));
    if (!Accepted("Create Session", error)) {
        return false;
    }
    session_path_ = session_path.get();
    AllocPhonebook(session_path_);
    return true;
}

bool ClientProxyContext::RemoveSession() {
    if (session_path_.empty()) {
        return true;
    }
    const ErrorPtr error =
        CallRemote(obex_client1_call_remove_session_sync, proxy_, session_path_.c_str());
    if (!Accepted("Remove Session", error)) {
        return false;
    }
    phonebook_.reset();
    return true;
}

void ClientProxyContext::SetUserId(MenuLock&& lock) {
    SetCredential({"/User Id", "Enter OBEX User Id (Max 20 chars)", 20,
                   obex_client1_call_set_user_id_sync, "Set User Id"},
                  lock);
}

void ClientProxyContext::SetPassword(MenuLock&& lock) {
    SetCredential({"/Password", "Enter OBEX Password (Max 10 chars)", 10,
                   obex_client1_call_set_password_sync, "Set Password"},
                  lock);
}

// Static: the client object may be replaced while the operator types.
void ClientProxyContext::SetCredential(const Credential& credential, MenuLock& lock) {
    const std::string text =
        BusText(obexProxy
                    .AskText(lock, obexProxy.PromptPath(credential.prompt_segment),
                             credential.title, credential.limit)
                    .value_or(""));
    if (!obexProxy.IsClientValid()) {
        throw InvalidObjectException("Client Proxy is invalid");
    }
    Accepted(credential.operation,
             CallRemote(credential.call, obexProxy.Client()->proxy_, text.c_str()));
}

void ClientProxyContext::AllocPhonebook(const std::string& session_path) {
    auto phonebook = std::make_unique<PhonebookContext>(session_path);
    phonebook_.swap(phonebook);
}

bool ClientProxyContext::IsValid() const {
    return phonebook_ && phonebook_->IsValid();
}

}  // namespace morvane
