/// Reads a section that stands byte for byte as the library writes it: one comparison and a few digits per line. What
/// stands otherwise may still be a section; the functions of TextLayout, which look at every character, read that.
#pragma once

#include <string>

#include "fileOperator/CategoryLayout.h"

namespace td::text {

class WrittenSection {
public:
    /// The layout must outlive it.
    explicit WrittenSection(const CategoryLayout& layout);

    /// Bytes of every section.
    int length() const { return static_cast<int>(m_pattern.size()); }
    /// Reads the section in the length() bytes from `text` on: its indices, which are in range, and its values. False,
    /// and both arrays unspecified, when any byte is not as the library would write it.
    bool read(const char* text, int* indices, int* record) const;

private:
    bool readHeader(const char* text, int* indices) const;
    template <class Form>
    bool readLines(const char* text, int* record) const;

    const CategoryLayout& m_layout;
    const int m_headerLength;
    const std::string m_pattern; ///< a section of zeros: where it differs, a section has its digits
};

} // namespace td::text
