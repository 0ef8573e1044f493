#include "transfer/transfer_context.h"

#include "console/console_output.h"
#include "interfaces/bus_name.h"
#include "interfaces/property_notices.h"
#include "interfaces/remote_call.h"
#include "transfer/downloaded_file.h"
#include "transfer/initial_properties.h"

#include <atomic>
#include <cstdio>
#include <optional>

namespace morvane {

/// State shared by the notification callbacks of a transfer. Owned by the proxy, which is
/// referenced during a callback, not by the context, which the other thread may destroy meanwhile.
struct TransferProgress {
    std::atomic<guint64> size{0};
    std::atomic<int> percent{0};

    // Accessed by both threads. A callback must not block on a mutex, and 32-bit ARM must not need
    // libatomic.
    static_assert(decltype(size)::is_always_lock_free && decltype(percent)::is_always_lock_free);
};

namespace {

constexpr const char* kProgressKey = "morvane-progress";

TransferProgress& ProgressOf(ObexTransfer1* proxy) {
    return *static_cast<TransferProgress*>(g_object_get_data(G_OBJECT(proxy), kProgressKey));
}

void ReportSize(ObexTransfer1* proxy, const char* label) {
    const guint64 size = obex_transfer1_get_size(proxy);
    ProgressOf(proxy).size = size;
    PROXY_Print(kNormal, "%s: %d\n", label, static_cast<gint32>(size));
}

void PrintPercent(int percent) {
    // Printing a lone percent sign: the format of this line must not change.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
    PROXY_Print(kNormal, "Transferred Percent: %d%\n", percent);
#pragma GCC diagnostic pop
}

// Each percentage is printed once, and only upwards.
void ReportProgress(ObexTransfer1* proxy, const char* /*label*/) {
    TransferProgress& progress = ProgressOf(proxy);
    const guint64 size = progress.size;
    if (size == 0) {
        return;
    }
    const auto percent = static_cast<gint32>(obex_transfer1_get_transferred(proxy) * 100 / size);
    if (percent > progress.percent) {
        PrintPercent(percent);
        progress.percent = percent;
    }
}

constexpr PropertyNotice<ObexTransfer1> kNotices[] = {
    {"notify::status", ReportText<obex_transfer1_get_status>, "Status Attribute Received"},
    {"notify::session", ReportText<obex_transfer1_get_session>, "Session Attribute Received"},
    {"notify::name", ReportText<obex_transfer1_get_name>, "Name Attribute Received"},
    {"notify::type", ReportText<obex_transfer1_get_type_>, "Type Attribute Received"},
    {"notify::size", ReportSize, "Size Attribute Received"},
    {"notify::transferred", ReportProgress, nullptr},
    {"notify::filename", ReportText<obex_transfer1_get_filename>, "Filename Attribute Received"},
};

bool Accepted(const ErrorPtr& error) {
    if (error) {
        PROXY_Print(kRed, "Remote Call failed %s\n", error->message);
    }
    return !error;
}

std::string CopyOf(const TextPtr& text) {
    return text ? text.get() : "";
}

}  // namespace

TransferContext::TransferContext(const std::string& path, GVariant* properties) : path_(path) {
    BuildProxy(properties);
}

// Transfers are exported under the default name, whichever instance owns the session.
void TransferContext::BuildProxy(GVariant* properties) {
    proxy_ = MakeProxy(obex_transfer1_proxy_new_for_bus_sync, kDefaultBusName, path_, "Transfer");
    g_object_set_data_full(
        G_OBJECT(proxy_.get()), kProgressKey, std::make_unique<TransferProgress>().release(),
        [](gpointer progress) { delete static_cast<TransferProgress*>(progress); });
    GetInitialProperties(properties);
    Subscribe();
}

void TransferContext::GetInitialProperties(GVariant* properties) {
    const std::optional<guint64> size = properties == nullptr
                                            ? PrintCachedProperties(G_DBUS_PROXY(proxy_.get()))
                                            : PrintProperties(properties);
    if (size) {
        SetSize(*size);
    }
}

void TransferContext::Subscribe() {
    FollowChanges<ObexTransfer1>(proxy_.get(), kNotices);
}

bool TransferContext::Cancel() {
    return Accepted(CallRemote(obex_transfer1_call_cancel_sync, proxy_));
}

bool TransferContext::Suspend() {
    return Accepted(CallRemote(obex_transfer1_call_suspend_sync, proxy_));
}

bool TransferContext::Resume() {
    return Accepted(CallRemote(obex_transfer1_call_resume_sync, proxy_));
}

void TransferContext::DisplayStatus() const {
    PROXY_Print(kNormal, "Transfer Status: %s\n", GetStatus().c_str());
}

void TransferContext::DisplayDownloadedFile() const {
    if (const TextPtr name{obex_transfer1_dup_filename(proxy_.get())}) {
        DisplayFile(name.get());
    } else {
        PROXY_Print(kRed, "Filename property not set!");
    }
}

void TransferContext::RemoveDownloadedFile() const {
    const TextPtr name(obex_transfer1_dup_filename(proxy_.get()));
    if (!name) {
        PROXY_Print(kRed, "Filename property not set!");
    } else if (*name != '\0') {
        PROXY_Print(kNormal, "Removing: %s\n", name.get());
        static_cast<void>(std::remove(name.get()));
    }
}

std::string TransferContext::GetStatus() const {
    return CopyOf(TextPtr(obex_transfer1_dup_status(proxy_.get())));
}

std::string TransferContext::GetName() const {
    return CopyOf(TextPtr(obex_transfer1_dup_name(proxy_.get())));
}

std::string TransferContext::GetFileName() const {
    return CopyOf(TextPtr(obex_transfer1_dup_filename(proxy_.get())));
}

TransferProgress& TransferContext::Progress() const {
    return ProgressOf(proxy_.get());
}

guint64 TransferContext::GetSize() const {
    return Progress().size;
}

void TransferContext::SetSize(guint64 size) {
    Progress().size = size;
}

int TransferContext::GetTransferredPercent() const {
    return Progress().percent;
}

void TransferContext::SetTransferredPercent(int percent) {
    Progress().percent = percent;
}

}  // namespace morvane
