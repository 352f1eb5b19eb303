// What is made from the tables of verbs and categories: completion, manual page and help. The page docs/dmctl.md.
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "dmctl/DmctlFixture.h"

namespace td::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::StartsWith;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

class PagesTest : public DmctlTest {
protected:
    /// Runs a line in a shell that finds dmctl, in a directory of its own.
    Result shell(const std::string& line) const {
        const std::string program = DMCTL_PROGRAM;
        const std::string command = "cd " + quoted(m_root.string()) +
                                    " && PATH=" + quoted(program.substr(0, program.rfind('/'))) + ":$PATH bash -c " +
                                    quoted(line) + " >" + quoted(m_output.file("out")) + " 2>" +
                                    quoted(m_output.file("err"));
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, m_output.read("out"), m_output.read("err")};
    }
    /// What bash offers for the last of the words, which dmctl's name goes before.
    std::vector<std::string> completed(const std::vector<std::string>& words) const {
        std::string list = "dmctl";
        for (const std::string& word : words)
            list += " " + quoted(word);
        const Result result = shell("source <(dmctl completion bash); COMP_WORDS=(" + list + "); COMP_CWORD=" +
                                    std::to_string(words.size()) + "; _dmctl; printf '%s\\n' \"${COMPREPLY[@]}\"");
        EXPECT_THAT(result.errors, IsEmpty());
        std::vector<std::string> offers = linesOf(result.output);
        if (offers == std::vector<std::string>{""})
            offers.clear();
        return offers;
    }
};

TEST_F(PagesTest, BashCompletesEveryKindOfWord) {
    EXPECT_THAT(completed({""}), IsSupersetOf({"get", "set", "restore", "verify", "factory-reset"}));
    EXPECT_THAT(completed({"fi"}), ElementsAre("first-boot"));
    EXPECT_THAT(completed({"restore", "--a"}), ElementsAre("--all-sources", "--all"));
    EXPECT_THAT(completed({"get", "--f"}), IsEmpty());
    EXPECT_THAT(completed({"restore", "--from", ""}), ElementsAre("factory", "current"));
    EXPECT_THAT(completed({"repair", "--json", "--from", "f"}), ElementsAre("factory"));
    EXPECT_THAT(completed({"export", "--format", "csv", "picture_mode_s"}), ElementsAre("PICTURE_MODE_SELF"));
    EXPECT_THAT(completed({"import", m_root.string().substr(0, m_root.string().size() - 1)}),
                Contains(m_root.string()));
    EXPECT_THAT(completed({"log", "o"}), ElementsAre("on", "off"));
    EXPECT_THAT(completed({"completion", ""}), ElementsAre("bash"));
    EXPECT_THAT(completed({"--root", m_root.string().substr(0, m_root.string().size() - 1)}),
                Contains(m_root.string()));
    EXPECT_THAT(completed({"get", "picture_global"}), ElementsAre("PICTURE_GLOBAL"));
    EXPECT_THAT(completed({"verify", "PICTURE_MODE", "sound_eq_"}), ElementsAre("SOUND_EQ_WALLMOUNT"));
    EXPECT_THAT(completed({"--root", "tv", "get", "picture_mode", "hd"}),
                ElementsAre("HDMI1", "HDMI2", "HDMI3", "HDMI4"));
    EXPECT_THAT(completed({"get", "PICTURE_MODE", "HDMI1", "mo"}), ElementsAre("MOVIE"));
    EXPECT_THAT(completed({"get", "--json", "PICTURE_MODE", "HDMI1", "GAME,ener"}), ElementsAre("GAME,ENERGY_SAVING"));
    EXPECT_THAT(completed({"get", "PICTURE_MODE", "HDMI1..am"}), ElementsAre("HDMI1..AMAZON"));
    EXPECT_THAT(completed({"get", "PICTURE_MODE", "HDMI1", "0", "0", "con"}), ElementsAre("Contrast"));
    EXPECT_THAT(completed({"set", "PICTURE_MODE", "HDMI1", "0", "0", "con"}), ElementsAre("Contrast="));
    // Bash takes an assignment as three words.
    EXPECT_THAT(completed({"set", "PICTURE_MODE", "HDMI1", "0", "0", "Contrast", "="}), IsEmpty());
    EXPECT_THAT(completed({"set", "PICTURE_MODE", "HDMI1", "0", "0", "Contrast", "=", "5"}), IsEmpty());
    EXPECT_THAT(completed({"set", "PICTURE_MODE", "HDMI1", "0", "0", "Contrast", "=", "5", "hu"}), ElementsAre("Hue="));
    EXPECT_THAT(completed({"restore", "PICTURE_MODE", "HDMI1", "0", "0", ""}), IsEmpty());
    EXPECT_THAT(completed({"get", "NOTHING", "a"}), IsEmpty());
}

TEST_F(PagesTest, TheManualPageIsWellFormedAndComplete) {
    const Result page = runBare({"man"});
    ASSERT_EQ(page.code, 0);
    EXPECT_THAT(page.output, StartsWith(".TH DMCTL 1 "));
    for (const std::string& line : linesOf(page.output)) {
        if (line.front() != '.')
            continue;
        EXPECT_THAT(line.substr(0, 3), testing::AnyOf(".TH", ".SH", ".SS", ".TP", ".PP", ".nf", ".fi", ".RS", ".RE"));
    }
    for (const char* text :
         {".SH NAME\n", ".SS \"restore CATEGORY [INDEX...]\"", "\\fB\\-\\-from\\fR \\fIfactory|current",
          ".SH EXIT STATUS\n", "\\fB3\\fR\na running program"})
        EXPECT_THAT(page.output, HasSubstr(text));
    EXPECT_EQ(runJson({"man"})["page"], page.output);
    if (std::system("command -v groff >/dev/null") != 0)
        GTEST_SKIP() << "no groff here to format the page";
    const Result formatted = shell("dmctl man | groff -man -ww -Tascii");
    EXPECT_THAT(formatted.errors, IsEmpty());
    EXPECT_THAT(formatted.output, HasSubstr("set PICTURE_MODE 'HDMI*' MOVIE all Contrast=55"));
}

TEST_F(PagesTest, TheExamplesOfTheHelpWork) {
    ASSERT_EQ(run({"init"}).code, 0);
    int count = 0;
    for (const char* verb : {"categories", "get", "set", "restore", "apply", "factory-reset", "first-boot", "verify",
                             "repair", "export", "import", "info"}) {
        const std::string help = runBare({verb, "--help"}).output;
        for (std::string line : linesOf(help.substr(help.find("Examples:\n")))) {
            if (line.substr(0, 8) != "  dmctl ")
                continue;
            const std::size_t root = line.find("--root /tmp/tv ");
            if (root != std::string::npos)
                line.erase(root, 15);
            const Result result = shell("dmctl --root . " + line.substr(8));
            EXPECT_EQ(result.code, 0) << line << result.errors;
            ++count;
        }
    }
    EXPECT_GT(count, 12);
}

TEST_F(PagesTest, ThePageShowsWhatTheProgramDoes) {
    std::ifstream page(DMCTL_PAGE);
    std::string command;
    std::string shown;
    int count = 0;
    bool inBlock = false;
    const auto check = [&] {
        if (command.empty())
            return;
        const Result result = shell(command + " 2>&1");
        EXPECT_EQ(result.output, shown) << command;
        ++count;
        command.clear();
        shown.clear();
    };
    for (std::string line; std::getline(page, line);) {
        if (line == "```console" || line == "```") {
            check();
            inBlock = line == "```console";
        } else if (inBlock && line.substr(0, 2) == "$ ") {
            check();
            command = line.substr(2);
        } else if (inBlock) {
            shown += line + "\n";
        }
    }
    EXPECT_GT(count, 5);
}

} // namespace
} // namespace td::test
