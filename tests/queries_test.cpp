#include "support/conversation_test.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

const std::string kMenuPrompt = Prompt("/Phonebook Menu");
const std::string kNoFilters = "(@a{sv} {},)";

// What the phone book can be asked without transferring it.
struct Query {
    std::string method;
    std::vector<std::string> lines;  // typed from the phone book menu's prompt on
    std::string arguments;
    std::string reply;
    std::string reply_type;
    std::string result;
};

const Query kQueries[] = {
    {"List",
     {"l", "d"},
     kNoFilters,
     "([('1.vcf', 'Ada')],)",
     "(a(ss))",
     Heading("vCard Listing") + Lines({" 1.vcf\tAda"})},
    {"Search",
     {"o", "1", "Ada", "d"},
     "('number', 'Ada', @a{sv} {})",
     "([('1.vcf', 'Ada')],)",
     "(a(ss))",
     Heading("vCard Listing") + Lines({" 1.vcf\tAda"})},
    {"GetSize", {"g"}, "()", "(uint16 42,)", "(q)", Lines({"Phonebook Size 42"})},
    {"GetSizePhonebook",
     {"m", "d"},
     kNoFilters,
     "(uint16 42,)",
     "(q)",
     Lines({"Phone Book Size 42"})},
    {"GetSizeListing",
     {"n", "d"},
     kNoFilters,
     "(uint16 42,)",
     "(q)",
     Lines({"vCard List Size 42"})},
    {"UpdateVersion", {"u"}, "()", "()", "()", Lines({"Counters updated"})},
    {"ListFilterFields",
     {"f"},
     "()",
     "(['TEL', 'N', 'TEL'],)",
     "(as)",
     Heading("Filter Fields") + Lines({" TEL", " N", " TEL"})},
};

class PhonebookQuery : public ConversationTest {
  protected:
    // Types the lines; the next output is the result.
    void Ask(const std::vector<std::string>& lines, Here here = Here::Now()) {
        for (const std::string& line : lines) Type(line, here);
        if (lines.size() > 1) Await(Prompt("/Filter Menu"), here);
    }

    void ExpectListing(const std::string& reply, const std::vector<std::string>& lines,
                       Here here = Here::Now()) {
        daemon().Reply("List", Value(reply));
        Ask({"l", "d"}, here);
        Expect(Heading("vCard Listing") + Lines(lines) + kMenuPrompt, here);
    }

    void ListFields(const std::string& reply, const std::vector<std::string>& lines,
                    Here here = Here::Now()) {
        daemon().Reply("ListFilterFields", Value(reply));
        Type("f", here);
        Expect(Heading("Filter Fields") + Lines(lines) + kMenuPrompt, here);
    }

    // A filter menu offers exactly these fields, and asked the daemon for none.
    void ExpectStoredFields(const std::vector<std::string>& fields, Here here = Here::Now()) {
        const std::size_t calls = CountCalls("ListFilterFields");
        Type("m", here);
        Await(Prompt("/Filter Menu"), here);
        EXPECT_EQ(CountCalls("ListFilterFields"), calls);
        Type("k", here);
        Expect(Heading("Select a Filter Field") + Choices(fields) +
                   ValuePrompt("/Select Filter Field"),
               here);
    }
};

class EveryQuery : public PhonebookQuery, public testing::WithParamInterface<Query> {
  protected:
    void ExpectFailure(const std::string& message, Here here = Here::Now()) {
        Ask(GetParam().lines, here);
        Expect(Red("Remote Call failed: " + message + "\n"), here);
    }
};

TEST_P(EveryQuery, AsksTheSessionAndPrintsItsAnswer) {
    OpenSelectedSession();
    daemon().Reply(GetParam().method, Value(GetParam().reply));
    Ask(GetParam().lines);
    Expect(GetParam().result + kMenuPrompt);
    ExpectCall(GetParam().method, GetParam().arguments);
    const simulator::Call call = daemon().Calls().back();
    EXPECT_EQ(call.method, GetParam().method);
    EXPECT_EQ(call.path, Session());
    EXPECT_EQ(call.interface, "com.veltrisonix.obex.PhonebookAccess1");
}

TEST_P(EveryQuery, ReportsARefusalAndChangesNothing) {
    OpenSelectedSession();
    daemon().Refuse(GetParam().method, "com.veltrisonix.Error.Failed", "100%s busy");
    ExpectFailure("GDBus.Error:com.veltrisonix.Error.Failed: 100%s busy");
    Expect(kMenuPrompt);
    daemon().Reply(GetParam().method, Value(GetParam().reply));
    Ask(GetParam().lines);
    Expect(GetParam().result + kMenuPrompt);
}

TEST_P(EveryQuery, ReportsAnAnswerOfAWrongType) {
    OpenSelectedSession();
    daemon().Reply(GetParam().method, Value("(true,)"));
    ExpectFailure("Method \u201c" + GetParam().method +
                  "\u201d returned type \u201c(b)\u201d, but expected \u201c" +
                  GetParam().reply_type + "\u201d");
    Expect(kMenuPrompt);
}

TEST_P(EveryQuery, ReportsADaemonThatDiesInTheCall) {
    OpenSelectedSession();
    daemon().Hang(GetParam().method);
    for (const std::string& line : GetParam().lines) Type(line);
    ExpectCall(GetParam().method, GetParam().arguments);
    daemon().Crash();
    Await(
        Red("Remote Call failed: GDBus.Error:org.freedesktop.DBus.Error.NoReply: "
            "Message recipient disconnected from message bus without replying\n"));
}

TEST_P(EveryQuery, HoldsBackRemovals) {
    const std::string device = "/com/veltrisonix/hci0/dev_2";
    OpenSelectedSession();
    AddDevice(device, "00:00:00:00:00:02", "second", "/Phonebook Menu");
    daemon().Hang(GetParam().method);
    Ask(GetParam().lines);
    ExpectCall(GetParam().method, GetParam().arguments);
    ExpectRemovalAfterTheCall(device);
}

INSTANTIATE_TEST_SUITE_P(Methods, EveryQuery, testing::ValuesIn(kQueries),
                         [](const auto& row) { return row.param.method; });

TEST_F(PhonebookQuery, ListingShowsEveryEntryInTheDaemonsOrder) {
    OpenSelectedSession();
    ExpectListing(
        "([('2.vcf', 'Zo\xc3\xab'), ('10.vcf', ''), ('1.vcf', '100%s;Ada'), ('', 'a\\tb'), "
        "('1.vcf', '100%s;Ada')],)",
        {" 2.vcf\tZo\xc3\xab", " 10.vcf\t", " 1.vcf\t100%s;Ada", " \ta\tb", " 1.vcf\t100%s;Ada"});
}

TEST_F(PhonebookQuery, EmptyListingIsTheHeadingAlone) {
    OpenSelectedSession();
    ExpectListing("(@a(ss) [],)", {});
    daemon().Reply("Search", Value("(@a(ss) [],)"));
    Ask({"o", "0", "nobody", "d"});
    Expect(Heading("vCard Listing") + kMenuPrompt);
}

TEST_F(PhonebookQuery, ListingHasNoEntryTooMany) {
    OpenSelectedSession();
    std::string reply;
    std::vector<std::string> lines;
    for (int entry = 0; entry < 300; ++entry) {
        const std::string handle = std::to_string(entry) + ".vcf";
        reply += (reply.empty() ? "([('" : ", ('") + handle + "', 'name')";
        lines.push_back(" " + handle + "\tname");
    }
    ExpectListing(reply + "],)", lines);
}

TEST_F(PhonebookQuery, SizesAreUnsigned) {
    OpenSelectedSession();
    for (const std::string size : {"0", "32768", "65535"}) {
        SCOPED_TRACE(size);
        for (const std::string method : {"GetSize", "GetSizePhonebook", "GetSizeListing"})
            daemon().Reply(method, Value("(uint16 " + size + ",)"));
        Ask({"g"});
        Expect(Normal("Phonebook Size " + size + "\n") + kMenuPrompt);
        Ask({"m", "d"});
        Expect(Normal("Phone Book Size " + size + "\n") + kMenuPrompt);
        Ask({"n", "d"});
        Expect(Normal("vCard List Size " + size + "\n") + kMenuPrompt);
    }
}

TEST_F(PhonebookQuery, NoFilterFieldsAreTheHeadingAlone) {
    OpenSession();
    ListFields("(@as [],)", {});
}

TEST_F(PhonebookQuery, FilterFieldsReplaceTheStoredOnes) {
    OpenSelectedSession();
    ListFields("(['N', 'TEL'],)", {" N", " TEL"});
    ListFields("(['EMAIL'],)", {" EMAIL"});
    ExpectStoredFields({"EMAIL"});
}

TEST_F(PhonebookQuery, FilterFieldsReplaceThoseThatAMenuFetched) {
    OpenSelectedSession();
    daemon().Reply("ListFilterFields", Value("(['N', 'TEL'],)"));
    daemon().Reply("List", Value("(@a(ss) [],)"));
    Ask({"l", "d"});
    Expect(Heading("vCard Listing") + kMenuPrompt);
    ListFields("(['100%s', 'N'],)", {" 100%s", " N"});
    ExpectStoredFields({"100%s", "N"});
}

TEST_F(PhonebookQuery, RefusedFilterFieldsKeepTheStoredOnes) {
    OpenSelectedSession();
    ListFields("(['N', 'TEL'],)", {" N", " TEL"});
    daemon().Refuse("ListFilterFields", "com.veltrisonix.Error.Failed", "not now");
    Type("f");
    Expect(Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: not now\n") +
           kMenuPrompt);
    ExpectStoredFields({"N", "TEL"});
}

TEST_F(PhonebookQuery, FilterFieldsBelongToTheSession) {
    OpenSelectedSession();
    ListFields("(['N', 'TEL'],)", {" N", " TEL"});
    Type("x");
    Expect(Prompt());
    OpenSelectedSession();
    daemon().Reply("ListFilterFields", Value("(['EMAIL'],)"));
    Type("m");
    Expect(Asking(PromptId::kSizeFilters));
    Type("k");
    Expect(Heading("Select a Filter Field") + Choices({"EMAIL"}) +
           ValuePrompt("/Select Filter Field"));
}

// The bus gives up after 25 s. Until then objects that come are reported at once, and objects that
// go wait: the menu thread may be using them.
TEST_F(PhonebookQuery, HangingCallIsGivenUpAndHoldsBackRemovals) {
    constexpr auto kBusLimit = std::chrono::seconds(25);
    const std::string device = "/com/veltrisonix/hci0/dev_2";
    OpenSelectedSession();
    daemon().Hang("GetSize");
    const auto begin = std::chrono::steady_clock::now();
    Type("g");
    ExpectCall("GetSize", "()");
    daemon().AddDevice(device, "00:00:00:00:00:02", "second");
    Expect(Normal("Found Device " + device + "\n"));
    daemon().RemoveDevice(device);
    console().SetPatience(Stretched(kBusLimit * 2));
    Expect(Red("Remote Call failed: Timeout was reached\n"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, kBusLimit);
    Await("Removed " + device + "\n");
}

}  // namespace
}  // namespace morvane_test
