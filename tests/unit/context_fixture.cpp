#include "unit/context_fixture.h"

#include "support/file_descriptor.h"
#include "support/patience.h"
#include "unit/simulated_bus.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <future>
#include <stdexcept>
#include <thread>

namespace morvane_test {
namespace {

/// Redirects standard output to a pipe with room for the message `first` only; later writes block
/// until `Drain`.
class StalledOutput {
  public:
    explicit StalledOutput(const std::string& first)
        : capacity_(Checked(fcntl(pipe_.writer.Number(), F_SETPIPE_SZ, 4096), "F_SETPIPE_SZ")),
          terminal_(Checked(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0), "dup")) {
        const std::string filler(static_cast<std::size_t>(capacity_) - first.size(), '.');
        Checked(static_cast<int>(write(pipe_.writer.Number(), filler.data(), filler.size())),
                "write");
        std::fflush(stdout);
        Checked(dup2(pipe_.writer.Number(), STDOUT_FILENO), "dup2");
    }
    ~StalledOutput() { dup2(terminal_.Number(), STDOUT_FILENO); }

    void AwaitFirstMessage() const {
        const auto deadline = std::chrono::steady_clock::now() + Patience();
        while (BytesInPipe() < capacity_ && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_EQ(BytesInPipe(), capacity_) << "unexpected first message";
    }

    /// Reads everything in the pipe.
    std::string Drain() const {
        std::string text(static_cast<std::size_t>(BytesInPipe()), '\0');
        Checked(static_cast<int>(read(pipe_.reader.Number(), text.data(), text.size())), "read");
        return text;
    }

  private:
    int BytesInPipe() const {
        int count = 0;
        Checked(ioctl(pipe_.reader.Number(), FIONREAD, &count), "FIONREAD");
        return count;
    }

    Pipe pipe_ = MakePipe(O_CLOEXEC);
    int capacity_;
    FileDescriptor terminal_;
};

}  // namespace

ContextTest::ContextTest() {
    UseBus(bus_.Address());
    daemon_.emplace(bus_.Address(), simulator::Options::Scripted());
    morvane::ErrorPtr error;
    connection_.reset(
        g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, static_cast<GError**>(morvane::Out(error))));
    if (!connection_) throw std::runtime_error(error->message);
    g_dbus_connection_set_exit_on_close(connection_.get(), FALSE);
}

void ContextTest::TearDown() {
    std::atomic<bool> released{false};
    // If its bus was killed, GDBus's worker thread may release the connection, which does not wake
    // this thread.
    const auto on_release = [](gpointer flag, GObject* /*connection*/) {
        *static_cast<std::atomic<bool>*>(flag) = true;
        g_main_context_wakeup(nullptr);
    };
    g_object_weak_ref(G_OBJECT(connection_.get()), on_release, &released);
    connection_.reset();
    daemon_.reset();
    while (!released) g_main_context_iteration(nullptr, TRUE);
}

std::string ContextTest::PrintedOnChange(const std::string& path, const std::string& interface,
                                         const std::string& name, const std::string& value) {
    return Printed([&] {
        daemon().Notify(path, interface, name, Value(value));
        DispatchSignals();
    });
}

// A message printed too early blocks, like the next message, until the output is drained.
std::string ContextTest::PrintedAfter(const std::string& first, const std::function<void()>& make,
                                      const std::function<void()>& announce) {
    const StalledOutput output(first);
    auto making = std::async(std::launch::async, make);
    output.AwaitFirstMessage();
    announce();
    auto dispatching = std::async(std::launch::async, DispatchSignals);
    dispatching.wait_for(Patience());
    output.Drain();
    making.get();
    dispatching.get();
    return output.Drain();
}

}  // namespace morvane_test
