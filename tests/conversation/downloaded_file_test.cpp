#include "support/conversation.h"
#include "support/file_descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace morvane_test {
namespace {

using simulator::kTransferInterface;

constexpr std::size_t kPiece = 512;

void WriteFile(const std::string& name, const std::string& content) {
    std::ofstream(name, std::ios::binary | std::ios::trunc) << content;
}

/// The file that the daemon wrote, displayed and deleted in the transfer menu.
class DownloadedFileTest : public ConversationTest {
  protected:
    void SetUp() override {
        OpenSelectedSession();
        PullAll("");
    }

    void Announce(const std::string& file) {
        daemon().Notify(Transfer(), kTransferInterface, "Filename",
                        g_variant_new_string(file.c_str()));
        Expect(Notification(kTransferMenu, "Filename Attribute Received: " + file + "\n"));
    }

    void ForgetName() {
        daemon().Invalidate(Transfer(), kTransferInterface, "Filename");
        Expect(Notification(kTransferMenu, "Filename Attribute Received: Unknown\n"));
    }

    void ExpectDisplay(const std::string& messages, Here here = Here::Now()) {
        Enter("d", messages + Prompt(kTransferMenu), here);
    }

    /// Displays the file and expects these pieces.
    void ExpectPieces(const std::string& file, const std::vector<std::string>& pieces,
                      Here here = Here::Now()) {
        std::string messages = Normal("Displaying: " + file + "\n");
        for (const std::string& piece : pieces) messages += Normal(piece);
        ExpectDisplay(messages + Normal("\n"), here);
    }

    void ExpectContent(const std::string& content, const std::vector<std::string>& pieces,
                       Here here = Here::Now()) {
        WriteFile(PulledPhonebook(), content);
        ExpectPieces(PulledPhonebook(), pieces, here);
    }

    /// Leaves the menu with "x", then pulls again.
    void ExpectRemoval(const std::string& messages, Here here = Here::Now()) {
        Enter("x", messages + Prompt(kPhonebookMenu), here);
        PullAll("", here);
    }
};

TEST_F(DownloadedFileTest, IsDisplayedInPiecesOf512Bytes) {
    const std::string piece(kPiece, 'v');
    ExpectContent("", {""});
    ExpectContent("BEGIN:VCARD\n", {"BEGIN:VCARD\n"});
    ExpectContent(std::string(kPiece - 1, 'v'), {std::string(kPiece - 1, 'v')});
    ExpectContent(piece, {piece, ""});
    ExpectContent(piece + "w", {piece, "w"});
    ExpectContent(piece + piece + std::string(kPiece, 'w'),
                  {piece, piece, std::string(kPiece, 'w'), ""});
}

TEST_F(DownloadedFileTest, IsDisplayedUnchangedUpToZeroByte) {
    ExpectContent("100%s %n %d%", {"100%s %n %d%"});
    ExpectContent("\x1b[2J\xff\xfe\r\n\t", {"\x1b[2J\xff\xfe\r\n\t"});
    ExpectContent(std::string("ab\0cd", 5), {"ab"});
    ExpectContent(std::string(1, '\0') + std::string(kPiece - 1, 'v') + "w", {"", "w"});
    ExpectContent(std::string(kPiece - 1, 'v') + '\0' + "w", {std::string(kPiece - 1, 'v'), "w"});
}

TEST_F(DownloadedFileTest, IsDisplayedFromLatestFilename) {
    for (const char* const name : {"100%s%n.vcf",
                                   "b\xc3\xbc"
                                   "cher und mehr.vcf"}) {
        const std::string file = directory().File(name);
        WriteFile(file, name);
        Announce(file);
        ExpectPieces(file, {name});
    }
    const std::string link = directory().File("link");
    std::filesystem::create_symlink(directory().File("100%s%n.vcf"), link);
    Announce(link);
    ExpectPieces(link, {"100%s%n.vcf"});
}

TEST_F(DownloadedFileTest, DisplayReportsMissingNameOrFile) {
    for (const std::string& file : {directory().File("missing"), PulledPhonebook() + "/below",
                                    std::string("not/here"), std::string()}) {
        Announce(file);
        ExpectDisplay(Normal("Displaying: " + file + "\n") + Red("Could not open: " + file + "\n"));
    }
    const std::string name(1200, 'n');
    daemon().Notify(Transfer(), kTransferInterface, "Filename", g_variant_new_string(name.c_str()));
    Await(Red(" > "));
    ExpectDisplay(Normal(("Displaying: " + name).substr(0, 999)) +
                  Red(("Could not open: " + name).substr(0, 999)));
    ForgetName();
    ExpectDisplay(Red("Filename property not set!"));
}

TEST_F(DownloadedFileTest, DisplayDoesNotBlockOnUnreadableFile) {
    const std::string pipe = directory().File("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& name : {directory().Path(), pipe, std::string("/proc/self/mem")}) {
        Announce(name);
        ExpectPieces(name, {});
    }
    // Nothing is read either if a writer has opened the pipe.
    const FileDescriptor writer(Checked(open(pipe.c_str(), O_RDWR | O_CLOEXEC), "open"));
    Announce(pipe);
    ExpectPieces(pipe, {});
}

TEST_F(DownloadedFileTest, IsDeletedByLatestFilename) {
    const std::string strange = directory().File("100%s%n.vcf");
    const std::string link = directory().File("link");
    const std::string pipe = directory().File("pipe");
    WriteFile(strange, "vcard");
    WriteFile(PulledCard(), "vcard");
    std::filesystem::create_symlink(PulledCard(), link);
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& file : {strange, link, pipe}) {
        Announce(file);
        ExpectRemoval(Normal("Removing: " + file + "\n"));
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(file)));
    }
    EXPECT_TRUE(std::filesystem::exists(PulledPhonebook()));
    EXPECT_TRUE(std::filesystem::exists(PulledCard()));
}

TEST_F(DownloadedFileTest, FailedDeletionPrintsNoError) {
    Announce(directory().File("missing"));
    ExpectRemoval(Normal("Removing: " + directory().File("missing") + "\n"));
    Announce(directory().Path());
    ExpectRemoval(Normal("Removing: " + directory().Path() + "\n"));
    EXPECT_TRUE(std::filesystem::exists(PulledPhonebook()));
    Announce("");
    ExpectRemoval("");
    ForgetName();
    ExpectRemoval(Red("Filename property not set!"));
    EXPECT_TRUE(std::filesystem::exists(PulledPhonebook()));
}

TEST_F(DownloadedFileTest, HandlesMissingFilenameProperty) {
    daemon().HideProperty(simulator::kAnyPath, kTransferInterface, "Filename");
    ExpectRemoval(Normal("Removing: " + PulledPhonebook() + "\n"));
    ExpectDisplay(Red("Filename property not set!"));
    EnterAndAwait("c", Red("Filename property not set!"));
    Await(Prompt(kTransferMenu));
    EXPECT_TRUE(std::filesystem::exists(PulledPhonebook()));
}

}  // namespace
}  // namespace morvane_test
