#include "transfer/transfer_context.h"

#include "support/messages.h"
#include "support/process_files.h"
#include "support/temporary_directory.h"
#include "transfer/downloaded_file.h"
#include "unit/context_fixture.h"
#include "unit/simulated_bus.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace morvane_test {
namespace {

using morvane::TransferContext;
using simulator::kTransferInterface;

constexpr char kPath[] = "/com/veltrisonix/obex/client/session0/transfer0";

class TransferContextTest : public ContextTest {
  protected:
    /// Properties in the cache of proxies created from now on.
    void SetProperties(const std::string& properties) {
        daemon().Reply("GetAll", Value("(" + properties + ",)"));
    }

    std::string PrintedOnChange(const std::string& name, const std::string& value) {
        return ContextTest::PrintedOnChange(kPath, kTransferInterface, name, value);
    }

    std::unique_ptr<TransferContext> MakeTransfer(const std::string& properties) {
        std::unique_ptr<TransferContext> transfer;
        Printed([&] { transfer = std::make_unique<TransferContext>(kPath, Value(properties)); });
        return transfer;
    }
};

// fuzz/transfer_properties.cpp tests other dictionaries.
TEST_F(TransferContextTest, PrintsEntriesInOrderOfDictionary) {
    const Value properties(
        "{'Type': <'text/x-vcard'>, 'Transferred': <uint64 5000000000>, 'Size': <uint64 "
        "4294967295>, 'Session': <'s'>, 'Filename': <'/f'>, 'Name': <'n'>, 'Status': <'active'>}");
    EXPECT_EQ(Printed([&] { TransferContext(kPath, properties); }),
              Lines({"MIME type: text/x-vcard", "Bytes Transferred: 705032704", "Size: 4294967295",
                     "Session: s", "Filename: /f", "Object Name: n", "Status: active"}));
}

TEST_F(TransferContextTest, PrintsPropertiesFromDaemonWithoutDictionary) {
    SetProperties(
        "{'Type': <'text/x-vcard'>, 'Session': <objectpath '/s/1'>, 'Transferred': <uint64 "
        "4294967299>, 'Size': <uint64 3000000000>, 'Filename': <'/f'>, 'Name': <'n'>, 'Status': "
        "<'active'>}");
    std::unique_ptr<TransferContext> transfer;
    EXPECT_EQ(Printed([&] { transfer = std::make_unique<TransferContext>(kPath, nullptr); }),
              Lines({"Status: active", "Object Name: n", "Filename: /f", "Size: 3000000000",
                     "Bytes Transferred: 3", "Session: /s/1", "MIME type: text/x-vcard"}));
    EXPECT_EQ(transfer->GetSize(), 3000000000U);
}

TEST_F(TransferContextTest, PrintsAbsentPropertiesAsUnknown) {
    const std::string unknown =
        Lines({"Status: Unknown", "Object Name: Unknown", "Filename: Unknown", "Size: 0",
               "Bytes Transferred: 0", "Session: Unknown", "MIME type: Unknown"});
    EXPECT_EQ(Printed([] { TransferContext(kPath, nullptr); }), unknown);
    SetProperties(
        "{'Status': <uint32 1>, 'Name': <true>, 'Filename': <byte 1>, 'Size': <uint32 1>, "
        "'Transferred': <'1'>, 'Session': <'s'>, 'Type': <['a']>}");
    EXPECT_EQ(Printed([] { TransferContext(kPath, nullptr); }), unknown);
}

TEST_F(TransferContextTest, ReturnsLatestAnnouncedValues) {
    const auto transfer = MakeTransfer("{'Status': <'not cached'>}");
    EXPECT_EQ(transfer->GetPathName(), kPath);
    for (const std::string& text :
         {transfer->GetStatus(), transfer->GetName(), transfer->GetFileName()})
        EXPECT_EQ(text, "");
    for (const char* const name : {"Status", "Name", "Filename"})
        PrintedOnChange(name, "'" + std::string(name) + " text'");
    EXPECT_EQ(transfer->GetStatus(), "Status text");
    EXPECT_EQ(transfer->GetName(), "Name text");
    EXPECT_EQ(transfer->GetFileName(), "Filename text");
}

struct Change {
    const char* property;
    const char* value;
    const char* printed;
    const char* invalidated;
};

constexpr Change kChanges[] = {
    {"Status", "'active'", "active", "Unknown"},
    {"Session", "objectpath '/s/1'", "/s/1", "Unknown"},
    {"Name", "'pb.vcf'", "pb.vcf", "Unknown"},
    {"Type", "'text/x-vcard'", "text/x-vcard", "Unknown"},
    {"Size", "uint64 1000", "1000", "0"},
    {"Filename", "'/tmp/100%s'", "/tmp/100%s", "Unknown"},
};

TEST_F(TransferContextTest, PrintsEveryNotification) {
    const auto transfer = MakeTransfer("@a{sv} {}");
    for (const auto& [property, value, printed, invalidated] : kChanges) {
        const std::string prefix = std::string(property) + " Attribute Received: ";
        const std::string line = Normal(prefix + printed + "\n");
        EXPECT_EQ(PrintedOnChange(property, value), line);
        EXPECT_EQ(PrintedOnChange(property, value), line) << "unchanged";
        EXPECT_EQ(Printed([&, name = property] {
                      daemon().Invalidate(kPath, kTransferInterface, name);
                      DispatchSignals();
                  }),
                  Normal(prefix + invalidated + "\n"));
    }
}

TEST_F(TransferContextTest, PrintsSizesAsSignedNumbersOf32Bits) {
    const auto transfer = MakeTransfer("@a{sv} {}");
    EXPECT_EQ(PrintedOnChange("Size", "uint64 4294967295"),
              Normal("Size Attribute Received: -1\n"));
    EXPECT_EQ(transfer->GetSize(), 4294967295U);
    EXPECT_EQ(PrintedOnChange("Size", "uint64 4294967303"), Normal("Size Attribute Received: 7\n"));
    EXPECT_EQ(transfer->GetSize(), 4294967303U);
}

TEST_F(TransferContextTest, KeepsPreviousValueOnWrongType) {
    const auto transfer = MakeTransfer("@a{sv} {}");
    PrintedOnChange("Status", "'active'");
    EXPECT_EQ(PrintedOnChange("Status", "uint32 5"), Normal("Status Attribute Received: active\n"));
    PrintedOnChange("Size", "uint64 1000");
    EXPECT_EQ(PrintedOnChange("Size", "uint32 5"), Normal("Size Attribute Received: 1000\n"));
    EXPECT_EQ(PrintedOnChange("Transferred", "'all'"), "");
}

struct Progress {
    const char* name;
    guint64 size;
    std::vector<guint64> transferred;
    std::vector<std::string> percentages;
};

const Progress kProgresses[] = {
    {"unknown size", 0, {0, 1, 1000}, {}},
    {"rounded down", 1000, {5, 9, 10, 15, 19, 20, 999, 1000}, {"1", "2", "99", "100"}},
    {"decreasing", 1000, {500, 499, 10, 0, 500, 509, 510}, {"50", "51"}},
    {"beyond the size", 10, {10, 20, 15}, {"100", "200"}},
    {"a size beyond 32 bits", 10000000000, {99999999, 100000000, 5000000000}, {"1", "50"}},
    // The product overflows 64 bits, the quotient 32 bits.
    {"numbers that overflow", 1, {184467440737095517, 42949673, 21474837, 5}, {"84", "500"}},
};

std::string Percent(const std::string& number) {
    return Normal("Transferred Percent: " + number + "%\n");
}

TEST_F(TransferContextTest, PrintsEachHigherPercentageOnce) {
    for (const auto& [name, size, transferred, percentages] : kProgresses) {
        const auto transfer = MakeTransfer("{'Size': <uint64 " + std::to_string(size) + ">}");
        std::string printed;
        for (const guint64 bytes : transferred)
            printed += PrintedOnChange("Transferred", "uint64 " + std::to_string(bytes));
        std::string expected;
        for (const std::string& percent : percentages) expected += Percent(percent);
        EXPECT_EQ(printed, expected) << name;
    }
}

TEST_F(TransferContextTest, ComputesPercentageFromLatestSize) {
    SetProperties("{'Size': <uint64 1000>}");
    const auto transfer = MakeTransfer("{'Size': <uint64 2000>}");
    EXPECT_EQ(PrintedOnChange("Transferred", "uint64 1000"), Percent("50"));
    EXPECT_EQ(transfer->GetTransferredPercent(), 50);
    PrintedOnChange("Size", "uint64 1250");
    EXPECT_EQ(PrintedOnChange("Transferred", "uint64 1000"), Percent("80"));
    PrintedOnChange("Size", "uint64 1250");
    EXPECT_EQ(PrintedOnChange("Transferred", "uint64 900"), "") << "lower";
    EXPECT_EQ(PrintedOnChange("Transferred", "uint64 1015"), Percent("81"));
    PrintedOnChange("Size", "uint64 0");
    EXPECT_EQ(PrintedOnChange("Transferred", "uint64 1250"), "");
}

TEST_F(TransferContextTest, HandlesPropertiesOfOneSignalInOrder) {
    const auto transfer = MakeTransfer("@a{sv} {}");
    EXPECT_EQ(Printed([&] {
                  daemon().NotifyAll(kPath, kTransferInterface,
                                     Value("{'Transferred': <uint64 500>, 'Size': <uint64 1000>}"));
                  DispatchSignals();
              }),
              Normal("Size Attribute Received: 1000\n"));
    EXPECT_EQ(PrintedOnChange("Transferred", "uint64 500"), Percent("50"));
}

TEST_F(TransferContextTest, ComputesPercentageFromSetSizeAndPercent) {
    const auto transfer = MakeTransfer("@a{sv} {}");
    EXPECT_EQ(transfer->GetSize(), 0U);
    EXPECT_EQ(transfer->GetTransferredPercent(), 0);
    transfer->SetSize(G_GUINT64_CONSTANT(200000000000));
    transfer->SetTransferredPercent(30);
    EXPECT_EQ(transfer->GetSize(), 200000000000U);
    EXPECT_EQ(transfer->GetTransferredPercent(), 30);
    EXPECT_EQ(PrintedOnChange("Transferred", "uint64 60000000000"), "");
    EXPECT_EQ(PrintedOnChange("Transferred", "uint64 62000000000"), Percent("31"));
    EXPECT_EQ(transfer->GetTransferredPercent(), 31);
}

TEST_F(TransferContextTest, CallsReturnSuccess) {
    const auto transfer = MakeTransfer("@a{sv} {}");
    const std::pair<const char*, bool (TransferContext::*)()> calls[] = {
        {"Cancel", &TransferContext::Cancel},
        {"Suspend", &TransferContext::Suspend},
        {"Resume", &TransferContext::Resume}};
    for (const auto& [method, call] : calls) {
        bool accepted = false;
        const auto make_call = [&, member = call] { accepted = (transfer.get()->*member)(); };
        daemon().Reply(method, Value("()"));
        EXPECT_EQ(Printed(make_call), "");
        EXPECT_TRUE(accepted) << method;
        daemon().Refuse(method, "com.veltrisonix.Error.Failed", "not now");
        EXPECT_EQ(Printed(make_call),
                  Red("Remote Call failed GDBus.Error:com.veltrisonix.Error.Failed: not now\n"));
        EXPECT_FALSE(accepted) << method;
    }
}

TEST_F(TransferContextTest, PrintsPropertiesBeforeChanges) {
    const Value properties("{'Status': <'queued'>, 'Size': <uint64 9>}");
    std::unique_ptr<TransferContext> transfer;
    const std::string rest = PrintedAfter(
        Normal("Status: queued\n"),
        [&] { transfer = std::make_unique<TransferContext>(kPath, properties); },
        [&] { daemon().Notify(kPath, kTransferInterface, "Name", Value("'early'")); });
    EXPECT_EQ(rest, Normal("Size: 9\n"));
    EXPECT_EQ(PrintedOnChange("Name", "'late'"), Normal("Name Attribute Received: late\n"));
}

TEST(DisplayFileTest, LeavesNoDescriptorOpen) {
    const TemporaryDirectory directory;
    std::ofstream(directory.File("file")) << "vcard";
    const std::size_t before = CountDescriptors(getpid());
    for (const std::string& name :
         {directory.File("file"), directory.Path(), directory.File("missing")}) {
        Printed([&] { morvane::DisplayFile(name.c_str()); });
        EXPECT_EQ(CountDescriptors(getpid()), before) << name;
    }
}

}  // namespace
}  // namespace morvane_test
