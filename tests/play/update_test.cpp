#include "play/play_fixture.h"

#include <filesystem>
#include <ostream>
#include <set>
#include <string>

namespace morvane_test {
namespace {

namespace fs = std::filesystem;

struct Update {
    const char* name;
    const char* before;
    const char* script;
    const char* after;
};

std::ostream& operator<<(std::ostream& out, const Update& update) {
    return out << update.name;
}

class UpdateTest : public PlayTest, public testing::WithParamInterface<Update> {};

TEST_P(UpdateTest, UpdatesTheFile) {
    const PlayResult result = Play(GetParam().before, GetParam().script, {"--update"});
    EXPECT_EQ(result.output, "a.session: updated\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(Read("a.session"), GetParam().after);
    EXPECT_EQ(Play(Read("a.session"), GetParam().script).status, 0);
}

constexpr Update kUpdates[] = {
    {"KeepsWildcardsAndComments", "# Sizes.\n$ morvane -x\n[..]e\ntwo\n# here\n...\nVantor > q\n",
     "echo one; echo three; echo more; prompt Vantor ' > '; echo bye",
     "# Sizes.\n$ morvane -x\n[..]e\n# here\n...\nVantor > q\nbye\n"},
    {"ReplacesLines", "one\ntwo\nthree\nfour\n", "echo one; echo 2; echo 3; echo four",
     "one\n2\n3\nfour\n"},
    {"WritesLinesWithEscapes", "Vantor > q\n", "prompt Vantor ' > '; echo '# [..]'; echo ...",
     "Vantor > q\n\\# \\[..]\n\\...\n"},
    {"EscapesByteOrderMark", "one\n", "printf '\\357\\273\\277two\\n'",
     "\\\xef\xbb\xbf"
     "two\n"},
    {"WritesWildcardsForVaryingText", "one\n",
     "echo Address: 02:00:5E:10:00:02; echo Found /hci0/dev_02_00_5E_10_00_02",
     "Address: [..]\nFound /hci0/dev_[..]\n"},
    {"ReplacesPrompt", "one\n% await 50ms\nVantor/Old > q\nbye\n",
     "printf 'one\nVantor/New > '; read -r answer; echo bye",
     "one\n% await 50ms\nVantor/New > q\nbye\n"},
    {"AwaitsPromptAfterSilence", "one\nVantor > q\n", "echo two; sleep 1; prompt Vantor ' > '",
     "two\nVantor > q\n"},
    {"KeepsGroupInAnyOrder", "% any order\n[..]e\ntwo\n% end\nlast\n",
     "echo two; echo one; echo other", "% any order\n[..]e\ntwo\n% end\nother\n"},
    {"KeepsLineAfterAnyLines", "...\nlast\n", "echo one; echo last; echo two; echo three",
     "...\nlast\ntwo\nthree\n"},
    {"KeepsLineAboveAnyLines", "first\n...\n", "echo new; echo first; echo more",
     "new\nfirst\n...\n"},
    {"KeepsLineBetweenAnyLines", "...\nlast\nnext\n...\n",
     "echo one; echo last; echo two; echo next; echo three", "...\nlast\ntwo\nnext\n...\n"},
    {"KeepsGroupAfterAnyLines", "...\n% any order\none\ntwo\n% end\n",
     "echo zero; echo two; echo three; echo one; echo four",
     "...\n% any order\none\ntwo\nthree\n% end\nfour\n"},
    {"RemovesMissingLineAfterAnyLines", "...\nlast\n", "echo one; echo two", "...\n"},
    {"ReplacesInGroup", "% any order\none\ntwo\n% end\nlast\n", "echo three; echo one; echo last",
     "% any order\none\nthree\n% end\nlast\n"},
    {"KeepsGroupWithOtherLines", "% any order\n[..]e\n...\ntwo\n% end\nlast\nfirst\n",
     "echo zero; echo two; echo three; echo last; echo four",
     "% any order\n[..]e\n...\ntwo\n% end\nlast\nfour\n"},
    {"RemovesLineOfGroupWithOtherLines", "first\n% any order\none\n...\ntwo\n% end\nlast\n",
     "echo zero; echo first; echo three; echo two; echo four; echo last",
     "zero\nfirst\n% any order\n...\ntwo\n% end\nlast\n"},
    {"KeepsAnyLinesOfMissingGroup", "% any order\none\n...\ntwo\n% end\nlast\n",
     "echo three; echo last", "...\nlast\n"},
};

INSTANTIATE_TEST_SUITE_P(Play, UpdateTest, testing::ValuesIn(kUpdates),
                         [](const auto& update) { return std::string(update.param.name); });

TEST_F(PlayTest, MarksUpdatedFileInTestAnythingProtocol) {
    const PlayResult result = Play("one\n", "echo two", {"--tap", "--update"});
    EXPECT_EQ(result.output, "TAP version 13\n1..1\nok 1 - a.session\n# updated\n");
}

TEST_F(PlayTest, DoesNotUpdateFileThatCannotBePlayedToItsEnd) {
    constexpr char kBefore[] = "one\nVantor > x\nVantor > q\n";
    const PlayResult result = Play(kBefore, "echo two; prompt Vantor ' > '", {"--update"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Read("a.session"), kBefore);
}

TEST_F(PlayTest, ReportsWhereAnUpdateEnds) {
    const PlayResult result = Play("one\nVantor > x\n% await 50ms\nthree\nVantor > q\n",
                                   "echo two; prompt Vantor ' > '; read -r answer", {"--update"});
    EXPECT_EQ(result.output,
              R"(a.session:4: "three" did not come within 50 ms; nothing was displayed
--- a.session
+++ displayed
@@ -1,5 +1,3 @@
-one
+two
 Vantor > x
 % await 50ms
-three
-Vantor > q
a.session:5: cannot be played on and is not updated
a.session: FAILED
)");
    EXPECT_EQ(result.status, 1);
}

TEST_F(PlayTest, UpdatesLongOutput) {
    const PlayResult result =
        Play("one\nVantor > q\n", "seq 30000; prompt Vantor ' > '", {"--update"});
    EXPECT_EQ(result.output, "a.session: updated\n");
    EXPECT_NE(Read("a.session").find("\n30000\nVantor > q\n"), std::string::npos);
}

class UpdatedFileTest : public PlayTest {};

TEST_F(UpdatedFileTest, IsNotWrittenIfItAgrees) {
    EXPECT_EQ(Play("one\n", "echo one; ln a.session link", {"--update"}).output,
              "a.session: agrees\n");
    EXPECT_TRUE(fs::equivalent(directory().File("a.session"), directory().File("link")));
}

TEST_F(UpdatedFileTest, KeepsModeAndSymbolicLink) {
    const fs::path link = directory().File("a.session");
    const fs::path file = directory().File("folder/b");
    constexpr auto kMode = fs::perms::owner_all | fs::perms::others_read;
    fs::create_directory(directory().File("folder"));
    Write("folder/b", "");
    fs::permissions(file, kMode);
    fs::create_symlink("folder/b", link);
    EXPECT_EQ(Play("two\n", "echo one", {"--update"}).output, "a.session: updated\n");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(Read("folder/b"), "one\n");
    EXPECT_EQ(fs::status(file).permissions(), kMode);
}

TEST_F(UpdatedFileTest, LeavesNoDraftIfItCannotBeReplaced) {
    const PlayResult result =
        Play("two\n", "echo one; rm a.session; mkdir a.session", {"--update"});
    EXPECT_EQ(result.output, "a.session: Is a directory\na.session: FAILED\n");
    EXPECT_EQ(result.status, 2);
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory().Path()))
        names.insert(entry.path().filename());
    EXPECT_EQ(names, (std::set<std::string>{"a.session", "tool"}));
}

TEST_F(UpdatedFileTest, DoesNotEndTheRunIfItCannotBeReplaced) {
    Write("missing.session", "two\n");
    const PlayResult result =
        Play("one\n", "echo one; rm -f missing.session", {"--tap", "--update", "missing.session"});
    EXPECT_EQ(result.output,
              "TAP version 13\n1..2\nnot ok 1 - missing.session\n"
              "# missing.session: No such file or directory\nok 2 - a.session\n");
    EXPECT_EQ(result.status, 2);
}

}  // namespace
}  // namespace morvane_test
