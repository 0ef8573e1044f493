#include "support/conversation.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace morvane_test {
namespace {

class PhonebookQuery : public ConversationTest {
  protected:
    void ExpectListing(const std::string& reply, const std::vector<std::string>& lines,
                       Here here = Here::Now()) {
        daemon().Reply("List", Value(reply));
        EnterAndAwait("l", Prompt(kFilterMenu), here);
        Enter("d", Heading("vCard Listing") + Lines(lines) + kPhonebookPrompt, here);
    }

    void ListFields(const std::string& reply, const std::vector<std::string>& lines,
                    Here here = Here::Now()) {
        daemon().Reply("ListFilterFields", Value(reply));
        Enter("f", Heading("Filter Fields") + Lines(lines) + kPhonebookPrompt, here);
    }

    // Expects these fields in a filter menu, without a call to the daemon.
    void ExpectStoredFields(const std::vector<std::string>& fields, Here here = Here::Now()) {
        const std::size_t calls = CountCalls("ListFilterFields");
        EnterAndAwait("m", Prompt(kFilterMenu), here);
        EXPECT_EQ(CountCalls("ListFilterFields"), calls);
        Enter("k", Heading("Select a Filter Field") + Choices(fields) + Prompt(PromptId::kField),
              here);
    }
};

TEST_F(PhonebookQuery, ListingKeepsOrderOfDaemon) {
    OpenSelectedSession();
    ExpectListing(
        "([('2.vcf', 'Zo\xc3\xab'), ('10.vcf', ''), ('1.vcf', '100%s;Ada'), ('', 'a\\tb'), "
        "('1.vcf', '100%s;Ada')],)",
        {" 2.vcf\tZo\xc3\xab", " 10.vcf\t", " 1.vcf\t100%s;Ada", " \ta\tb", " 1.vcf\t100%s;Ada"});
}

TEST_F(PhonebookQuery, ListingHandlesEmptyAndLongReplies) {
    OpenSelectedSession();
    ExpectListing("(@a(ss) [],)", {});
    std::string reply;
    std::vector<std::string> lines;
    for (int entry = 0; entry < 300; ++entry) {
        const std::string handle = std::to_string(entry) + ".vcf";
        reply += (reply.empty() ? "([('" : ", ('") + handle + "', 'name')";
        lines.push_back(" " + handle + "\tname");
    }
    ExpectListing(reply + "],)", lines);
}

TEST_F(PhonebookQuery, PrintsSizesAsUnsignedNumbers) {
    OpenSelectedSession();
    const std::pair<const char*, const char*> queries[] = {{"GetSize", "Phonebook Size "},
                                                           {"GetSizePhonebook", "Phone Book Size "},
                                                           {"GetSizeListing", "vCard List Size "}};
    for (const std::string size : {"0", "32768", "65535"}) {
        for (const auto& [method, label] : queries) {
            SCOPED_TRACE(method + size);
            daemon().Reply(method, Value("(uint16 " + size + ",)"));
            for (const std::string& line : OperationOf(method).AllLines()) Type(line);
            Await(Normal(label + size + "\n") + kPhonebookPrompt);
        }
    }
}

TEST_F(PhonebookQuery, FilterFieldsReplaceStoredOnes) {
    OpenSelectedSession();
    ListFields("(@as [],)", {});
    ListFields("(['N', 'TEL'],)", {" N", " TEL"});
    ListFields("(['100%s', 'N'],)", {" 100%s", " N"});
    ExpectStoredFields({"100%s", "N"});
}

TEST_F(PhonebookQuery, FailedListFilterFieldsKeepsStoredOnes) {
    OpenSelectedSession();
    ListFields("(['N', 'TEL'],)", {" N", " TEL"});
    daemon().Refuse("ListFilterFields", "com.veltrisonix.Error.Failed", "enough");
    Enter("f", kRefused + kPhonebookPrompt);
    ExpectStoredFields({"N", "TEL"});
}

TEST_F(PhonebookQuery, FilterFieldsAreStoredPerSession) {
    OpenSelectedSession();
    ListFields("(['N', 'TEL'],)", {" N", " TEL"});
    Enter("x", Prompt());
    OpenSelectedSession();
    daemon().Reply("ListFilterFields", Value("(['EMAIL'],)"));
    Enter("m", QuestionAndPrompt(PromptId::kSizeFilters));
    ExpectCall("ListFilterFields", "()");
    ExpectCall("ListFilterFields", "()");
}

}  // namespace
}  // namespace morvane_test
