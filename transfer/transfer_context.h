#pragma once

#include "interfaces/glib_ptr.h"

#include "obex-transfer1.h"

#include <string>

namespace morvane {

struct TransferProgress;

/// One download that the daemon carries on in the background, and the file that it writes.
///
/// Made and used on the menu thread; its progress is reported on the main thread.
class TransferContext {
  public:
    /// Prints the transfer's properties, those of the `a{sv}` `properties` or, without it, those
    /// of the daemon's object, and follows them. Throws ProxyException.
    TransferContext(const std::string& path, GVariant* properties);
    TransferContext(const TransferContext&) = delete;
    TransferContext& operator=(const TransferContext&) = delete;
    ~TransferContext() = default;  ///< the downloaded file stays

    void BuildProxy(GVariant* properties);
    void GetInitialProperties(GVariant* properties);
    void Subscribe();

    // True if the daemon accepted; a refusal is printed.
    bool Cancel();
    bool Suspend();
    bool Resume();

    void DisplayStatus() const;
    /// Prints the file in pieces of 512 bytes; says so if it has no name or cannot be opened.
    void DisplayDownloadedFile() const;
    /// Deletes the file; whether that worked is not reported.
    void RemoveDownloadedFile() const;

    [[nodiscard]] std::string GetPathName() const { return path_; }
    // As last announced; empty if absent.
    [[nodiscard]] std::string GetStatus() const;
    [[nodiscard]] std::string GetName() const;
    [[nodiscard]] std::string GetFileName() const;
    /// In bytes; 0 as long as it is unknown. Progress is counted against this.
    [[nodiscard]] guint64 GetSize() const;
    void SetSize(guint64 size);
    /// The last percentage printed.
    [[nodiscard]] int GetTransferredPercent() const;
    void SetTransferredPercent(int percent);

  private:
    [[nodiscard]] TransferProgress& Progress() const;

    GlibPtr<ObexTransfer1> proxy_;
    std::string path_;
};

}  // namespace morvane
