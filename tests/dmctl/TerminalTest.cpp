// What people see on a terminal: width, colours, progress and questions.
#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <pty.h>
#include <unistd.h>

#include "dmctl/DmctlFixture.h"

namespace td::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class TerminalTest : public DmctlTest {
protected:
    /// Runs dmctl on a terminal that is `columns` wide; `answer` is typed on it. Everything shown is the output.
    Result runOnTerminal(unsigned short columns, std::vector<std::string> words, const std::string& answer = "") const {
        words.insert(words.begin(), {DMCTL_PROGRAM, "--root", m_root.string()});
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        const winsize size{50, columns, 0, 0};
        int terminal = -1;
        const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
        if (child == 0) {
            execv(DMCTL_PROGRAM, arguments.data());
            _exit(127);
        }
        EXPECT_EQ(write(terminal, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
        Result result;
        char block[4096];
        for (ssize_t count = 0; (count = read(terminal, block, sizeof block)) > 0;)
            result.output.append(block, static_cast<std::size_t>(count));
        close(terminal);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return result;
    }
    /// The longest line, without escapes and without the progress, which is overwritten.
    static std::size_t widest(const std::string& output) {
        std::size_t most = 0;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            line.erase(line.find_last_not_of('\r') + 1);
            line.erase(0, line.rfind('\r') + 1);
            std::size_t width = 0;
            bool escape = false;
            for (const char c : line) {
                escape = escape || c == '\x1b';
                width += escape ? 0 : 1;
                escape = escape && std::isalpha(static_cast<unsigned char>(c)) == 0;
            }
            most = std::max(most, width);
        }
        return most;
    }
};

TEST_F(TerminalTest, TablesFitTheTerminalAndNothingIsLost) {
    makeFiles();
    const std::string full = runBare({"categories"}).output;
    EXPECT_GT(widest(full), 120U);
    for (const unsigned short columns : std::vector<unsigned short>{48, 80, 120})
        EXPECT_LE(widest(runOnTerminal(columns, {"categories"}).output), columns);
    EXPECT_EQ(widest(runOnTerminal(300, {"categories"}).output), widest(full));

    const Result records = runOnTerminal(60, {"get", "PICTURE_MODE", "HDMI1,HDMI2", "0", "0"});
    EXPECT_LE(widest(records.output), 60U);
    EXPECT_THAT(records.output, AllOf(HasSubstr("HDMI2, VIVID, SDR_FHD"), HasSubstr("  Contrast        = 50")));
    const Result many = runOnTerminal(80, {"set", "PICTURE_MODE", "all", "0", "all", "Hue=1"});
    EXPECT_THAT(many.output, AllOf(HasSubstr("and 88 more"), HasSubstr("128 values changed")));
}

TEST_F(TerminalTest, ColoursAndProgressAreForTerminals) {
    makeFiles();
    const std::string escape = "\x1b[";
    EXPECT_THAT(verify().output + verify().errors, Not(HasSubstr(escape)));
    EXPECT_THAT(run({"verify", "PICTURE_MODE", "--color"}).output, HasSubstr("\x1b[32mgood"));
    EXPECT_THAT(runOnTerminal(80, {"verify", "PICTURE_MODE"}).output, HasSubstr("\x1b[32mgood"));
    EXPECT_THAT(runOnTerminal(80, {"verify", "PICTURE_MODE", "--no-color"}).output, Not(HasSubstr(escape)));
    EXPECT_THAT(runOnTerminal(80, {"verify", "PICTURE_MODE", "PICTURE_GLOBAL"}).output, HasSubstr("1/2"));
    EXPECT_EQ(Json::parse(runOnTerminal(80, {"get", "PICTURE_GLOBAL", "--json"}).output)["category"], "PICTURE_GLOBAL");
}

TEST_F(TerminalTest, FactoryResetAsks) {
    ASSERT_EQ(run({"init"}).code, 0);
    ASSERT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Hue=1"}).code, 0);
    for (const char* answer : {"n\n", "\n", "\x04"}) {
        const Result no = runOnTerminal(80, {"factory-reset"}, answer);
        EXPECT_EQ(no.code, 1);
        EXPECT_THAT(no.output, AllOf(HasSubstr("[y/N]"), HasSubstr("nothing was changed")));
    }
    EXPECT_NE(m_root.read(CURRENT + MODE_FILE), m_root.read(FACTORY + MODE_FILE));
    EXPECT_EQ(runOnTerminal(80, {"factory-reset"}, "y\n").code, 0);
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), m_root.read(FACTORY + MODE_FILE));
}

} // namespace
} // namespace td::test
