#include "fileOperator/text/WrittenSection.h"

#include <cstring>

#include "fileOperator/text/TextLayout.h"

namespace td::text {

namespace {

std::string sectionOfZeros(const CategoryLayout& layout) {
    const int indices[MAX_DIMENSIONS] = {};
    const std::vector<int> record(layout.fields.size());
    std::string pattern(static_cast<std::size_t>(layout.sectionLength()) + 1, '\0');
    const int header = formatSectionId(layout, indices, pattern.data(), layout.sectionLength() + 1);
    formatSection(layout, record.data(), pattern.data() + header, layout.sectionLength() + 1 - header);
    pattern.pop_back();
    return pattern;
}

/// The index that a character stands for, or -1.
int indexOf(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'a' && c <= 'z' ? c - 'a' + 10 : -1;
}

// Per key line form: where the value stands, and how it is read. FIRST is what comes before the value, the same in
// every line of a key.

template <int FIRST_COLUMN, int COUNT>
struct Decimal {
    static constexpr int FIRST = FIRST_COLUMN;
    static constexpr int LENGTH = FIRST_COLUMN + COUNT + 1;

    /// Zero-padded digits, the first of which may be a minus sign instead.
    static bool read(const char* text, int& value) {
        const bool negative = text[0] == '-';
        unsigned int number = 0;
        unsigned int wrong = 0;
        for (int i = negative ? 1 : 0; i < COUNT; ++i) {
            const unsigned int digit = static_cast<unsigned char>(text[i]) - unsigned{'0'};
            wrong |= digit > 9 ? 1U : 0U;
            number = number * 10 + digit;
        }
        value = negative ? -static_cast<int>(number) : static_cast<int>(number);
        return wrong == 0;
    }
};

struct Hexadecimal {
    static constexpr int FIRST = 29;
    static constexpr int COUNT = 5;
    static constexpr int LENGTH = FIRST + COUNT + 1;

    /// Lower-case digits without leading zeros, padded with blanks in front.
    static bool read(const char* text, int& value) {
        int i = 0;
        while (i < COUNT - 1 && text[i] == ' ')
            ++i;
        if (text[i] == '0' && i < COUNT - 1)
            return false;
        value = 0;
        for (; i < COUNT; ++i) {
            const int digit = indexOf(text[i]);
            if (digit < 0 || digit > 15)
                return false;
            value = value * 16 + digit;
        }
        return true;
    }
};

} // namespace

WrittenSection::WrittenSection(const CategoryLayout& layout)
    : m_layout(layout), m_headerLength(layout.headerLength()), m_pattern(sectionOfZeros(layout)) {}

bool WrittenSection::read(const char* text, int* indices, int* record) const {
    if (!readHeader(text, indices))
        return false;
    switch (m_layout.keyLine) {
    case KeyLineForm::Decimal5:
        return readLines<Decimal<26, 5>>(text, record);
    case KeyLineForm::Hexadecimal5:
        return readLines<Hexadecimal>(text, record);
    case KeyLineForm::Decimal4:
        break;
    }
    return readLines<Decimal<27, 4>>(text, record);
}

bool WrittenSection::readHeader(const char* text, int* indices) const {
    if (m_layout.dimensions.empty())
        return m_pattern.compare(0, static_cast<std::size_t>(m_headerLength), text,
                                 static_cast<std::size_t>(m_headerLength)) == 0;
    if (*text++ != '[')
        return false;
    for (const Dimension& dimension : m_layout.dimensions) {
        const int index = indexOf(*text++);
        if (index < 0 || index >= dimension.count)
            return false;
        *indices++ = index;
    }
    return text[0] == ']' && text[1] == '\n';
}

template <class Form>
bool WrittenSection::readLines(const char* text, int* record) const {
    const char* pattern = m_pattern.data() + m_headerLength;
    text += m_headerLength;
    for (const Field& field : m_layout.fields) {
        if (std::memcmp(text, pattern, Form::FIRST) != 0 || text[Form::LENGTH - 1] != '\n' ||
            !Form::read(text + Form::FIRST, record[field.position]))
            return false;
        text += Form::LENGTH;
        pattern += Form::LENGTH;
    }
    return true;
}

} // namespace td::text
