#pragma once

#include "simulator/bus/timer.h"
#include "simulator/objects/descriptions.h"
#include "simulator/objects/world.h"

#include <obex-transfer1.h>

#include <cstdint>
#include <fstream>
#include <string>

namespace simulator {

/// Content and target file of a pull.
struct Download {
    std::string name;     ///< name of the object on the phone
    std::string type;     ///< MIME type
    std::string file;     ///< absolute path
    std::string content;  ///< the complete content
};

/// A download: writes its file in chunks and announces its progress.
class Transfer {
  public:
    /// `number` makes its path unique. Opens the file and exports the object; throws `Refusal` when
    /// the file cannot be written.
    Transfer(World& world, unsigned number, const std::string& session, Download download);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] unsigned number() const { return number_; }
    [[nodiscard]] TransferInfo Describe() const;
    /// The a{sv} in the reply to a pull.
    [[nodiscard]] morvane::VariantPtr Properties() const;

    // These throw `std::runtime_error` if the transfer is over, `Advance` also if it is suspended.
    /// Returns whether the transfer was not active before.
    bool Start();
    void Advance(std::uint64_t bytes);
    void Abort();
    [[nodiscard]] std::uint64_t Remaining() const { return download_.content.size() - written_; }
    [[nodiscard]] bool IsOver() const;

  private:
    enum class Status { kQueued, kActive, kSuspended, kComplete, kError };

    morvane::VariantPtr Suspend();
    morvane::VariantPtr Resume();
    morvane::VariantPtr Cancel();

    void OpenFile();
    void Export(const std::string& session);
    void SetStatus(Status status);
    void RunByRate();
    void AdvanceByRate();
    void DemandRunning() const;
    void Write(std::uint64_t bytes);
    void Finish(Status status);

    World& world_;
    const unsigned number_;
    const std::string path_;
    const Download download_;
    morvane::GlibPtr<ObexTransfer1> skeleton_;
    std::ofstream file_;
    Status status_ = Status::kQueued;
    std::uint64_t written_ = 0;
    gint64 last_advance_ = 0;  // monotonic microseconds
    Timer timer_;
};

}  // namespace simulator
