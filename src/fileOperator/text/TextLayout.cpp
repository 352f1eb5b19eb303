#include "fileOperator/text/TextLayout.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>

namespace td::text {

namespace {

constexpr const char* COMMENT_EDGE = "#----------------------- Description -------------------------------------#\n";

/// Columns of a value that is read by position. The 23-character form starts one column earlier, which is the blank
/// before the value of a 24-character line: both widths are read.
struct Columns {
    int first;
    int count;
};

Columns valueColumns(KeyLineForm form) {
    switch (form) {
    case KeyLineForm::Decimal5:
        return {26, 5};
    case KeyLineForm::Hexadecimal5:
        return {27, 7};
    case KeyLineForm::Decimal4:
        break;
    }
    return {27, 4};
}

bool isBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

const char* skipBlanks(const char* text) {
    while (isBlank(*text))
        ++text;
    return text;
}

int digitValue(char c, int base) {
    int digit = INT_MAX;
    if (c >= '0' && c <= '9')
        digit = c - '0';
    else if (c >= 'a' && c <= 'f')
        digit = c - 'a' + 10;
    else if (c >= 'A' && c <= 'F')
        digit = c - 'A' + 10;
    return digit < base ? digit : -1;
}

/// Reads a number as scanf does from at most `width` characters of `text`, the sign counted. What follows it; null
/// without a digit.
const char* scanNumber(const char* text, int width, int base, unsigned int& value) {
    bool negative = false;
    if (width > 0 && (*text == '-' || *text == '+')) {
        negative = *text == '-';
        ++text;
        --width;
    }
    if (base == 16 && width > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text += 2;
        width -= 2;
    }
    int digit = width > 0 ? digitValue(*text, base) : -1;
    if (digit < 0)
        return nullptr;
    unsigned int number = 0;
    while (digit >= 0) {
        number = number * static_cast<unsigned int>(base) + static_cast<unsigned int>(digit);
        ++text;
        digit = --width > 0 ? digitValue(*text, base) : -1;
    }
    value = negative ? 0U - number : number;
    return text;
}

/// A comment line: '#', the text, blanks up to the closing '#'.
void appendCommentLine(std::string& block, const std::string& text) {
    constexpr std::size_t INNER = COMMENT_LINE_LENGTH - 3;
    std::string inner = text.substr(0, INNER);
    inner.resize(INNER, ' ');
    block += '#';
    block += inner;
    block += "#\n";
}

std::string dimensionLine(const CategoryLayout& layout) {
    if (layout.dimensionLine != nullptr)
        return layout.dimensionLine;
    if (layout.dimensions.empty())
        return std::string("[") + GLOBAL_SECTION + "]: No dimension";
    std::string line = "[";
    for (const Dimension& dimension : layout.dimensions)
        line += std::string("(") + dimension.name + ")";
    return line + "]: " + std::to_string(layout.dimensionCount()) + " dimension";
}

void appendValueList(std::string& block, const Dimension& dimension) {
    appendCommentLine(block, std::string("   ") + dimension.heading);
    const TextList& rows = dimension.commentRows;
    for (int i = 0; i < rows.count; ++i)
        appendCommentLine(block, std::string("       ") + rows.texts[i]);
    if (rows.count > 0)
        return;
    for (int i = 0; i < dimension.valueNames.count; ++i)
        appendCommentLine(block, std::string("       ") + indexDigit(i) + "--" + dimension.valueNames.texts[i]);
}

/// Copies as snprintf does: what fits, terminated.
int emit(const char* text, int length, char* out, int size) {
    if (size > 0) {
        const int copied = std::min(length, size - 1);
        std::memcpy(out, text, static_cast<std::size_t>(copied));
        out[copied] = '\0';
    }
    return length;
}

} // namespace

bool isComment(const char* line) {
    return std::strchr(line, '#') != nullptr;
}

std::string commentBlock(const CategoryLayout& layout) {
    std::string block = COMMENT_EDGE;
    appendCommentLine(block, " pupose:");
    appendCommentLine(block, std::string("   --  ") + layout.purpose);
    appendCommentLine(block, "   " + dimensionLine(layout));
    appendCommentLine(block, "");
    for (const Dimension& dimension : layout.dimensions)
        appendValueList(block, dimension);
    return block + COMMENT_EDGE;
}

std::string summary(const char* tvType, const char* version, unsigned int crc, bool withHeader) {
    char lines[SECTION_BUFFER];
    std::snprintf(lines, sizeof lines, "%s%-24s = %-16.16s\n%-24s = %-8.8s\n", withHeader ? SUMMARY_HEADER : "", "SN",
                  tvType, "Version", version);
    return lines + crcLine(crc);
}

std::string crcLine(unsigned int crc) {
    char line[LINE_BUFFER];
    std::snprintf(line, sizeof line, "%-24s = 0x%08x\n", "CRC", crc);
    return line;
}

void parseSummaryText(const char* line, int width, char* out) {
    const char* value = skipBlanks(line);
    for (int i = 0; i < KEY_WIDTH && *value != '\0' && !isBlank(*value); ++i)
        ++value;
    value = skipBlanks(value);
    int length = 0;
    if (*value == '=') {
        value = skipBlanks(value + 1);
        while (length < width && value[length] != '\0' && !isBlank(value[length]))
            ++length;
    }
    std::memcpy(out, value, static_cast<std::size_t>(length));
    out[length] = '\0';
}

bool parseCrc(const char* line, unsigned int& crc) {
    const char* value = skipBlanks(line);
    for (int i = 0; i < KEY_WIDTH && *value != '\0' && !isBlank(*value); ++i)
        ++value;
    value = skipBlanks(value);
    if (*value != '=')
        return false;
    value = skipBlanks(value + 1);
    if (value[0] != '0' || value[1] != 'x')
        return false;
    return scanNumber(skipBlanks(value + 2), 8, 16, crc) != nullptr;
}

char indexDigit(int index) {
    return static_cast<char>(index < 10 ? '0' + index : 'a' + (index - 10));
}

std::string sectionId(const CategoryLayout& layout, const int* indices) {
    std::string id = "[";
    if (layout.dimensions.empty())
        id += GLOBAL_SECTION;
    for (int d = 0; d < layout.dimensionCount(); ++d)
        id += indexDigit(indices[d]);
    return id + "]";
}

int formatSectionId(const CategoryLayout& layout, const int* indices, char* out, int size) {
    char line[LINE_BUFFER];
    int length = 0;
    line[length++] = '[';
    if (layout.dimensions.empty()) {
        for (const char* c = GLOBAL_SECTION; *c != '\0'; ++c)
            line[length++] = *c;
    }
    for (int d = 0; d < layout.dimensionCount(); ++d)
        line[length++] = indexDigit(indices[d]);
    line[length++] = ']';
    line[length++] = '\n';
    return emit(line, length, out, size);
}

bool parseSectionId(const CategoryLayout& layout, const char* line, int* indices) {
    if (line == nullptr)
        return false;
    if (layout.dimensions.empty())
        return true;
    if (*line++ != '[')
        return false;
    for (int d = 0; d < layout.dimensionCount(); ++d) {
        if (layout.dimensions[static_cast<std::size_t>(d)].digits == DigitForm::Hexadecimal) {
            line = skipBlanks(line);
            const int digit = digitValue(*line, 16);
            if (digit < 0)
                return false;
            indices[d] = digit;
        } else {
            const unsigned char c = static_cast<unsigned char>(*line);
            if (c == '\0')
                return false;
            if (c > '`')
                indices[d] = c - 'a' + 10;
            else if (c >= '0' && c <= '9')
                indices[d] = c - '0';
        }
        ++line;
    }
    return true;
}

bool fitsColumns(KeyLineForm form, int value) {
    switch (form) {
    case KeyLineForm::Decimal5:
        return value >= -9999 && value <= 99999;
    case KeyLineForm::Hexadecimal5:
        return value >= 0 && value <= 0xFFFFF;
    case KeyLineForm::Decimal4:
        break;
    }
    return value >= -999 && value <= 9999;
}

int formatKeyLine(KeyLineForm form, const char* key, int value, char* out, int size) {
    char line[LINE_BUFFER];
    int length = 0;
    switch (form) {
    case KeyLineForm::Decimal4:
        length = std::snprintf(line, sizeof line, "%-24s = %04d\n", key, value);
        break;
    case KeyLineForm::Decimal5:
        length = std::snprintf(line, sizeof line, "%-23s = %05d\n", key, value);
        break;
    case KeyLineForm::Hexadecimal5:
        length = std::snprintf(line, sizeof line, "%-24s = 0x%5x\n", key, static_cast<unsigned int>(value));
        break;
    }
    return emit(line, std::min(length, LINE_BUFFER - 1), out, size);
}

int formatSection(const CategoryLayout& layout, const int* record, char* out, int size) {
    int length = 0;
    for (const Field& field : layout.fields) {
        const int room = std::max(size - length, 0);
        length += formatKeyLine(layout.keyLine, field.key, record[field.position], out + std::min(length, size), room);
    }
    return length;
}

int valueByColumns(KeyLineForm form, const char* line) {
    const Columns columns = valueColumns(form);
    char value[LINE_BUFFER] = {};
    const int length = static_cast<int>(strnlen(line, LINE_BUFFER));
    if (length > columns.first)
        std::memcpy(value, line + columns.first,
                    static_cast<std::size_t>(std::min(columns.count, length - columns.first)));
    unsigned int number = 0;
    if (form == KeyLineForm::Hexadecimal5) {
        if (value[0] == '0' && value[1] == 'x')
            scanNumber(skipBlanks(value + 2), 5, 16, number);
        return static_cast<int>(number);
    }
    const char* start = skipBlanks(value);
    scanNumber(start, static_cast<int>(std::strlen(start)), 10, number);
    return static_cast<int>(number);
}

bool parseKeyLine(KeyLineForm form, const char* line, char* key, int& value) {
    const char* start = skipBlanks(line);
    int length = 0;
    while (length < keyWidth(form) && start[length] != '\0' && !isBlank(start[length]))
        ++length;
    if (length == 0)
        return false;
    const char* rest = skipBlanks(start + length);
    if (*rest != '=')
        return false;
    rest = skipBlanks(rest + 1);
    int width = form == KeyLineForm::Decimal4 ? 4 : 5;
    int base = 10;
    if (form == KeyLineForm::Hexadecimal5) {
        if (rest[0] != '0' || rest[1] != 'x')
            return false;
        rest = skipBlanks(rest + 2);
        base = 16;
    }
    unsigned int number = 0;
    rest = scanNumber(rest, width, base, number);
    // The first digits of a longer number are another number.
    if (rest == nullptr || digitValue(*rest, base) >= 0)
        return false;
    std::memcpy(key, start, static_cast<std::size_t>(length));
    key[length] = '\0';
    value = static_cast<int>(number);
    return true;
}

} // namespace td::text
