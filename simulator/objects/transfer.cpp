#include "simulator/objects/transfer.h"

#include "simulator/objects/handler.h"
#include "simulator/objects/names.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>

namespace simulator {
namespace {

using morvane::VariantPtr;

constexpr std::array<const char*, 5> kStatusWords = {"queued", "active", "suspended", "complete",
                                                     "error"};
/// A client prints a line for each announcement; limit their rate so that the input line stays
/// readable.
constexpr std::chrono::milliseconds kBetweenPieces{500};
constexpr std::chrono::milliseconds kBeforeOnlyPiece{50};
constexpr std::uint64_t kMicroseconds = 1000000;

}  // namespace

Transfer::Transfer(World& world, unsigned number, const std::string& session, Download download)
    : world_(world),
      number_(number),
      path_(session + "/transfer" + std::to_string(number)),
      download_(std::move(download)),
      skeleton_(obex_transfer1_skeleton_new()) {
    OpenFile();
    Export(session);
    if (world_.options.pace == TransferPace::kByRate) {
        RunByRate();
    }
}

Transfer::~Transfer() {
    world_.tree.Unexport(path_);
}

/// Opening a FIFO blocks until another process reads it.
void Transfer::OpenFile() {
    std::error_code ignored;
    if (!std::filesystem::is_fifo(download_.file, ignored)) {
        file_.open(download_.file, std::ios::binary | std::ios::trunc);
    }
    if (!file_.is_open()) {
        throw Refusal(kFailed, "Cannot write " + download_.file);
    }
}

void Transfer::Export(const std::string& session) {
    ObexTransfer1* skeleton = skeleton_.get();
    obex_transfer1_set_status(skeleton, kStatusWords[0]);
    obex_transfer1_set_name(skeleton, download_.name.c_str());
    obex_transfer1_set_filename(skeleton, download_.file.c_str());
    obex_transfer1_set_session(skeleton, session.c_str());
    obex_transfer1_set_type_(skeleton, download_.type.c_str());
    obex_transfer1_set_size(skeleton, world_.options.size_in_reply ? download_.content.size() : 0);
    Handle<&Transfer::Suspend>(skeleton, "handle-suspend", this);
    Handle<&Transfer::Resume>(skeleton, "handle-resume", this);
    Handle<&Transfer::Cancel>(skeleton, "handle-cancel", this);
    world_.tree.Export(path_, {G_DBUS_INTERFACE_SKELETON(skeleton)});
}

VariantPtr Transfer::Properties() const {
    return world_.property_faults.Apply(path_, kTransferInterface,
                                        PropertiesOf(skeleton_.get()).get());
}

TransferInfo Transfer::Describe() const {
    return {path_, kStatusWords.at(static_cast<std::size_t>(status_)), written_,
            download_.content.size(), download_.file};
}

bool Transfer::IsOver() const {
    return status_ == Status::kComplete || status_ == Status::kError;
}

void Transfer::DemandRunning() const {
    if (!IsOver() && status_ != Status::kSuspended) {
        return;
    }
    throw std::runtime_error("Transfer " + path_ + " is " +
                             kStatusWords.at(static_cast<std::size_t>(status_)));
}

void Transfer::SetStatus(Status status) {
    status_ = status;
    obex_transfer1_set_status(skeleton_.get(), kStatusWords.at(static_cast<std::size_t>(status)));
    Announce(skeleton_.get());
}

bool Transfer::Start() {
    DemandRunning();
    if (status_ == Status::kActive) {
        return false;
    }
    SetStatus(Status::kActive);
    obex_transfer1_set_size(skeleton_.get(), download_.content.size());
    Announce(skeleton_.get());
    return true;
}

void Transfer::Advance(std::uint64_t bytes) {
    Start();
    Write(std::min(bytes, Remaining()));
    if (status_ == Status::kActive && Remaining() == 0) {
        Finish(Status::kComplete);
    }
}

void Transfer::Write(std::uint64_t bytes) {
    file_.write(download_.content.data() + written_, static_cast<std::streamsize>(bytes));
    file_.flush();
    if (!file_) {
        Finish(Status::kError);
        return;
    }
    written_ += bytes;
    obex_transfer1_set_transferred(skeleton_.get(), written_);
    Announce(skeleton_.get());
}

void Transfer::Finish(Status status) {
    timer_.Stop();
    file_.close();
    SetStatus(status);
}

void Transfer::Abort() {
    if (IsOver()) {
        throw std::runtime_error("Transfer " + path_ + " is over");
    }
    Finish(Status::kError);
}

void Transfer::RunByRate() {
    timer_.Start(world_.options.start_delay, [this] {
        if (world_.transfers_stalled) {
            return true;
        }
        Start();
        last_advance_ = g_get_monotonic_time();
        timer_.Start(world_.options.rate == 0 ? kBeforeOnlyPiece : kBetweenPieces, [this] {
            AdvanceByRate();
            return !IsOver();
        });
        return false;
    });
}

void Transfer::AdvanceByRate() {
    const gint64 now = g_get_monotonic_time();
    const auto elapsed = static_cast<std::uint64_t>(now - last_advance_);
    const std::uint64_t rate = world_.options.rate;
    const std::uint64_t due = rate == 0 ? Remaining() : elapsed * rate / kMicroseconds;
    const bool idle = world_.transfers_stalled || status_ == Status::kSuspended;
    if (!idle && due == 0 && Remaining() > 0) {
        return;  // less than one byte is due: accumulate time
    }
    last_advance_ = now;
    if (!idle) {
        Advance(due);
    }
}

VariantPtr Transfer::Suspend() {
    if (status_ != Status::kActive) {
        throw Refusal(kNotInProgress, "Transfer is not active");
    }
    SetStatus(Status::kSuspended);
    return nullptr;
}

VariantPtr Transfer::Resume() {
    if (status_ != Status::kSuspended) {
        throw Refusal(kNotInProgress, "Transfer is not suspended");
    }
    SetStatus(Status::kActive);
    return nullptr;
}

VariantPtr Transfer::Cancel() {
    if (IsOver()) {
        throw Refusal(kNotInProgress, "Transfer is over");
    }
    Finish(Status::kError);
    return nullptr;
}

}  // namespace simulator
