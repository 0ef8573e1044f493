#pragma once

#include "console/menu_lock.h"
#include "interfaces/glib_ptr.h"
#include "phonebook/phonebook_context.h"

#include "obex-client1.h"

#include <memory>
#include <string>

namespace morvane {

/// The daemon's OBEX client object: opens and removes the session, sets user id and password.
///
/// Constructed on the main thread; everything else runs on the menu thread with the registry mutex
/// locked. An operation with a MenuLock parameter unlocks it while it asks the operator. This
/// object may be destroyed meanwhile: afterwards the operation accesses members only if the
/// application's session, or client, is still valid.
class ClientProxyContext {
  public:
    /// Throws ProxyException.
    explicit ClientProxyContext(const std::string& path);
    ClientProxyContext(const ClientProxyContext&) = delete;
    ClientProxyContext& operator=(const ClientProxyContext&) = delete;
    ~ClientProxyContext();

    void BuildProxy();

    /// Opens a phone book session to the device with the address `destination`. False after
    /// printing the daemon's error; throws ProxyException if the session's proxy cannot be created.
    /// Does not unlock `lock`.
    [[nodiscard]] bool CreateSession(const std::string& destination, MenuLock&& lock);

    /// Removes the session. False after printing the daemon's error; the session's context is kept
    /// then. The path is always kept: removing twice calls the daemon twice.
    bool RemoveSession();

    /// Ask the operator and send the answer to the client object that exists afterwards, which may
    /// be another one. Print the daemon's error; throw InvalidObjectException if there is no
    /// client.
    void SetUserId(MenuLock&& lock);
    void SetPassword(MenuLock&& lock);

    /// Throws ProxyException; the current context is kept then.
    void AllocPhonebook(const std::string& session_path);

    /// A session is open and connected.
    [[nodiscard]] bool IsValid() const;
    [[nodiscard]] std::string GetPathName() const { return path_; }
    /// The open session's context, or null.
    [[nodiscard]] PhonebookContext* Phonebook() const { return phonebook_.get(); }

    void DisplayPhonebookMenu() const;
    /// Runs the session's menu. Throws InvalidObjectException when client or session are removed.
    void RunProfileMenu(MenuLock&& lock, const std::string& name);

  private:
    struct Credential;
    static void SetCredential(const Credential& credential, MenuLock& lock);

    GlibPtr<ObexClient1> proxy_;
    std::unique_ptr<PhonebookContext> phonebook_;
    std::string path_;
    std::string session_path_;
};

}  // namespace morvane
