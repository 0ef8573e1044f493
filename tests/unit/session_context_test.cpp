#include "phonebook/phonebook_context.h"

#include "console/errors.h"
#include "support/messages.h"
#include "support/temporary_directory.h"
#include "unit/context_fixture.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>

namespace morvane_test {
namespace {

using morvane::InvalidValueException;
using morvane::PhonebookContext;
using morvane::ProxyException;
using simulator::kPhonebookInterface;
using simulator::kSessionInterface;
using simulator::kTransferInterface;

// The daemon has no objects at these paths.
constexpr char kSessionPath[] = "/com/veltrisonix/obex/client/session0";
constexpr char kPath[] = "/com/veltrisonix/obex/client/session0/transfer0";
constexpr char kOtherPath[] = "/com/veltrisonix/obex/client/session0/transfer1";

class SessionContextTest : public ContextTest {
  protected:
    SessionContextTest() {
        Printed([&] { phonebook_.emplace(kSessionPath); });
    }

    void TearDown() override {
        phonebook_.reset();
        ContextTest::TearDown();
    }

    PhonebookContext& phonebook() { return *phonebook_; }
    std::string PrintedOnDestruction() {
        return Printed([&] { phonebook_.reset(); });
    }

    std::string PrintedOnChange(const std::string& name, const std::string& value) {
        return ContextTest::PrintedOnChange(kSessionPath, kSessionInterface, name, value);
    }

    /// What is printed when a property of this name, which the interface does not have, changes.
    std::string PrintedOnUnknownProperty(const char* name) {
        GObject* session = nullptr;
        const auto find = [](GSignalInvocationHint* /*hint*/, guint /*count*/, const GValue* values,
                             gpointer found) -> gboolean {
            *static_cast<GObject**>(found) = G_OBJECT(g_value_get_object(values));
            return FALSE;  // removes this hook
        };
        g_signal_add_emission_hook(g_signal_lookup("g-properties-changed", G_TYPE_DBUS_PROXY), 0,
                                   find, &session, nullptr);
        PrintedOnChange("Source", "'s'");
        GParamSpec* const any = g_object_class_find_property(G_OBJECT_GET_CLASS(session), "source");
        return Printed([&] {
            g_signal_emit(session, g_signal_lookup("notify", G_TYPE_OBJECT),
                          g_quark_from_string(name), any);
        });
    }

  private:
    std::optional<PhonebookContext> phonebook_;
};

TEST_F(SessionContextTest, ReturnsPathAndConnectionState) {
    EXPECT_EQ(phonebook().GetPathName(), kSessionPath);
    EXPECT_FALSE(phonebook().IsValid());
    for (const bool connected : {true, false, true}) {
        EXPECT_EQ(PrintedOnChange("ConnectionState", connected ? "byte 5" : "byte 6"), "");
        EXPECT_EQ(phonebook().IsValid(), connected);
    }
}

TEST_F(SessionContextTest, PrintsPropertiesBeforeChanges) {
    std::optional<PhonebookContext> other;
    const std::string rest = PrintedAfter(
        Normal("Session Disconnected\n"), [&] { other.emplace("/other"); },
        [&] {
            daemon().Notify("/other", kPhonebookInterface, "Folder", Value("'early'"));
            daemon().Notify("/other", kSessionInterface, "Channel", Value("uint16 7"));
        });
    EXPECT_EQ(rest,
              Lines({"Source Address: Unknown", "Destination Address: Unknown",
                     "Target UUID: Unknown", "Channel: 7", "Fixed Image Size: Not Supported"}));
    EXPECT_EQ(ContextTest::PrintedOnChange("/other", kPhonebookInterface, "Folder", "'late'"),
              Normal("Folder: late\n"));
}

// The interface has no property "connected" yet; if one is added, its changes are reported.
TEST_F(SessionContextTest, ReportsChangeOfUndeclaredPropertyConnected) {
    EXPECT_EQ(PrintedOnUnknownProperty("connected"), Normal("Session: 0 Disconnected\n"));
    PrintedOnChange("Channel", "uint16 19");
    PrintedOnChange("ConnectionState", "byte 5");
    EXPECT_EQ(PrintedOnUnknownProperty("connected"), Normal("Session: 19 Connected\n"));
    EXPECT_EQ(PrintedOnUnknownProperty("unheard-of"), "");
}

/// The transfer of a context, which has at most one.
class CurrentTransferTest : public SessionContextTest {
  protected:
    /// Creates the file of the transfer and announces its name.
    std::string MakeFile(const std::string& path, const std::string& name) {
        const std::string file = directory_.File(name);
        std::ofstream(file) << "vcard";
        ContextTest::PrintedOnChange(path, kTransferInterface, "Filename", "'" + file + "'");
        return file;
    }

    std::string Allocate(const std::string& path, const std::string& properties = "@a{sv} {}") {
        return Printed([&] { phonebook().AllocTransfer(path, Value(properties)); });
    }

  private:
    TemporaryDirectory directory_;
};

TEST_F(CurrentTransferTest, IsReplacedWithoutRemovingItsFile) {
    EXPECT_EQ(Allocate(kPath, "{'Status': <'queued'>}"), Normal("Status: queued\n"));
    const std::string first = MakeFile(kPath, "first");
    EXPECT_EQ(Allocate(kOtherPath, "{'Status': <'active'>}"), Normal("Status: active\n"));
    const std::string second = MakeFile(kOtherPath, "second");
    EXPECT_EQ(ContextTest::PrintedOnChange(kPath, kTransferInterface, "Status", "'complete'"), "");
    EXPECT_EQ(ContextTest::PrintedOnChange(kOtherPath, kTransferInterface, "Status", "'complete'"),
              Normal("Status Attribute Received: complete\n"));
    EXPECT_EQ(PrintedOnDestruction(), Normal("Removing: " + second + "\n"));
    EXPECT_TRUE(std::filesystem::exists(first));
    EXPECT_FALSE(std::filesystem::exists(second));
}

TEST_F(CurrentTransferTest, IsKeptIfTheNextHasNoPathOrProxy) {
    Allocate(kPath);
    const std::string file = MakeFile(kPath, "file");
    const Value properties("{'Status': <'queued'>}");
    const auto failure_at = [&](const char* path) {
        std::string failure;
        EXPECT_EQ(Printed([&] {
                      try {
                          phonebook().AllocTransfer(path, properties);
                      } catch (const InvalidValueException& error) {
                          failure = std::string("Value: ") + error.what();
                      } catch (const ProxyException& error) {
                          failure = std::string("Proxy: ") + error.what();
                      }
                  }),
                  "");
        return failure;
    };
    EXPECT_EQ(failure_at(""), "Value: Object Path cannot be empty");
    bus().Kill();
    EXPECT_EQ(failure_at(kOtherPath).find("Proxy: Failed to allocate Transfer proxy. Message: "),
              0U);
    EXPECT_EQ(PrintedOnDestruction(), Normal("Removing: " + file + "\n"));
}

/// Runs the main loop and its handlers on a thread of its own, as in the tool.
class LoopThread {
  public:
    ~LoopThread() {
        const auto quit = [](gpointer loop) -> gboolean {
            g_main_loop_quit(static_cast<GMainLoop*>(loop));
            return G_SOURCE_REMOVE;
        };
        g_idle_add(quit, loop_.get());
        thread_.join();
    }

  private:
    morvane::GlibPtr<GMainLoop> loop_{g_main_loop_new(nullptr, FALSE)};
    std::thread thread_{[this] { g_main_loop_run(loop_.get()); }};
};

TEST_F(CurrentTransferTest, CanBeReleasedDuringItsNotifications) {
    const CapturedOutput output;
    {
        const LoopThread loop;
        for (int round = 0; round < 100; ++round) {
            phonebook().AllocTransfer(kPath, nullptr);
            daemon().Flood(kPath, kTransferInterface, "Size", 20,
                           [](std::size_t index) { return g_variant_new_uint64(index); });
            if (round % 2 == 1) phonebook().DropTransfer();
        }
    }
    EXPECT_NE(output.Text().find(Normal("Size Attribute Received: 7\n")), std::string::npos);
}

}  // namespace
}  // namespace morvane_test
