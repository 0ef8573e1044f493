#include "support/conversation.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

class PhonebookQuery : public ConversationTest {
  protected:
    // Types the lines; the next output is the result.
    void Ask(const std::vector<std::string>& lines, Here here = Here::Now()) {
        for (const std::string& line : lines) Type(line, here);
        if (lines.size() > 1) Await(Prompt(kFilterMenu), here);
    }

    void ExpectListing(const std::string& reply, const std::vector<std::string>& lines,
                       Here here = Here::Now()) {
        daemon().Reply("List", Value(reply));
        Ask({"l", "d"}, here);
        Expect(Heading("vCard Listing") + Lines(lines) + kPhonebookPrompt, here);
    }

    void ListFields(const std::string& reply, const std::vector<std::string>& lines,
                    Here here = Here::Now()) {
        daemon().Reply("ListFilterFields", Value(reply));
        Type("f", here);
        Expect(Heading("Filter Fields") + Lines(lines) + kPhonebookPrompt, here);
    }

    // A filter menu offers exactly these fields, and asked the daemon for none.
    void ExpectStoredFields(const std::vector<std::string>& fields, Here here = Here::Now()) {
        const std::size_t calls = CountCalls("ListFilterFields");
        Type("m", here);
        Await(Prompt(kFilterMenu), here);
        EXPECT_EQ(CountCalls("ListFilterFields"), calls);
        Type("k", here);
        Expect(Heading("Select a Filter Field") + Choices(fields) + Prompt(PromptId::kField), here);
    }
};

class EveryOperation : public PhonebookQuery, public testing::WithParamInterface<Operation> {
  protected:
    const std::string& Method() const { return GetParam().method; }
    bool Pulls() const { return GetParam().reply_type == "(oa{sv})"; }

    void OpenPhonebook(Here here = Here::Now()) {
        OpenSelectedSession(here);
        daemon().ForgetCalls();
    }

    // The next output is the result.
    void Perform(Here here = Here::Now()) {
        for (const std::string& line : GetParam().lines) {
            if (&line != &GetParam().lines.front()) Await(Red(" ? "), here);
            Type(line, here);
        }
        if (!GetParam().filters) return;
        Await(Prompt(kFilterMenu), here);
        Type("d", here);
    }

    void HangInItsCall(Here here = Here::Now()) {
        daemon().Hang(Method());
        Perform(here);
        ExpectCall(Method(), GetParam().arguments, here);
    }
};

TEST_P(EveryOperation, AsksTheSessionAndPrintsItsAnswer) {
    OpenPhonebook();
    daemon().Reply(Method(), Value(GetParam().reply));
    Perform();
    Expect(GetParam().result + Prompt(Pulls() ? kTransferMenu : kPhonebookMenu));
    ExpectCall(Method(), GetParam().arguments);
    const simulator::Call call = daemon().Calls().back();
    EXPECT_EQ(call.method, Method());
    EXPECT_EQ(call.path, Session());
    EXPECT_EQ(call.interface, "com.veltrisonix.obex.PhonebookAccess1");
}

TEST_P(EveryOperation, SurvivesItsRefusal) {
    OpenPhonebook();
    daemon().Refuse(Method(), "com.veltrisonix.Error.Failed", "100%s busy", 1);
    Perform();
    Expect(Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: 100%s busy\n") +
           kPhonebookPrompt);
    EXPECT_EQ(CountCalls(Method()), 1U);
    daemon().Reply(Method(), Value(GetParam().reply));
    Perform();
    Expect(GetParam().result);
}

TEST_P(EveryOperation, ReportsAnAnswerOfAWrongType) {
    OpenPhonebook();
    daemon().Reply(Method(), Value("(true,)"));
    Perform();
    Expect(Red("Remote Call failed: Method “" + Method() + "” returned type “(b)”, but expected “" +
               GetParam().reply_type + "”\n") +
           kPhonebookPrompt);
}

TEST_P(EveryOperation, ReportsADaemonThatDiesInTheCall) {
    OpenPhonebook();
    HangInItsCall();
    daemon().Crash();
    Await(
        Red("Remote Call failed: GDBus.Error:org.freedesktop.DBus.Error.NoReply: "
            "Message recipient disconnected from message bus without replying\n"));
}

TEST_P(EveryOperation, HoldsBackRemovals) {
    const std::string device = "/com/veltrisonix/hci0/dev_2";
    OpenPhonebook();
    AddDevice(device, "00:00:00:00:00:02", "second", kPhonebookMenu);
    HangInItsCall();
    ExpectRemovalAfterTheCall(device);
}

INSTANTIATE_TEST_SUITE_P(Methods, EveryOperation, testing::ValuesIn(Operations()),
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
    Expect(Heading("vCard Listing") + kPhonebookPrompt);
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
        Expect(Normal("Phonebook Size " + size + "\n") + kPhonebookPrompt);
        Ask({"m", "d"});
        Expect(Normal("Phone Book Size " + size + "\n") + kPhonebookPrompt);
        Ask({"n", "d"});
        Expect(Normal("vCard List Size " + size + "\n") + kPhonebookPrompt);
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
    Expect(Heading("vCard Listing") + kPhonebookPrompt);
    ListFields("(['100%s', 'N'],)", {" 100%s", " N"});
    ExpectStoredFields({"100%s", "N"});
}

TEST_F(PhonebookQuery, RefusedFilterFieldsKeepTheStoredOnes) {
    OpenSelectedSession();
    ListFields("(['N', 'TEL'],)", {" N", " TEL"});
    daemon().Refuse("ListFilterFields", "com.veltrisonix.Error.Failed", "not now");
    Type("f");
    Expect(Red("Remote Call failed: GDBus.Error:com.veltrisonix.Error.Failed: not now\n") +
           kPhonebookPrompt);
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
    Expect(Heading("Select a Filter Field") + Choices({"EMAIL"}) + Prompt(PromptId::kField));
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
