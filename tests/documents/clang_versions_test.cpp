#include "documents/document.h"
#include "support/console.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace morvane_test {
namespace {

// scripts/clang-versions.sh where no clang-format is installed but those of the test.
class ClangVersions : public testing::Test {
  protected:
    ClangVersions() { std::filesystem::create_symlink("/bin/sed", bin_.File("sed")); }

    void Install(const std::string& command, const std::string& version) const {
        std::ofstream(bin_.File(command))
            << "#!/bin/sh\necho 'Debian clang-format version " << version << " (version 3)'\n";
        std::filesystem::permissions(bin_.File(command), std::filesystem::perms::owner_all);
    }

    std::string Find(int status) const {
        ConsoleOptions options;
        options.program = "/bin/bash";
        options.arguments = {"-c", "PATH=" + bin_.Path() + "; source '" +
                                       SourcePath("scripts/clang-versions.sh") +
                                       "'; find_clang_for 'the check' clang-format 2>&1"};
        options.wiring = Wiring::kPipes;
        options.directory = bin_.Path();
        Console console(options);
        console.ExpectExit(status, Console::Rest::kIgnored);
        return console.Output();
    }

  private:
    TemporaryDirectory bin_;
};

TEST_F(ClangVersions, ChoosesTheFirstKnownOne) {
    Install("clang-format", "19.1.7");
    Install("clang-format-14", "14.0.6");
    EXPECT_EQ(Find(0), "clang-format-14\n");
}

TEST_F(ClangVersions, RecognisesAKnownOneWithoutSuffix) {
    Install("clang-format", "19.1.7");
    EXPECT_EQ(Find(0), "clang-format\n");
}

TEST_F(ClangVersions, PrintsWhatIsSkippedWithAnother) {
    Install("clang-format", "13.0.1");
    EXPECT_EQ(Find(1),
              "Skipping the check: it needs clang-format 14, 19 or 21; this system has 13\n");
}

TEST_F(ClangVersions, PrintsWhatIsSkippedWithout) {
    EXPECT_EQ(Find(1),
              "Skipping the check: it needs clang-format 14, 19 or 21; this system has none\n");
}

}  // namespace
}  // namespace morvane_test
