#include <string>

#include <gtest/gtest.h>

#include "common/Log.h"
#include "LogCapture.h"

namespace td {
namespace {

using test::LogCapture;

} // namespace

TEST(Log, PrefixesTheLineWithItsOrigin) {
    const LogCapture log;
    const int line = __LINE__ + 1;
    TD_WARNING("value %d of [%s]\n", 5, "name");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].level, DebugOutput::Level::Warning);
    EXPECT_EQ(log.lines()[0].text,
              "LogTest.cpp:" + std::to_string(line) + ":TestBody(): [dataModule] value 5 of [name]\n");
}

TEST(Log, PrintsLongLinesWhole) {
    const LogCapture log;
    const std::string prefix = "f.cpp:1:g(): [dataModule] ";
    // Around the size of the buffer on the stack, where cutting would begin, and far above it.
    for (const std::size_t size : {1022U, 1023U, 1024U, 1025U, 100000U}) {
        const std::string text(size - prefix.size(), 'x');
        log::print(DebugOutput::Level::Error, "/src/f.cpp", 1, "g", "%s", text.c_str());
        EXPECT_EQ(log.lines().back().text, prefix + text) << size;
    }
}

TEST(Log, MakesNoLineThatNobodyWants) {
    const LogCapture log;
    int evaluated = 0;
    DebugOutput::setLevel(DebugOutput::Level::Warning);
    TD_INFO("%d", ++evaluated);
    TD_LOG(DebugOutput::Level::Debug, "%d", ++evaluated);
    EXPECT_EQ(evaluated, 0);
    TD_ERROR("%d", ++evaluated);
    EXPECT_EQ(evaluated, 1);
    DebugOutput::setLevel(DebugOutput::Level::Info);
    TD_INFO("%d", ++evaluated);
    EXPECT_EQ(evaluated, 2);
    EXPECT_EQ(log.lines().size(), 2U);
}

} // namespace td
