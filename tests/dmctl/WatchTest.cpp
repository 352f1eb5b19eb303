#include "DmctlFixture.h"

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace td::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

/// dmctl running beside the test; what it prints is read line by line.
class Running {
public:
    explicit Running(const std::vector<std::string>& words) {
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        std::vector<char*> arguments{const_cast<char*>(DMCTL_PROGRAM)};
        for (const std::string& word : words)
            arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        m_id = fork();
        if (m_id == 0) {
            dup2(ends[1], STDOUT_FILENO);
            dup2(ends[1], STDERR_FILENO);
            close(ends[0]);
            close(ends[1]);
            execv(DMCTL_PROGRAM, arguments.data());
            _exit(127);
        }
        close(ends[1]);
        m_output = fdopen(ends[0], "r");
    }
    ~Running() {
        if (m_id > 0) {
            kill(m_id, SIGKILL);
            waitpid(m_id, nullptr, 0);
        }
        std::fclose(m_output);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    /// The next line, or nothing at the end.
    std::string line() {
        char* text = nullptr;
        std::size_t size = 0;
        const ssize_t length = getline(&text, &size, m_output);
        const std::string result = length > 0 ? std::string(text, static_cast<std::size_t>(length)) : std::string();
        std::free(text);
        return result;
    }
    void signal(int number) const { kill(m_id, number); }
    /// The exit code; -1 when it did not end by itself.
    int wait() {
        int status = 0;
        waitpid(m_id, &status, 0);
        m_id = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t m_id = 0;
    FILE* m_output = nullptr;
};

class WatchTest : public DmctlTest {
protected:
    WatchTest() { makeFiles(); }
};

TEST_F(WatchTest, PrintsChangesByNamesAndEndsAfterAsManyAsAsked) {
    Running watch({"--root", m_root.string(), "watch", "--count", "3"});
    EXPECT_THAT(watch.line(), HasSubstr("watching 52 files"));
    ASSERT_EQ(run({"set", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast=55", "Hue=-7"}).code, 0);
    EXPECT_THAT(watch.line(), EndsWith("  PICTURE_MODE  HDMI1, MOVIE, SDR_UHD  Contrast  50 -> 55\n"));
    EXPECT_THAT(watch.line(), EndsWith("  Hue  0 -> -7\n"));
    ASSERT_EQ(run({"set", "PICTURE_GLOBAL", "ApplyModeToSource=1"}).code, 0);
    EXPECT_THAT(watch.line(), EndsWith("  PICTURE_GLOBAL  PICTURE_GLOBAL  ApplyModeToSource  0 -> 1\n"));
    EXPECT_EQ(watch.wait(), 0);
}

TEST_F(WatchTest, WaitsForASoundFileAndFollowsOneThatIsReplaced) {
    Running watch({"watch", "PICTURE_MODE", "--json", "--root", m_root.string()});
    EXPECT_THAT(watch.line(), HasSubstr("watching 1 file "));
    // Neither half a file nor another category's is told of.
    const std::string good = m_root.read(CURRENT + MODE_FILE);
    m_root.write(CURRENT + MODE_FILE, good.substr(0, 100000));
    ASSERT_EQ(run({"set", "PICTURE_GLOBAL", "ApplyModeToSource=1"}).code, 0);
    const CategoryLayout& layout = *layoutOf(PICTURE_MODE);
    std::vector<int> table = defaultTable(layout);
    table.back() = 9;
    m_root.write("next", wholeFile(layout, "", table));
    std::filesystem::rename(m_root.file("next"), m_root.file(CURRENT + MODE_FILE));
    const Json change = Json::parse(watch.line());
    EXPECT_EQ(change["category"], "PICTURE_MODE");
    EXPECT_EQ(change["record"]["source"]["number"], 15);
    EXPECT_EQ(change["after"], 9);
    watch.signal(SIGTERM);
    EXPECT_EQ(watch.wait(), 0);
}

TEST_F(WatchTest, EndsOnInterruptAndWhenItsDirectoryGoes) {
    Running interrupted({"watch", "--root", m_root.string()});
    EXPECT_THAT(interrupted.line(), HasSubstr("watching"));
    interrupted.signal(SIGINT);
    EXPECT_EQ(interrupted.wait(), 0);

    Running orphaned({"watch", "--root", m_root.string()});
    EXPECT_THAT(orphaned.line(), HasSubstr("watching"));
    std::filesystem::remove_all(m_root.file(CURRENT));
    EXPECT_THAT(orphaned.line(), AllOf(HasSubstr(CURRENT), HasSubstr("is gone")));
    EXPECT_EQ(orphaned.wait(), 1);

    EXPECT_EQ(run({"watch"}).code, 1);
    EXPECT_EQ(run({"watch", "--count", "0"}).code, 2);
}

} // namespace
} // namespace td::test
