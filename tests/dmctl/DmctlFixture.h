/// Runs the real dmctl on a root of the test's own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/wait.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <dmctl/inspect/FileInspection.h>

#include "fileOperator/OperatorFactory.h"
#include "TemporaryDirectory.h"

namespace td::test {

using Json = nlohmann::json;

inline const std::string CURRENT = "/var/local/dataModule/current/";
inline const std::string BACKUP = "/var/local/dataModule/backup/";
inline const std::string FACTORY = "/ovdata/model/dataModule/manufactory/";
inline const std::string MODE_FILE = "pic_mode_usr.ini";

struct Result {
    int code = -1; ///< -1: did not end by itself
    std::string output;
    std::string errors;
};

inline std::string quoted(const std::string& word) {
    std::string result = "'";
    for (const char c : word)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

class DmctlTest : public testing::Test {
protected:
    /// Runs dmctl with these words only.
    Result runBare(const std::vector<std::string>& words) const {
        std::string command = quoted(DMCTL_PROGRAM);
        for (const std::string& word : words)
            command += " " + quoted(word);
        command += " >" + quoted(m_output.file("out")) + " 2>" + quoted(m_output.file("err"));
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, m_output.read("out"), m_output.read("err")};
    }
    /// Runs dmctl on the test's root.
    Result run(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--root", m_root.string()});
        return runBare(words);
    }
    Json runJson(std::vector<std::string> words) const {
        words.emplace_back("--json");
        const Result result = run(words);
        EXPECT_EQ(result.code, 0) << result.errors;
        return Json::parse(result.output);
    }
    /// Makes the files of the two categories that the tests use, as init would make them among all others.
    void makeFiles(const char* tvType = "") const {
        for (const _DataCategory_t category : {PICTURE_GLOBAL, PICTURE_MODE}) {
            const CategoryLayout& layout = *layoutOf(category);
            const std::string bytes = wholeFile(layout, tvType, defaultTable(layout));
            for (const std::string& directory : {CURRENT, BACKUP, FACTORY})
                m_root.write(directory + layout.file, bytes);
        }
    }
    Result verify() const { return run({"verify", "PICTURE_GLOBAL", "PICTURE_MODE"}); }
    void changeByte(const std::string& file, std::size_t at) const {
        std::string bytes = m_root.read(file);
        bytes.at(at) = static_cast<char>(bytes.at(at) ^ 1);
        m_root.write(file, bytes);
    }

    const TemporaryDirectory m_root;
    const TemporaryDirectory m_output;
};

} // namespace td::test
