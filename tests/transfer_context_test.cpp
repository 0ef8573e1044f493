#include "transfer/transfer_context.h"

#include "console/errors.h"
#include "support/bench.h"
#include "support/context_test.h"
#include "support/messages.h"
#include "support/process_files.h"
#include "support/temporary_directory.h"
#include "transfer/downloaded_file.h"

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using morvane::ProxyException;
using morvane::TransferContext;
using simulator::kTransferInterface;

constexpr char kPath[] = "/com/veltrisonix/obex/client/session0/transfer0";

class TransferContextTest : public ContextTest {
  protected:
    /// What the proxies made next have in their cache.
    void SetProperties(const std::string& properties) {
        daemon().Reply("GetAll", Value("(" + properties + ",)"));
    }

    std::string Announced(const std::string& name, const std::string& value) {
        return ContextTest::Announced(kPath, kTransferInterface, name, value);
    }

    std::unique_ptr<TransferContext> Quietly(const std::string& properties) {
        std::unique_ptr<TransferContext> transfer;
        Printed([&] { transfer = std::make_unique<TransferContext>(kPath, Value(properties)); });
        return transfer;
    }
};

struct Dictionary {
    const char* name;
    std::string properties;
    std::string lines;
};

void PrintTo(const Dictionary& dictionary, std::ostream* stream) {
    *stream << dictionary.properties;
}

class InitialPropertiesTest : public TransferContextTest,
                              public testing::WithParamInterface<Dictionary> {};

TEST_P(InitialPropertiesTest, PrintsTheDictionarysEntries) {
    const Value properties(GetParam().properties);
    EXPECT_EQ(Printed([&] { TransferContext(kPath, properties); }), GetParam().lines);
}

const Dictionary kDictionaries[] = {
    {"InTheOrderInWhichTheyCome",
     "{'Type': <'text/x-vcard'>, 'Transferred': <uint64 7>, 'Size': <uint64 9>, 'Session': "
     "<'s'>, 'Filename': <'/f'>, 'Name': <'n'>, 'Status': <'active'>}",
     Normal("MIME type: text/x-vcard\n") + Normal("Bytes Transferred: 7\n") + Normal("Size: 9\n") +
         Normal("Session: s\n") + Normal("Filename: /f\n") + Normal("Object Name: n\n") +
         Normal("Status: active\n")},
    {"WithSessionAsAnObjectPath", "{'Session': <objectpath '/s/1'>}", Normal("Session: /s/1\n")},
    {"ButOnlyTheKnownOnes",
     "{'status': <'a'>, 'Time': <uint64 5>, 'Statuses': <'b'>, 'Stat': <'c'>, '': <'d'>}", ""},
    {"EvenIfThereIsNone", "@a{sv} {}", ""},
    {"EvenIfTheyAreEmptyTexts", "{'Status': <''>, 'Filename': <''>}",
     Normal("Status: \n") + Normal("Filename: \n")},
    {"WithoutReadingThemAsFormats", "{'Name': <'100%s%n'>}", Normal("Object Name: 100%s%n\n")},
    {"WithTheLow32BitsOfSizes", "{'Size': <uint64 4294967295>, 'Transferred': <uint64 5000000000>}",
     Normal("Size: 4294967295\n") + Normal("Bytes Transferred: 705032704\n")},
    {"WithTheLow32BitsOfEverySize",
     "{'Size': <uint64 5000000000>, 'Transferred': <uint64 4294967296>}",
     Normal("Size: 705032704\n") + Normal("Bytes Transferred: 0\n")},
    {"AlsoThoseOfAWrongType",
     "{'Status': <uint32 1>, 'Name': <true>, 'Filename': <['a']>, 'Size': <'large'>, "
     "'Transferred': <int32 -1>, 'Session': <(1, 2)>, 'Type': <byte 0x41>}",
     Normal("Status: Unknown\n") + Normal("Object Name: Unknown\n") +
         Normal("Filename: Unknown\n") + Normal("Size: 0\n") + Normal("Bytes Transferred: 0\n") +
         Normal("Session: Unknown\n") + Normal("MIME type: Unknown\n")},
};

INSTANTIATE_TEST_SUITE_P(Transfer, InitialPropertiesTest, testing::ValuesIn(kDictionaries),
                         [](const auto& test) { return test.param.name; });

TEST_F(TransferContextTest, PrintsTheDaemonsPropertiesWithoutADictionary) {
    SetProperties(
        "{'Type': <'text/x-vcard'>, 'Session': <objectpath '/s/1'>, 'Transferred': <uint64 "
        "4294967299>, 'Size': <uint64 3000000000>, 'Filename': <'/f'>, 'Name': <'n'>, 'Status': "
        "<'active'>}");
    std::unique_ptr<TransferContext> transfer;
    EXPECT_EQ(Printed([&] { transfer = std::make_unique<TransferContext>(kPath, nullptr); }),
              Normal("Status: active\n") + Normal("Object Name: n\n") + Normal("Filename: /f\n") +
                  Normal("Size: 3000000000\n") + Normal("Bytes Transferred: 3\n") +
                  Normal("Session: /s/1\n") + Normal("MIME type: text/x-vcard\n"));
    EXPECT_EQ(transfer->GetSize(), 3000000000U);
}

TEST_F(TransferContextTest, PrintsAbsentPropertiesAsUnknown) {
    const std::string unknown = Normal("Status: Unknown\n") + Normal("Object Name: Unknown\n") +
                                Normal("Filename: Unknown\n") + Normal("Size: 0\n") +
                                Normal("Bytes Transferred: 0\n") + Normal("Session: Unknown\n") +
                                Normal("MIME type: Unknown\n");
    EXPECT_EQ(Printed([] { TransferContext(kPath, nullptr); }), unknown);
    SetProperties(
        "{'Status': <uint32 1>, 'Name': <true>, 'Filename': <byte 1>, 'Size': <uint32 1>, "
        "'Transferred': <'1'>, 'Session': <'s'>, 'Type': <['a']>}");
    EXPECT_EQ(Printed([] { TransferContext(kPath, nullptr); }), unknown);
}

TEST_F(TransferContextTest, GivesWhatTheDaemonAnnouncedLast) {
    const auto transfer = Quietly("{'Status': <'never cached'>}");
    EXPECT_EQ(transfer->GetPathName(), kPath);
    for (const std::string& text :
         {transfer->GetStatus(), transfer->GetName(), transfer->GetFileName()})
        EXPECT_EQ(text, "");
    for (const char* const name : {"Status", "Name", "Filename"})
        Announced(name, "'" + std::string(name) + " text'");
    EXPECT_EQ(transfer->GetStatus(), "Status text");
    EXPECT_EQ(transfer->GetName(), "Name text");
    EXPECT_EQ(transfer->GetFileName(), "Filename text");
}

struct Change {
    const char* property;
    const char* value;
    const char* line;
    const char* invalidated;
};

void PrintTo(const Change& change, std::ostream* stream) {
    *stream << change.property;
}

class TransferNoticeTest : public TransferContextTest,
                           public testing::WithParamInterface<Change> {};

TEST_P(TransferNoticeTest, PrintsEveryAnnouncement) {
    const Change& change = GetParam();
    const auto transfer = Quietly("@a{sv} {}");
    EXPECT_EQ(Announced(change.property, change.value), Normal(change.line));
    EXPECT_EQ(Announced(change.property, change.value), Normal(change.line)) << "unchanged";
    EXPECT_EQ(Printed([&] {
                  daemon().Invalidate(kPath, kTransferInterface, change.property);
                  HearNotices();
              }),
              Normal(change.invalidated));
}

constexpr Change kChanges[] = {
    {"Status", "'active'", "Status Attribute Received: active\n",
     "Status Attribute Received: Unknown\n"},
    {"Session", "objectpath '/s/1'", "Session Attribute Received: /s/1\n",
     "Session Attribute Received: Unknown\n"},
    {"Name", "'pb.vcf'", "Name Attribute Received: pb.vcf\n", "Name Attribute Received: Unknown\n"},
    {"Type", "'text/x-vcard'", "Type Attribute Received: text/x-vcard\n",
     "Type Attribute Received: Unknown\n"},
    {"Size", "uint64 1000", "Size Attribute Received: 1000\n", "Size Attribute Received: 0\n"},
    {"Filename", "'/tmp/100%s'", "Filename Attribute Received: /tmp/100%s\n",
     "Filename Attribute Received: Unknown\n"},
};

INSTANTIATE_TEST_SUITE_P(Transfer, TransferNoticeTest, testing::ValuesIn(kChanges),
                         [](const auto& test) { return test.param.property; });

TEST_F(TransferContextTest, AnnouncedSizesAreSigned) {
    const auto transfer = Quietly("@a{sv} {}");
    EXPECT_EQ(Announced("Size", "uint64 4294967295"), Normal("Size Attribute Received: -1\n"));
    EXPECT_EQ(transfer->GetSize(), 4294967295U);
    EXPECT_EQ(Announced("Size", "uint64 4294967303"), Normal("Size Attribute Received: 7\n"));
    EXPECT_EQ(transfer->GetSize(), 4294967303U);
}

TEST_F(TransferContextTest, KeepsTheValueBeforeOneOfAWrongType) {
    const auto transfer = Quietly("@a{sv} {}");
    Announced("Status", "'active'");
    EXPECT_EQ(Announced("Status", "uint32 5"), Normal("Status Attribute Received: active\n"));
    Announced("Size", "uint64 1000");
    EXPECT_EQ(Announced("Size", "uint32 5"), Normal("Size Attribute Received: 1000\n"));
    EXPECT_EQ(Announced("Transferred", "'all'"), "");
}

struct Progress {
    const char* name;
    guint64 size;
    std::vector<guint64> transferred;
    std::vector<std::string> percentages;
};

void PrintTo(const Progress& progress, std::ostream* stream) {
    *stream << progress.name;
}

class TransferPercentTest : public TransferContextTest,
                            public testing::WithParamInterface<Progress> {};

TEST_P(TransferPercentTest, IsPrintedOnceAndOnlyUpwards) {
    const Progress& progress = GetParam();
    const auto transfer = Quietly("{'Size': <uint64 " + std::to_string(progress.size) + ">}");
    std::string printed;
    for (const guint64 transferred : progress.transferred)
        printed += Announced("Transferred", "uint64 " + std::to_string(transferred));
    std::string expected;
    for (const std::string& percent : progress.percentages)
        expected += "\x1b[0mTransferred Percent: " + percent + "%\n\x1b[0m";
    EXPECT_EQ(printed, expected);
}

const Progress kProgresses[] = {
    {"OfASizeUnknown", 0, {0, 1, 1000}, {}},
    {"RoundedDown", 1000, {5, 9, 10, 15, 19, 20, 999, 1000}, {"1", "2", "99", "100"}},
    {"GoingBack", 1000, {500, 499, 10, 0, 500, 509, 510}, {"50", "51"}},
    {"BeyondTheSize", 10, {10, 20, 15}, {"100", "200"}},
    {"OfSizesBeyond32Bits", 10000000000, {99999999, 100000000, 5000000000}, {"1", "50"}},
    // The product wraps round at 64 bits, the quotient at 32.
    {"OfNumbersThatOverflow", 1, {184467440737095517, 42949673, 21474837, 5}, {"84", "500"}},
};

INSTANTIATE_TEST_SUITE_P(Transfer, TransferPercentTest, testing::ValuesIn(kProgresses),
                         [](const auto& test) { return test.param.name; });

TEST_F(TransferContextTest, CountsProgressAgainstTheSizeThatItWasTold) {
    SetProperties("{'Size': <uint64 1000>}");
    const auto transfer = Quietly("{'Size': <uint64 2000>}");
    EXPECT_EQ(Announced("Transferred", "uint64 1000"), Normal("Transferred Percent: 50%\n"));
    EXPECT_EQ(transfer->GetTransferredPercent(), 50);
    Announced("Size", "uint64 1250");
    EXPECT_EQ(Announced("Transferred", "uint64 1000"), Normal("Transferred Percent: 80%\n"));
    Announced("Size", "uint64 0");
    EXPECT_EQ(Announced("Transferred", "uint64 1250"), "");
}

TEST_F(TransferContextTest, PrintsNoLowerPercentageAfterANewSize) {
    const auto transfer = Quietly("{'Size': <uint64 1000>}");
    EXPECT_EQ(Announced("Transferred", "uint64 800"), Normal("Transferred Percent: 80%\n"));
    Announced("Size", "uint64 1000");
    EXPECT_EQ(Announced("Transferred", "uint64 700"), "");
    EXPECT_EQ(Announced("Transferred", "uint64 810"), Normal("Transferred Percent: 81%\n"));
}

TEST_F(TransferContextTest, HearsOfASizeOnlyInItsTurn) {
    const auto transfer = Quietly("@a{sv} {}");
    EXPECT_EQ(Printed([&] {
                  daemon().NotifyAll(kPath, kTransferInterface,
                                     Value("{'Transferred': <uint64 500>, 'Size': <uint64 1000>}"));
                  HearNotices();
              }),
              Normal("Size Attribute Received: 1000\n"));
    EXPECT_EQ(Announced("Transferred", "uint64 500"), Normal("Transferred Percent: 50%\n"));
}

TEST_F(TransferContextTest, StartsFromTheSizeAndPercentSet) {
    const auto transfer = Quietly("@a{sv} {}");
    EXPECT_EQ(transfer->GetSize(), 0U);
    EXPECT_EQ(transfer->GetTransferredPercent(), 0);
    transfer->SetSize(G_GUINT64_CONSTANT(200000000000));
    transfer->SetTransferredPercent(30);
    EXPECT_EQ(transfer->GetSize(), 200000000000U);
    EXPECT_EQ(transfer->GetTransferredPercent(), 30);
    EXPECT_EQ(Announced("Transferred", "uint64 60000000000"), "");
    EXPECT_EQ(Announced("Transferred", "uint64 62000000000"), Normal("Transferred Percent: 31%\n"));
    EXPECT_EQ(transfer->GetTransferredPercent(), 31);
}

TEST_F(TransferContextTest, TellsWhetherTheDaemonAccepted) {
    const auto transfer = Quietly("@a{sv} {}");
    const std::array<std::pair<const char*, bool (TransferContext::*)()>, 3> calls = {
        {{"Cancel", &TransferContext::Cancel},
         {"Suspend", &TransferContext::Suspend},
         {"Resume", &TransferContext::Resume}}};
    for (const auto& [method, call] : calls) {
        bool accepted = false;
        daemon().Reply(method, Value("()"));
        EXPECT_EQ(Printed([&, member = call] { accepted = (transfer.get()->*member)(); }), "");
        EXPECT_TRUE(accepted) << method;
        daemon().Refuse(method, "com.veltrisonix.Error.Failed", "not now");
        EXPECT_EQ(Printed([&, member = call] { accepted = (transfer.get()->*member)(); }),
                  Red("Remote Call failed GDBus.Error:com.veltrisonix.Error.Failed: not now\n"));
        EXPECT_FALSE(accepted) << method;
    }
}

TEST_F(TransferContextTest, ReportsNoChangeBeforeTheProperties) {
    const Value properties("{'Status': <'queued'>, 'Size': <uint64 9>}");
    std::unique_ptr<TransferContext> transfer;
    const std::string rest = PrintedAfter(
        Normal("Status: queued\n"),
        [&] { transfer = std::make_unique<TransferContext>(kPath, properties); },
        [&] { daemon().Notify(kPath, kTransferInterface, "Name", Value("'early'")); });
    EXPECT_EQ(rest, Normal("Size: 9\n"));
    EXPECT_EQ(Announced("Name", "'late'"), Normal("Name Attribute Received: late\n"));
}

TEST_F(TransferContextTest, LeavesTheFileWhenItGoes) {
    const TemporaryDirectory directory;
    std::ofstream(directory.File("file")) << "vcard";
    auto transfer = Quietly("@a{sv} {}");
    Announced("Filename", "'" + directory.File("file") + "'");
    EXPECT_EQ(Printed([&] { transfer.reset(); }), "");
    EXPECT_TRUE(std::filesystem::exists(directory.File("file")));
    EXPECT_EQ(Announced("Status", "'active'"), "");
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

TEST(TransferContextWithoutBusTest, CannotBeMade) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    try {
        const TransferContext transfer(kPath, nullptr);
        FAIL();
    } catch (const ProxyException& error) {
        EXPECT_STREQ(error.what(),
                     "Failed to allocate Transfer proxy. Message: Could not connect: No such file "
                     "or directory");
    }
}

}  // namespace
}  // namespace morvane_test
