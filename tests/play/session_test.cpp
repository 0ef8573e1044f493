// The result and the report for pairs of a session file and a program.

#include "play/play_fixture.h"

#include <ostream>
#include <utility>

namespace morvane_test {
namespace {

struct Session {
    const char* name;
    const char* session;
    const char* script;
    const char* report = "";  ///< the report without its last line
};

std::ostream& operator<<(std::ostream& out, const Session& session) {
    return out << session.name;
}

std::string NameOf(const testing::TestParamInfo<Session>& info) {
    return info.param.name;
}

class AgreeingSession : public PlayTest, public testing::WithParamInterface<Session> {};

TEST_P(AgreeingSession, Agrees) {
    const PlayResult result = Play(GetParam().session, GetParam().script);
    EXPECT_EQ(result.output, "a.session: agrees\n");
    EXPECT_EQ(result.status, 0);
}

constexpr Session kAgreeing[] = {
    {"AnswersAtPrompts", R"($ morvane
Vantor > g
Phonebook Size 25
Vantor/Search Value ? Ann Doe
found Ann Doe
)",
     R"(
prompt Vantor ' > '; [ "$answer" = g ] && echo 'Phonebook Size 25'
prompt Vantor/Search\ Value ' ? '; echo "found $answer"
)"},
    {"CommandHasArguments", "$ morvane -bus:second x\n-bus:second x\n", "echo \"$*\""},
    {"ExpectedExitStatus", "% exit 3\nover\n", "echo over; exit 3"},
    {"ExpectedSignal", "% exit signal 15\none\n", "echo one; kill -TERM $$"},
    {"CommentsAreIgnored", "# a comment\nfirst\n# another\nsecond\n", "echo first; echo second"},
    {"WildcardsInLine", "Size [..]\n[..]: [..] of [..].vcf[..]\n",
     "echo Size 25; echo Name: 1 of 2 of 3.vcf"},
    {"EscapedWildcard", "a \\[..] b\n\\\\\\[..]\n", R"(printf '%s\n' 'a [..] b' '\[..]')"},
    {"AnyLines", "...\nlast\n...\nVantor > q\n...\n",
     "seq 100; echo last; echo more; prompt Vantor ' > '"},
    {"AnyOrder", "% any order\none\n[..]e\ntwo\n% end\nfour\n",
     "echo two; echo three; echo one; echo four"},
    {"AnyOrderFindsTheOnlyAssignment", "% any order\n[..]\n[..]e\none\n% end\n",
     "echo one; echo three; echo two"},
    {"AnyOrderWithOtherLines", "% any order\none\n...\ntwo\n% end\nlast\n",
     "echo zero; echo two; echo three; echo one; echo four; echo last"},
    {"AnyOrderWithoutOtherLines", "% any order\none\n...\ntwo\n% end\nlast\n",
     "echo two; echo one; echo last"},
    {"AnyOrderWithOtherLinesFindsTheOnlyAssignment", "% any order\n...\n[..]e\none\n% end\nlast\n",
     "echo one; echo zero; echo three; echo five; echo last"},
    {"AnyOrderWithOtherLinesAfterAnyLines", "...\n% any order\n4000\n7\n...\n% end\n4999\n...\n",
     "seq 5000"},
    {"AnyOrderWithOtherLinesAndLatePrompt", "% any order\none\n...\ntwo\n% end\nVantor > q\n",
     "printf 'zero\nVantor > '; notify two Vantor; notify one Vantor; read -r answer"},
    {"IgnoredLines", "% ignore [..]%\n% ignore two\none\nVantor > q\nthree\n",
     "echo 10%; echo one; echo two; prompt Vantor ' > '; echo two; echo 20%; echo three; echo 3%"},
    {"LinesLikeDirectivesAreEscaped", "\\# one\n\\% two\n\\$ three\n\\...\n\\\\ four\nfive \\\n",
     R"(printf '%s\n' '# one' '% two' '$ three' ... '\ four' 'five \')"},
    {"TrailingBlanksDoNotCount", "one\ntwo  \n", "echo 'one  '; echo two"},
    {"OverwrittenTextIsLeftOut", "done\nxbc\n", R"(printf '10%%\r\033[Kdone\nabc\rx\n')"},
    {"WindowsLineEnds", "one\r\nVantor > q\r\n", "echo one; prompt Vantor ' > '"},
    {"ByteOrderMark", "\xef\xbb\xbf# Sizes.\none\n", "echo one"},
    {"EmptyAnswer", "Vantor/User Id ? \\\ngot []\n",
     "prompt 'Vantor/User Id' ' ? '; echo \"got [$answer]\""},
    {"AnswerWithBackslashAndBlanks", "Vantor > \\ \\\\a \\\ngot [ \\a ]\n",
     R"(printf 'Vantor > '; IFS= read -r answer; printf '%s\n' "got [$answer]")"},
    {"EndOfInput", "Vantor > ^D\nbye\n", "prompt Vantor ' > ' || echo bye"},
    {"ControlC", "Vantor > ab^Cc^C^Cq\nbye q\n",
     "trap : INT; printf 'Vantor > '; until read -r answer; do :; done; echo \"bye $answer\""},
    {"LiteralCaret", "Vantor > \\^C\ngot ^C\n", "prompt Vantor ' > '; echo \"got $answer\""},
    {"NotificationAboveItsPrompt", "one\nFolder: pb\nVantor > q\n",
     "echo one; notify 'Folder: pb' Vantor >later; printf 'Vantor > '; cat later; read -r answer"},
    {"RedrawnPrompts", "Vantor >\nFolder: pb\nVantor > q\n", R"(
printf 'Vantor > '
notify 'Folder: pb' Vantor
read -r answer
)"},
    {"RedrawnPromptOfValue", "Folder: pb\nVantor/User Id ? q\n", R"(
printf 'Vantor/User Id ? '
notify 'Folder: pb' 'Vantor/User Id'
read -r answer
)"},
    {"PromptDrawnTooEarly", "Vantor > g\nPhonebook Size 25\n", R"(
prompt Vantor ' > '
printf 'Vantor > Phonebook Size 25\n'
)"},
    {"PromptAfterText", "no line end\nVantor > q\n", "printf 'no line end'; prompt Vantor ' > '"},
};

INSTANTIATE_TEST_SUITE_P(Play, AgreeingSession, testing::ValuesIn(kAgreeing), NameOf);

class DifferingSession : public PlayTest, public testing::WithParamInterface<Session> {};

TEST_P(DifferingSession, IsReported) {
    const PlayResult result = Play(GetParam().session, GetParam().script);
    EXPECT_EQ(result.output, std::string(GetParam().report) + "a.session: FAILED\n");
    EXPECT_EQ(result.status, 1);
}

// A time-out is short only where it must expire; the script writes all other output at once.
constexpr Session kDiffering[] = {
    {"OtherLine", R"(# Sizes.
% needs a phone
Vantor > g
Name of [..]
Phonebook Size 25
Vantor > q
)",
     R"(
prompt Vantor ' > '
printf 'Name of x\nPhonebook Size 26\nVantor > '; read -r answer
)",
     R"(a.session:5:17: the output differs
needed: a phone
--- a.session
+++ displayed
@@ -2,5 +2,5 @@
 % needs a phone
 Vantor > g
 Name of [..]
-Phonebook Size 25
+Phonebook Size 26
 Vantor > q
)"},
    {"MoreLines", "one\nVantor > q\n", "printf 'one\ntwo\nVantor > '; read -r answer",
     R"(a.session:2: the output differs
--- a.session
+++ displayed
@@ -1,2 +1,3 @@
 one
+two
 Vantor > q
)"},
    {"MissingLine", "one\n% await 50ms\ntwo\nVantor > q\n",
     "printf 'one\nVantor > '; read -r answer",
     R"(a.session:3: "two" did not come within 50 ms; displayed last: "one"
--- a.session
+++ displayed
@@ -1,4 +1,3 @@
 one
 % await 50ms
-two
 Vantor > q
)"},
    {"MissingLineInAnyOrder", "% any order\none\ntwo\n% end\n", "echo one; echo three",
     R"(a.session:3:2: the output differs
--- a.session
+++ displayed
@@ -1,4 +1,4 @@
 % any order
 one
-two
+three
 % end
)"},
    {"MissingLineInAnyOrderWithOtherLines",
     "% await 50ms\n% any order\none\ntwo\n...\n% end\nVantor > q\n",
     "printf 'zero\none\nVantor > '; read -r answer",
     R"(a.session:4: "two" did not come within 50 ms; displayed last: "one"
--- a.session
+++ displayed
@@ -1,7 +1,6 @@
 % await 50ms
 % any order
 one
-two
 ...
 % end
 Vantor > q
displayed since the last answer:
  zero
  one
)"},
    {"OtherPrompt", "one\n% await 50ms\nVantor/User Id ? q\n",
     "printf 'one\nVantor > '; read -r answer",
     R"(a.session:3: the prompt "Vantor/User Id ?" did not come within 50 ms; displayed is the prompt "Vantor >"
--- a.session
+++ displayed
@@ -1,3 +1,3 @@
 one
 % await 50ms
-Vantor/User Id ? q
+Vantor > q
)"},
    {"NoPrompt", "one\n% await 50ms\nVantor > q\n", "echo one; read -r answer",
     R"(a.session:3: the prompt "Vantor >" did not come within 50 ms; displayed last: "one"
--- a.session
+++ displayed
@@ -1,3 +1,2 @@
 one
 % await 50ms
-Vantor > q
)"},
    {"NothingDisplayedBehindControlC", "Vantor > a^C\n% await 50ms\nVantor > q\n",
     "trap : INT; printf 'Vantor > '; until read -r answer; do :; done",
     R"(a.session:3: the prompt "Vantor >" did not come within 50 ms; nothing was displayed
--- a.session
+++ displayed
@@ -1,3 +1,2 @@
 Vantor > a^C
 % await 50ms
-Vantor > q
/bin/sh did not end with its input and was ended by SIGHUP
)"},
    {"NothingDisplayed", "% await 50ms\none\n", "read -r answer",
     R"(a.session:2: "one" did not come within 50 ms; nothing was displayed
--- a.session
+++ displayed
@@ -1,2 +1,1 @@
 % await 50ms
-one
)"},
    {"OneMorePrompt", "one\n% await 50ms\n", "printf 'one\nVantor > '; read -r answer",
     R"(a.session:2: the end did not come within 50 ms; displayed is the prompt "Vantor >"
--- a.session
+++ displayed
@@ -1,2 +1,3 @@
 one
 % await 50ms
+Vantor > 
)"},
    {"EarlyEnd", "one\nVantor > q\n", "echo one; exit 3",
     R"(a.session:2: /bin/sh ended with status 3, awaited was the prompt "Vantor >"
--- a.session
+++ displayed
@@ -1,2 +1,1 @@
 one
-Vantor > q
)"},
    {"EndBySignal", "one\ntwo\n", "echo one; kill -KILL $$",
     R"(a.session:2: /bin/sh was ended by signal 9 (Killed), awaited was "two"
--- a.session
+++ displayed
@@ -1,2 +1,1 @@
 one
-two
)"},
    {"LineAfterAnyLines", "one\n...\nlast\nVantor > q\n", "echo one; echo two; printf three",
     R"(a.session:3: /bin/sh ended with status 0, awaited was "last"
--- a.session
+++ displayed
@@ -1,4 +1,2 @@
 one
 ...
-last
-Vantor > q
displayed since the last answer:
  one
  two
  three
)"},
    {"MoreLinesThanAnyLinesAndLast", "...\nlast\n", "echo one; echo last; echo two",
     R"(a.session:2: /bin/sh ended with status 0, awaited was "last"
--- a.session
+++ displayed
@@ -1,2 +1,3 @@
 ...
 last
+two
displayed since the last answer:
  one
  last
  two
)"},
    {"LineAfterManyLines", "1\n% await 50ms\n...\nlast\nVantor > q\n",
     R"(lines=$(seq 20); printf '%s\nVantor > ' "$lines"; read -r answer)",
     R"(a.session:4: "last" did not come within 50 ms; displayed last: "20"
--- a.session
+++ displayed
@@ -1,5 +1,4 @@
 1
 % await 50ms
 ...
-last
 Vantor > q
displayed since the last answer:
  (5 more lines)
  6
  7
  8
  9
  10
  11
  12
  13
  14
  15
  16
  17
  18
  19
  20
)"},
    {"OtherExitStatus", "one\n", "echo one; exit 3",
     "a.session: /bin/sh ended with status 3, expected was 0\n"},
    {"OtherSignal", "% exit signal 15\none\n", "echo one; kill -KILL $$",
     "a.session: /bin/sh was ended by signal 9 (Killed), expected was signal 15\n"},
    {"StatusInsteadOfSignal", "% exit signal 15\none\n", "echo one; exit 15",
     "a.session: /bin/sh ended with status 15, expected was signal 15\n"},
    {"Hang", "% await 50ms\n...\none\n", "exec sleep 600",
     R"(a.session:3: "one" did not come within 50 ms; nothing was displayed
--- a.session
+++ displayed
@@ -1,3 +1,2 @@
 % await 50ms
 ...
-one
/bin/sh did not end with its input and was ended by SIGHUP
)"},
    {"OutputWithoutEnd", "% await 60min\n...\nVantor > q\n", "exec yes",
     "a.session:3: /bin/sh prints without end\n"
     "/bin/sh did not end with its input and was ended by SIGHUP\n"},
    {"LineWithoutEnd", "% await 60min\n...\nVantor > q\n", "exec tr '\\0' x </dev/zero",
     "a.session:3: /bin/sh prints without end\n"
     "/bin/sh did not end with its input and was ended by SIGHUP\n"},
};

INSTANTIATE_TEST_SUITE_P(Play, DifferingSession, testing::ValuesIn(kDiffering), NameOf);

constexpr std::pair<const char*, const char*> kMalformed[] = {
    {"", "a.session:1: no output and no answer"},
    {"# nothing\n$ morvane\n", "a.session:1: no output and no answer"},
    {"% frobnicate\n", "a.session:1: unknown directive \"frobnicate\""},
    {"%\n", "a.session:1: unknown directive \"\""},
    {"one\n% needs a phone\n", "a.session:2: \"% needs\" belongs to the head, before all output"},
    {"% needs\n", "a.session:1: \"% needs\" without a text"},
    {"% ignore\n", "a.session:1: \"% ignore\" without a text"},
    {"one\n% ignore one\n", "a.session:2: \"% ignore\" belongs to the head, before all output"},
    {"% timeout soon\n", "a.session:1: \"soon\" is no time such as 10s, 500ms or 2min"},
    {"% timeout 0\n", "a.session:1: \"0\" is no time such as 10s, 500ms or 2min"},
    {"% timeout 86401\n", "a.session:1: \"86401\" is no time such as 10s, 500ms or 2min"},
    {"one\n% await\n", "a.session:2: \"\" is no time such as 10s, 500ms or 2min"},
    {"% exit 256\none\n",
     "a.session:1: \"256\" is no exit status and no signal such as \"signal 15\""},
    {"% exit signal 0\none\n",
     "a.session:1: \"signal 0\" is no exit status and no signal such as \"signal 15\""},
    {"% exit signal 65\none\n",
     "a.session:1: \"signal 65\" is no exit status and no signal such as \"signal 15\""},
    {"$ rm -r /\n",
     "a.session:1: the command must be \"morvane\"; name another program behind \"--\""},
    {"$ morvane\n$ morvane\n", "a.session:2: a second command"},
    {"% tell\n", "a.session:1: \"% tell\" without a command"},
    {"% any\n", "a.session:1: unknown directive \"any\""},
    {"one\n% any order\none\n", "a.session:2: \"% any order\" without \"% end\""},
    {"% any order\n% end\n", "a.session:2: \"% any order\" without lines"},
    {"% any order\n% any order\n", "a.session:2: \"% any order\" inside \"% any order\""},
    {"% any order\none\n% tell x\n", "a.session:3: \"% tell\" inside \"% any order\""},
    {"% any order\nVantor > q\n", "a.session:2: a prompt inside \"% any order\""},
    {"% any order\n...\n% end\n", "a.session:3: \"% any order\" without lines"},
    {"% end\n", "a.session:1: \"% end\" without \"% any order\""},
    {"% any order\none\n% end two\n", "a.session:3: unknown directive \"end two\""},
    {"Vantor > ^U\n", "a.session:1: the key ^U cannot be typed; a caret is written \\^"},
    {"Vantor > x^D\n", "a.session:1: ^D must be the whole answer"},
    {"\x1b[1mbold\n", "a.session:1: a control character"},
};

TEST_F(PlayTest, RefusesMalformedSessionsBeforeAnythingIsRun) {
    Write("good.session", "one\n");
    for (const auto& [session, reason] : kMalformed) {
        const PlayResult result = Play(session, "echo one >ran", {"good.session"});
        EXPECT_EQ(result.output, "morvane-play: " + std::string(reason) + "\n");
        EXPECT_EQ(result.status, 2) << reason;
        EXPECT_FALSE(Exists("ran")) << reason;
    }
}

TEST_F(PlayTest, RefusesTooLongAnswer) {
    const PlayResult result = Play("Vantor > " + std::string(4001, 'x') + "\n", "");
    EXPECT_EQ(result.output,
              "morvane-play: a.session:1: the answer is longer than a terminal takes\n");
}

// Some editors save UTF-16 by default.
TEST_F(PlayTest, RefusesUtf16) {
    using std::string_literals::operator""s;
    const PlayResult result = Play("\xff\xfeo\0n\0e\0\n\0"s, "");
    EXPECT_EQ(result.output,
              "morvane-play: a.session:1: not UTF-8 text: a zero byte, as in UTF-16\n");
    EXPECT_EQ(result.status, 2);
}

}  // namespace
}  // namespace morvane_test
