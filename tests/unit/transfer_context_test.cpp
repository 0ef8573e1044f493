#include "transfer/transfer_context.h"

#include "support/messages.h"
#include "support/process_files.h"
#include "support/temporary_directory.h"
#include "transfer/downloaded_file.h"
#include "unit/context_fixture.h"

#include <unistd.h>

#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// What tests/conversation cannot see of a transfer: races, and values that never reach the tool.

namespace morvane_test {
namespace {

using morvane::TransferContext;
using simulator::kTransferInterface;

constexpr char kTransferPath[] = "/com/veltrisonix/obex/client/session0/transfer0";

class TransferContextTest : public ContextTest {
  protected:
    /// The daemon's properties for the proxies that are made next.
    void SetProperties(const std::string& properties) {
        daemon().Reply("GetAll", Value("(" + properties + ",)"));
    }

    std::string Announced(const std::string& name, const std::string& value) {
        return ContextTest::Announced(kTransferPath, kTransferInterface, name, value);
    }

    std::unique_ptr<TransferContext> Make(GVariant* properties) {
        return std::make_unique<TransferContext>(kTransferPath, properties);
    }

    std::unique_ptr<TransferContext> Quietly(const std::string& properties) {
        std::unique_ptr<TransferContext> transfer;
        Printed([&] { transfer = Make(Value(properties)); });
        return transfer;
    }
};

TEST_F(TransferContextTest, IgnoresEntriesWithSimilarNames) {
    const Value properties(
        "{'status': <'a'>, 'Time': <uint64 5>, 'Statuses': <'b'>, 'Stat': <'c'>, '': <'d'>}");
    EXPECT_EQ(Printed([&] { Make(properties); }), "");
}

TEST_F(TransferContextTest, PrintsTheDaemonsPropertiesWithoutADictionary) {
    SetProperties(
        "{'Type': <'text/x-vcard'>, 'Session': <objectpath '/s/1'>, 'Transferred': <uint64 "
        "4294967299>, 'Size': <uint64 7294967296>, 'Filename': <'/f'>, 'Name': <'n'>, 'Status': "
        "<'active'>}");
    std::unique_ptr<TransferContext> transfer;
    EXPECT_EQ(Printed([&] { transfer = Make(nullptr); }),
              Lines({"Status: active", "Object Name: n", "Filename: /f", "Size: 3000000000",
                     "Bytes Transferred: 3", "Session: /s/1", "MIME type: text/x-vcard"}));
    EXPECT_EQ(transfer->GetSize(), 7294967296U);
}

TEST_F(TransferContextTest, PrintsAbsentPropertiesAsUnknown) {
    const std::string unknown =
        Lines({"Status: Unknown", "Object Name: Unknown", "Filename: Unknown", "Size: 0",
               "Bytes Transferred: 0", "Session: Unknown", "MIME type: Unknown"});
    EXPECT_EQ(Printed([&] { Make(nullptr); }), unknown);
    SetProperties(
        "{'Status': <uint32 1>, 'Name': <true>, 'Filename': <byte 1>, 'Size': <uint32 1>, "
        "'Transferred': <'1'>, 'Session': <'s'>, 'Type': <['a']>}");
    EXPECT_EQ(Printed([&] { Make(nullptr); }), unknown);
}

TEST_F(TransferContextTest, ReturnsWhatTheDaemonAnnouncedLast) {
    const auto transfer = Quietly("{'Status': <'never cached'>}");
    EXPECT_EQ(transfer->GetPathName(), kTransferPath);
    EXPECT_EQ(transfer->GetStatus() + transfer->GetName() + transfer->GetFileName(), "");
    for (const char* const name : {"Status", "Name", "Filename"})
        Announced(name, "'" + std::string(name) + " text'");
    EXPECT_EQ(transfer->GetStatus(), "Status text");
    EXPECT_EQ(transfer->GetName(), "Name text");
    EXPECT_EQ(transfer->GetFileName(), "Filename text");
}

std::string Percent(int percent) {
    return Normal("Transferred Percent: " + std::to_string(percent) + "%\n");
}

TEST_F(TransferContextTest, CountsProgressIn64Bits) {
    const auto transfer = Quietly("{'Size': <uint64 10000000000>}");
    EXPECT_EQ(Announced("Transferred", "uint64 99999999"), "");
    EXPECT_EQ(Announced("Transferred", "uint64 100000000"), Percent(1));
    EXPECT_EQ(Announced("Size", "uint64 4294967303"), Normal("Size Attribute Received: 7\n"));
    EXPECT_EQ(transfer->GetSize(), 4294967303U);
}

TEST_F(TransferContextTest, WrapsTheProductRoundAt64BitsAndTheQuotientAt32) {
    const auto transfer = Quietly("{'Size': <uint64 1>}");
    std::string printed;
    for (const char* const bytes : {"184467440737095517", "42949673", "21474837", "5"})
        printed += Announced("Transferred", "uint64 " + std::string(bytes));
    EXPECT_EQ(printed, Percent(84) + Percent(500));
}

TEST_F(TransferContextTest, StartsFromTheSizeAndPercentSet) {
    SetProperties("{'Size': <uint64 1000>}");
    const auto transfer = Quietly("{'Size': <uint64 2000>}");
    EXPECT_EQ(transfer->GetSize(), 2000U) << "the dictionary's";
    EXPECT_EQ(transfer->GetTransferredPercent(), 0);
    transfer->SetSize(G_GUINT64_CONSTANT(200000000000));
    transfer->SetTransferredPercent(30);
    EXPECT_EQ(transfer->GetSize(), 200000000000U);
    EXPECT_EQ(transfer->GetTransferredPercent(), 30);
    EXPECT_EQ(Announced("Transferred", "uint64 60000000000"), "");
    EXPECT_EQ(Announced("Transferred", "uint64 62000000000"), Percent(31));
    EXPECT_EQ(transfer->GetTransferredPercent(), 31);
    Announced("Size", "uint64 200000000000");
    EXPECT_EQ(Announced("Transferred", "uint64 60000000000"), "") << "kept with the new size";
}

TEST_F(TransferContextTest, ReturnsWhetherTheDaemonAccepted) {
    const auto transfer = Quietly("@a{sv} {}");
    const std::pair<const char*, bool (TransferContext::*)()> calls[] = {
        {"Cancel", &TransferContext::Cancel},
        {"Suspend", &TransferContext::Suspend},
        {"Resume", &TransferContext::Resume}};
    for (const auto& [method, call] : calls) {
        daemon().Reply(method, Value("()"));
        EXPECT_TRUE((transfer.get()->*call)()) << method;
        daemon().Refuse(method, "com.veltrisonix.Error.Failed", "not now");
        EXPECT_FALSE((transfer.get()->*call)()) << method;
    }
}

TEST_F(TransferContextTest, ReportsNoChangeBeforeTheProperties) {
    const Value properties("{'Status': <'queued'>, 'Size': <uint64 9>}");
    std::unique_ptr<TransferContext> transfer;
    const std::string rest = PrintedAfter(
        Normal("Status: queued\n"), [&] { transfer = Make(properties); },
        [&] { daemon().Notify(kTransferPath, kTransferInterface, "Name", Value("'early'")); });
    EXPECT_EQ(rest, Normal("Size: 9\n"));
    EXPECT_EQ(Announced("Name", "'late'"), Normal("Name Attribute Received: late\n"));
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
