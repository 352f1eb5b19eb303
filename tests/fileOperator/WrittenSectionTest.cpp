// The quick reading of sections answers what the careful one does, or leaves the section to it.

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/fileOperator/FileUserPictureMode.h>

#include "FakeParent.h"
#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"
#include "fileOperator/text/WrittenSection.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

struct Section {
    std::vector<int> indices;
    std::vector<int> record;
    friend bool operator==(const Section&, const Section&) = default;
};

std::string written(const CategoryLayout& layout, const Section& section) {
    char lines[text::SECTION_BUFFER];
    text::formatSection(layout, section.record.data(), lines, sizeof lines);
    return text::sectionId(layout, section.indices.data()) + "\n" + lines;
}

/// Line by line, with the functions that accept every form.
bool readCarefully(const CategoryLayout& layout, const std::string& text, Section& section) {
    std::istringstream lines(text);
    std::string line;
    const auto next = [&] {
        const bool found = static_cast<bool>(std::getline(lines, line));
        line += '\n';
        return found && line.size() < static_cast<std::size_t>(text::LINE_BUFFER);
    };
    if (!next() || !text::parseSectionId(layout, line.c_str(), section.indices.data()) ||
        !layout.accepts(section.indices.data()))
        return false;
    for (const Field& field : layout.fields) {
        if (!next())
            return false;
        section.record[static_cast<std::size_t>(field.position)] = text::valueByColumns(layout.keyLine, line.c_str());
    }
    return true;
}

bool readQuickly(const CategoryLayout& layout, const std::string& text, Section& section) {
    return text::WrittenSection(layout).read(text.c_str(), section.indices.data(), section.record.data());
}

Section emptySection(const CategoryLayout& layout) {
    return {std::vector<int>(layout.dimensions.size()), std::vector<int>(layout.fields.size())};
}

Section randomSection(const CategoryLayout& layout, std::mt19937& random) {
    Section section = emptySection(layout);
    layout.indicesOf(static_cast<int>(random() % static_cast<unsigned int>(layout.recordCount())),
                     section.indices.data());
    for (int& value : section.record) {
        do {
            value = static_cast<int>(random() % 200000) - 10000;
        } while (!text::fitsColumns(layout.keyLine, value));
    }
    return section;
}

TEST(WrittenSectionTest, NeverReadsAChangedByteOtherwiseThanTheCarefulWay) {
    constexpr char BYTES[] = "0123456789abfgzA[]#=-+ x\t\n\0\x80";
    std::mt19937 random(2);
    int readQuicklyToo = 0;
    for (const CategoryLayout* layout : allLayouts()) {
        for (int i = 0; i < 1000; ++i) {
            std::string text = written(*layout, randomSection(*layout, random));
            // Values are a small part of the text, and most changes elsewhere are refused.
            const std::size_t line = static_cast<std::size_t>(layout->lineLength());
            std::size_t at = random() % text.size();
            if (i % 2 == 0)
                at = static_cast<std::size_t>(layout->headerLength()) + line * (random() % layout->fields.size() + 1) -
                     1 - random() % 8;
            text[at] = BYTES[random() % (sizeof BYTES - 1)];
            Section quick = emptySection(*layout);
            if (!readQuickly(*layout, text, quick))
                continue;
            ++readQuicklyToo;
            Section careful = emptySection(*layout);
            ASSERT_TRUE(readCarefully(*layout, text, careful)) << layout->file << " byte " << at << ":\n" << text;
            ASSERT_TRUE(quick == careful) << layout->file << " byte " << at << ":\n" << text;
        }
    }
    EXPECT_GT(readQuicklyToo, 1000);
}

// --- whole files ---

class LoadingTest : public testing::Test {
protected:
    LoadingTest() {
        FileUserPictureMode op;
        op.setParent(&m_parent);
        EXPECT_TRUE(op.initFile(true));
        m_text = m_root.read(Copy::Current, FILE_NAME);
    }

    /// Loads `text` as the current copy; it must not be replaced by another copy.
    void load(const std::string& text) {
        m_root.write(Copy::Current, FILE_NAME, withChecksum(text));
        m_op = std::make_unique<FileUserPictureMode>();
        m_op->setParent(&m_parent);
        ASSERT_TRUE(m_op->loadFile());
        EXPECT_EQ(m_root.read(Copy::Current, FILE_NAME), withChecksum(text));
    }
    int contrast(const std::vector<int>& dims) { return valueOf(*m_op, dims, "Contrast"); }
    /// As written, with another value for every section, telling the position of it.
    std::string numbered() const {
        std::string text = m_text;
        int number = 0;
        for (std::size_t at = text.find("\nContrast"); at != std::string::npos; at = text.find("\nContrast", at + 1)) {
            std::string digits = std::to_string(number++);
            digits.insert(0, 4 - digits.size(), '0');
            text.replace(at + 28, 4, digits);
        }
        return text;
    }

    static constexpr const char* FILE_NAME = "pic_mode_usr.ini";
    static constexpr int LAST = 1535;

    LogCapture m_log;
    SettingsRoot m_root;
    FakeParent m_parent;
    std::unique_ptr<FileUserPictureMode> m_op;
    std::string m_text;
};

TEST_F(LoadingTest, GoesOnByLineFromTheFirstOddSection) {
    // An upper-case index, a short value and a section out of turn, each beyond the first piece that is read.
    std::string text = replaced(numbered(), "[4a0]", "[4A0]");
    text = replaced(text, "= 0771", "=  77 ");
    text = replaced(text, "\n[fb7]", "\n[fb6]");
    load(text);
    EXPECT_EQ(contrast({4, 10, 0}), 464);
    EXPECT_EQ(contrast({4, 10, 1}), 465);
    EXPECT_EQ(contrast({8, 0, 3}), 77);
    EXPECT_EQ(contrast({15, 11, 5}), LAST - 2);
    EXPECT_EQ(contrast({15, 11, 6}), LAST);
    EXPECT_EQ(contrast({15, 11, 7}), 0);
}

TEST_F(LoadingTest, ReadsLinesOfOtherLengthsToTheEnd) {
    std::string text = numbered();
    // Blanks behind the values of one section: the rest of the file is off the columns of the pieces.
    const std::size_t section = lineAt(text, "[7b7]");
    for (std::size_t at = text.find('\n', section + 6); at < section + 900; at = text.find('\n', at + 1)) {
        text.insert(at, "   ");
        at += 3;
    }
    load(text);
    EXPECT_EQ(contrast({7, 11, 7}), 767);
    EXPECT_EQ(contrast({15, 11, 7}), LAST);
}

TEST_F(LoadingTest, RefusesAFileThatEndsWithinASection) {
    for (const std::size_t missing : {1U, 32U, 770U}) {
        const std::string text = m_text.substr(0, m_text.size() - missing);
        m_root.write(Copy::Current, FILE_NAME, withChecksum(text));
        FileUserPictureMode op;
        op.setParent(&m_parent);
        m_log.clear();
        EXPECT_TRUE(op.loadFile());
        // A last line without its newline is a line; anything else is recovered from the backup.
        EXPECT_EQ(m_root.read(Copy::Current, FILE_NAME) == m_text, missing != 1U) << missing;
        EXPECT_EQ(m_log.count("Maybe the file format is wrong !!!\n") > 0, missing != 1U) << missing;
    }
}

} // namespace
} // namespace td::test
