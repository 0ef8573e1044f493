#pragma once

#include "interfaces/glib_ptr.h"

#include "obex-transfer1.h"

#include <string>

namespace morvane {

struct TransferProgress;

/// A download by the daemon in the background, and its file.
///
/// Constructed and used on the menu thread; progress is printed on the main thread.
class TransferContext {
  public:
    /// Prints the transfer's properties, those of the `a{sv}` `properties` or, if it is null, those
    /// of the daemon's object, and subscribes to their changes. Throws ProxyException.
    TransferContext(const std::string& path, GVariant* properties);
    TransferContext(const TransferContext&) = delete;
    TransferContext& operator=(const TransferContext&) = delete;
    ~TransferContext() = default;  ///< keeps the downloaded file

    void BuildProxy(GVariant* properties);
    void GetInitialProperties(GVariant* properties);
    void Subscribe();

    // True on success; otherwise the daemon's error is printed.
    bool Cancel();
    bool Suspend();
    bool Resume();

    void DisplayStatus() const;
    /// Prints the file in pieces of 512 bytes, or an error if it has no name or cannot be opened.
    void DisplayDownloadedFile() const;
    /// Deletes the file; does not report errors.
    void RemoveDownloadedFile() const;

    [[nodiscard]] std::string GetPathName() const { return path_; }
    // The last announced values; empty if absent.
    [[nodiscard]] std::string GetStatus() const;
    [[nodiscard]] std::string GetName() const;
    [[nodiscard]] std::string GetFileName() const;
    /// In bytes; 0 while unknown. The percentage is relative to this size.
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
