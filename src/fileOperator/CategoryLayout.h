/// One category as data: everything that tells it from another. Table, text, parsing, lookups, comparison, copying,
/// printing, help and documents are all made from this. A layout is built once, never changes and lives for the rest of
/// the process; it may be read from any thread. All texts are literals.
#pragma once

#include <vector>

#include <dataModule/DataTypes.h>

namespace td {

/// Most dimensions a category may have.
constexpr int MAX_DIMENSIONS = 5;
/// Most fields a record may have: what a set of bits can name.
constexpr int MAX_FIELDS = 64;

/// How an index stands in a section id.
enum class DigitForm {
    Hexadecimal, ///< "%1x": 0-9, a-f
    Character,   ///< "%1c": 0-9, then a and on for 10 and above
};

/// How a value stands in its key line.
enum class KeyLineForm {
    Decimal4,     ///< "%-24s = %04d\n", 32 bytes
    Decimal5,     ///< "%-23s = %05d\n", 32 bytes
    Hexadecimal5, ///< "%-24s = 0x%5x\n", 35 bytes
};

/// A list of literals.
struct TextList {
    const char* const* texts = nullptr;
    int count = 0;

    constexpr TextList() = default;
    template <int N>
    constexpr TextList(const char* const (&list)[N]) : texts(list), count(N) {}
};

/// One dimension of a category.
struct Dimension {
    const char* name = nullptr;    ///< as the comment block's dimension line brackets it
    const char* heading = nullptr; ///< the comment line that opens its value list
    int count = 0;                 ///< indices 0 to count - 1 are accepted
    TextList valueNames = {};      ///< value names from index 0; may list more or fewer than are accepted
    DigitForm digits = DigitForm::Hexadecimal;
    TextList commentRows = {}; ///< the value list as it stands, where it is not "digit--name" per value name
};

/// Whether and how a field is part of a whole-record answer.
enum class Listing {
    Named,    ///< by its argument name
    Nameless, ///< its place and value, with a null name
    Hidden,   ///< left out; reachable by name only
};

/// One field of a record. Fields are declared in the order of their key lines.
struct Field {
    const char* key;                  ///< in the file
    int position;                     ///< number of the integer in the record
    int defaultValue = 0;             ///< in a newly created file
    const char* label = nullptr;      ///< in value dumps; null: the key
    Listing listing = Listing::Named; ///< in whole-record answers
    const char* argument = nullptr;   ///< name in requests; null: the key

    /// A field of a record structure.
    template <class Record>
    Field(const char* fieldKey, int Record::*member, int fieldDefault = 0, const char* dumpLabel = nullptr,
          const char* argumentName = nullptr)
        : key(fieldKey), position(positionOf(member)), defaultValue(fieldDefault), label(dumpLabel),
          argument(argumentName) {}
    /// A field of a record that is a plain array.
    Field(const char* fieldKey, int index, Listing how = Listing::Named)
        : key(fieldKey), position(index), listing(how) {}

    const char* argumentName() const { return argument != nullptr ? argument : key; }
    const char* dumpLabel() const { return label != nullptr ? label : key; }

private:
    template <class Record>
    static int positionOf(int Record::*member) {
        const Record probe{};
        const char* base = reinterpret_cast<const char*>(&probe);
        return static_cast<int>((reinterpret_cast<const char*>(&(probe.*member)) - base) /
                                static_cast<int>(sizeof(int)));
    }
};

/// Copying one record to others: which axes are swept, and how.
struct BulkCopy {
    unsigned axes = 0; ///< bit per swept dimension; 0: not offered, the base class answers
    /// Write each changed section at once on the calling thread, and the checksum once, instead of posting events.
    bool writesAtOnce = false;
    const char* startMessage = nullptr; ///< logged before the walk, if any
    const char* endMessage = "apply data to all other source completely, elpased time = %d (ms).\n";
    /// Whether `other` counts as equal to `given`; null: all fields are compared.
    bool (*equal)(const int* other, const int* given) = nullptr;
};

/// Restoring one record from the factory copy for all values of the swept axes.
struct BulkRestore {
    enum class Kind {
        NotOffered,   ///< the base class answers
        SilentlyTrue, ///< does nothing
        PostChanged,  ///< reloads each, posts those that differ from the given record as it stands in the table
        PostEach,     ///< restores each as restoreSetting does; without axes just the addressed record
    };
    Kind kind = Kind::NotOffered;
    unsigned axes = 0;
};

/// Lines of a store besides those that every category logs. The first three are formats that take the indices of up to
/// two dimensions.
struct StoreMessages {
    const char* asked = nullptr;     ///< before the indices are checked
    const char* refused = nullptr;   ///< an index is out of range
    const char* updated = nullptr;   ///< the table holds the values
    const char* completed = nullptr; ///< at the end; takes the elapsed milliseconds
};

/// Names the key reader of version merges goes by.
enum class MergeNames {
    Keys,      ///< the keys of the file; unknown ones are ignored
    Arguments, ///< the argument names only; unknown ones are logged
};

/// What a category declares. Made once and never destroyed: threads of the library go by it while the process exits.
/// One that cannot be kept in a file is refused when it is made: std::logic_error, which names the category.
struct CategoryLayout {
    _DataCategory_t category;
    const char* file;
    const char* version; ///< at most 7 characters
    const char* purpose; ///< the comment block's purpose line behind "#   --  "
    /// The comment block's dimension line where it is not made of the dimensions' names and number.
    const char* dimensionLine = nullptr;
    std::vector<Dimension> dimensions = {};
    std::vector<Field> fields; ///< in the order of the key lines
    KeyLineForm keyLine = KeyLineForm::Decimal4;
    MergeNames mergeNames = MergeNames::Keys;
    const char* dumpPrefix = "";  ///< opens a value dump
    const char* dumpEnd = ". \n"; ///< closes it
    StoreMessages storeMessages = {};
    const char* searchSeparator = ""; ///< between the indices where lines about a search name the section
    /// Format; takes the path.
    const char* restoreFromCurrentFailed = "Load data from file [%s] failed when restore setting from current.\n";
    const char* applyFlag = nullptr; ///< the flag of PICTURE_GLOBAL that makes a store apply to all sources
    BulkCopy applyToAllSources = {};
    BulkCopy applyToAllModes = {};
    BulkRestore restoreForAllSources = {};
    bool restoresFromCurrent = true; ///< otherwise the base class answers
    const bool isSound = checked();  ///< always; not to be given

    int dimensionCount() const { return static_cast<int>(dimensions.size()); }
    int fieldCount() const { return static_cast<int>(fields.size()); }
    /// Records of the table: the product of the dimensions' counts.
    int recordCount() const;
    /// Whether every index is within its dimension.
    bool accepts(const int* indices) const;
    /// Row-major number of an accepted record.
    int recordIndex(const int* indices) const;
    /// The indices of a record.
    void indicesOf(int record, int* indices) const;
    /// The field that requests name so, or null (also for null).
    const Field* fieldByArgument(const char* name) const;
    /// The field whose key line is so named, or null.
    const Field* fieldByKey(const char* key) const;

    /// Bytes of a section's header line, of one key line, and of a whole section.
    int headerLength() const;
    int lineLength() const;
    int sectionLength() const { return headerLength() + fieldCount() * lineLength(); }
    /// Where a record's key lines begin, from the first section on, and their bytes.
    int keyLinesOffset(int record) const { return record * sectionLength() + headerLength(); }
    int keyLinesLength() const { return fieldCount() * lineLength(); }
    /// Bytes of the content block of a complete file.
    int contentLength() const { return recordCount() * sectionLength(); }

private:
    bool checked() const;
};

/// The name of a category, or "UNKNOWN_CATAGORY" for what is none.
const char* categoryName(_DataCategory_t category);

/// Name of the one section of a category without dimensions.
constexpr const char* GLOBAL_SECTION = "Global";

/// Bit of an axis for BulkCopy and BulkRestore.
constexpr unsigned axisBit(int dimension) {
    return 1U << static_cast<unsigned>(dimension);
}

/// Walks, in row-major order, over every record reached from a given one by sweeping some axes; the given one is among
/// them. for (AxisSweep sweep(layout, given, axes); !sweep.done(); sweep.next()) ... sweep.indices() ...
class AxisSweep {
public:
    AxisSweep(const CategoryLayout& layout, const int* given, unsigned axes);
    bool done() const { return m_done; }
    void next();
    const int* indices() const { return m_indices; }

private:
    bool sweeps(int dimension) const { return (m_axes & axisBit(dimension)) != 0; }

    const CategoryLayout& m_layout;
    unsigned m_axes;
    int m_indices[MAX_DIMENSIONS] = {};
    bool m_done = false;
};

} // namespace td
