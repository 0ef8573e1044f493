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
};

TEST_F(PhonebookQuery, ListingKeepsOrderOfDaemon) {
    OpenSelectedSession();
    ExpectListing("(@a(ss) [],)", {});
    ExpectListing(
        "([('2.vcf', 'Zo\xc3\xab'), ('10.vcf', ''), ('1.vcf', '100%s;Ada'), ('', 'a\\tb'), "
        "('1.vcf', '100%s;Ada')],)",
        {" 2.vcf\tZo\xc3\xab", " 10.vcf\t", " 1.vcf\t100%s;Ada", " \ta\tb", " 1.vcf\t100%s;Ada"});
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

TEST_F(PhonebookQuery, FilterFieldsReplaceStoredOnesUnlessRefused) {
    OpenSelectedSession();
    ListFields("(@as [],)", {});
    ListFields("(['N', 'TEL'],)", {" N", " TEL"});
    ListFields("(['100%s', 'N'],)", {" 100%s", " N"});
    daemon().Refuse("ListFilterFields", "com.veltrisonix.Error.Failed", "enough");
    Enter("f", kRefused + kPhonebookPrompt);
    const std::size_t calls = CountCalls("ListFilterFields");
    EnterAndAwait("m", Prompt(kFilterMenu));
    EXPECT_EQ(CountCalls("ListFilterFields"), calls);
    Enter("k",
          Heading("Select a Filter Field") + Choices({"100%s", "N"}) + Prompt(PromptId::kField));
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
