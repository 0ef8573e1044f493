// Runs many sessions and notifications in one process of the tool, whose memory, descriptors and
// match rules must not grow.

#include "support/conversation.h"
#include "support/process_files.h"
#include "support/programs.h"
#include "support/text_form.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <string>

namespace morvane_test {
namespace {

struct Settings {
    gint64 sessions = 10;
    gint64 notifications = 10000;
    gint64 memory_kib = 256;  // permitted growth; negative: unlimited
};
Settings settings;

constexpr char kTemporaryDevice[] = "/com/veltrisonix/hci0/dev_temporary_";
constexpr std::size_t kTemporaryDevices = 5;
constexpr std::size_t kWarmUp = 5;  // sessions that fill caches before the first measurement
constexpr std::size_t kBatch = 20;  // notifications per batch
constexpr std::size_t kShownBytes = 4000;

enum class Object { kPhone, kSession, kTransfer };

struct Announcement {
    Object object;
    const char* interface;
    const char* property;
    GVariant* (*value)(std::size_t number);
};

GVariant* Text(std::size_t number) {
    return g_variant_new_take_string(g_strdup_printf("text %zu", number));
}

constexpr Announcement kAnnouncements[] = {
    {Object::kSession, simulator::kPhonebookInterface, "Folder", Text},
    {Object::kSession, simulator::kPhonebookInterface, "NewMissedCalls",
     [](std::size_t number) { return g_variant_new_byte(static_cast<guchar>(number % 256)); }},
    {Object::kSession, simulator::kSessionInterface, "Source", Text},
    {Object::kTransfer, simulator::kTransferInterface, "Status", Text},
    {Object::kTransfer, simulator::kTransferInterface, "Transferred",
     [](std::size_t number) { return g_variant_new_uint64(number); }},
    {Object::kPhone, simulator::kDeviceInterface, "Alias", Text},
};

/// Resources of a process.
struct Footprint {
    std::size_t resident_kib;  ///< including shared pages
    std::size_t descriptors;
    std::size_t match_rules;  ///< on the bus

    std::string Describe() const {
        return std::to_string(resident_kib) + " KiB resident, " + std::to_string(descriptors) +
               " descriptors, " + std::to_string(match_rules) + " match rules";
    }
};

// Number of match rules of a connection.
std::size_t CountMatchRules(GDBusConnection* bus, const std::string& unique_name) {
    const morvane::VariantPtr reply =
        CallOnBus(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                  "org.freedesktop.DBus.Debug.Stats", "GetAllMatchRules");
    const morvane::VariantPtr all(g_variant_get_child_value(reply.get(), 0));
    const morvane::VariantPtr rules(
        g_variant_lookup_value(all.get(), unique_name.c_str(), G_VARIANT_TYPE_STRING_ARRAY));
    return rules ? g_variant_n_children(rules.get()) : 0;
}

/// Lines that leave a session from its transfer menu.
struct SessionEnd {
    const char* lines;
    bool removes_client;
};

constexpr SessionEnd kSessionEnds[] = {
    {"d\nx\nx\n", false}, {"c\nh\nx\n", false}, {"s\np\nr\nx\nx\n", false}, {"h\n", true}};

class Soak : public ConversationTest {
  protected:
    void SetUp() override {
        Start(Wired(Wiring::kPipes));
        daemon().SetPullContent(std::string(2000, 'x'));
    }

    void TearDown() override {
        console().Finish();
        if (!HasFailure()) return;
        const std::string output = console().Output();
        std::cout << Escaped(output.substr(output.size() - std::min(output.size(), kShownBytes)))
                  << "\n";
    }

    void RunSession(std::size_t number, std::size_t notifications) {
        console().TypeBytes("c\n0\ns\n0\n0\na\nd\n");
        console().Await(Prompt(kTransferMenu));
        ToggleTemporaryDevice(number % kTemporaryDevices);
        Announce(notifications);
        daemon().CompleteTransfer(Transfer());
        AwaitIdle();
        End(kSessionEnds[number % std::size(kSessionEnds)]);
        daemon().ForgetCalls();
    }

    /// Must be called at the main menu, with the phone as the only device.
    Footprint Measure() {
        for (std::size_t device = 0; device < kTemporaryDevices; ++device)
            if (is_added_.at(device)) ToggleTemporaryDevice(device);
        AwaitIdle();
        // When the daemon has received a call, the bus has processed the tool's earlier messages.
        console().TypeBytes("u\nsomebody\n");
        console().Await(Prompt());
        return {
            ReadProcessNumber(console().ProcessId(), "status", "VmRSS:"),
            CountDescriptors(console().ProcessId()),
            CountMatchRules(ConnectToBus(bus().Address()).get(), daemon().Calls().back().sender)};
    }

  private:
    std::string PathOf(Object object) const {
        if (object == Object::kPhone) return kPhonePath;
        return object == Object::kSession ? Session() : Transfer();
    }

    // In batches, so that the length of the tool's queue, and its memory, do not depend on its
    // speed.
    void Announce(std::size_t notifications) {
        for (std::size_t sent = 0; sent < notifications; sent += kBatch) {
            const Announcement& announcement =
                kAnnouncements[sent / kBatch % std::size(kAnnouncements)];
            daemon().Flood(PathOf(announcement.object), announcement.interface,
                           announcement.property, std::min(kBatch, notifications - sent),
                           announcement.value);
            const std::string last = "last of batch at " + std::to_string(sent);
            daemon().Notify(Session(), simulator::kSessionInterface, "Source",
                            g_variant_new_string(last.c_str()));
            console().Await(last);
        }
    }

    void ToggleTemporaryDevice(std::size_t device) {
        const std::string path = kTemporaryDevice + std::to_string(device);
        is_added_.at(device) ? daemon().RemoveDevice(path)
                             : daemon().AddDevice(path, "00:00:00:00:00:01", "Temporary");
        is_added_.at(device) = !is_added_.at(device);
    }

    /// Waits until the tool has processed everything that was sent.
    void AwaitIdle() {
        constexpr char kPath[] = "/com/veltrisonix/hci0/dev_probe";
        daemon().AddDevice(kPath, "00:00:00:00:00:00", "Probe");
        console().Await(std::string("Found Device ") + kPath + "\n");
        daemon().RemoveDevice(kPath);
        console().Await(std::string("Removed ") + kPath + "\n");
    }

    void End(const SessionEnd& end) {
        if (end.removes_client) {
            daemon().RemoveClient();
            console().Await(std::string("Removed ") + simulator::kClientPath);
        }
        console().TypeBytes(end.lines);
        console().Await(Prompt());
        daemon().AddClient();
        AwaitIdle();
    }

    std::array<bool, kTemporaryDevices> is_added_ = {};
};

TEST_F(Soak, ResourcesDoNotGrow) {
    const auto sessions = static_cast<std::size_t>(settings.sessions);
    const auto notifications = static_cast<std::size_t>(settings.notifications);
    const std::size_t tenth = std::max(sessions / 10, kWarmUp);
    Footprint first = {};
    Footprint last = {};
    for (std::size_t session = 0; session < sessions; ++session) {
        RunSession(session,
                   notifications * (session + 1) / sessions - notifications * session / sessions);
        if ((session + 1) % tenth != 0 && session + 1 != sessions) continue;
        last = Measure();
        if (session + 1 == tenth) first = last;
        std::cout << "after " << session + 1 << " sessions: " << last.Describe() << std::endl;
    }
    EXPECT_EQ(last.descriptors, first.descriptors);
    EXPECT_EQ(last.match_rules, first.match_rules);
    // The tool of another build may be instrumented.
    if (settings.memory_kib >= 0 && !IsOtherTool()) {
        EXPECT_LT(last.resident_kib,
                  first.resident_kib + static_cast<std::size_t>(settings.memory_kib));
    }
}

void ParseCommandLine(int argc, char** argv) {
    ParseOptions(argc, argv, "- soak the tool",
                 {{"sessions", 'n', 0, G_OPTION_ARG_INT64, &settings.sessions, "total number", "N"},
                  {"notifications", 'm', 0, G_OPTION_ARG_INT64, &settings.notifications,
                   "total number", "M"},
                  {"memory", 0, 0, G_OPTION_ARG_INT64, &settings.memory_kib,
                   "permitted growth after the first tenth, in KiB; negative: unlimited", "KIB"},
                  {}});
}

}  // namespace
}  // namespace morvane_test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    morvane_test::ParseCommandLine(argc, argv);
    return RUN_ALL_TESTS();
}
