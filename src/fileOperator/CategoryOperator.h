/// The operator of one category: its record type, number of dimensions and event class on top of TableOperator. All
/// members only translate; a category derives from this, hands over its layout, and adds what is special about it.
///
/// Members that touch the file are called with the critical section held.
#pragma once

#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

#include <dataModule/fileOperator/TableOperator.h>

namespace td {

/// `Self` is the category's class; `Record` its record, a structure of ints or an array of int; `EventType` its event.
/// `Base` is TableOperator, or what several categories share on top of it.
template <class Self, class Record, class EventType, int DIMENSIONS, class Base = TableOperator,
          class Sequence = std::make_integer_sequence<int, DIMENSIONS>>
class CategoryOperator;

template <class Self, class Record, class EventType, int DIMENSIONS, class Base, int... I>
class CategoryOperator<Self, Record, EventType, DIMENSIONS, Base, std::integer_sequence<int, I...>> : public Base {
    /// One int per dimension, for parameter lists.
    template <int>
    using Index = int;

    static_assert(std::is_trivially_copyable<Record>::value && std::is_standard_layout<Record>::value &&
                      sizeof(Record) % sizeof(int) == 0 && alignof(Record) == alignof(int),
                  "a record is a row of integers");

public:
    /// Whether every index is within its dimension.
    bool checkDimension(Index<I>&... indices) const {
        const int given[(DIMENSIONS > 0 ? DIMENSIONS : 1)] = {indices...};
        return this->acceptsIndices(given);
    }
    /// Writes the header line "[...]\n" as snprintf does; its length.
    int buildSectionId(Index<I>&... indices, char* out, int size) {
        const int given[(DIMENSIONS > 0 ? DIMENSIONS : 1)] = {indices...};
        return this->formatId(given, out, size);
    }
    /// Reads a header line; true when every index is matched. Ranges are not checked.
    bool parseSection(const char* line, Index<I>&... indices) const {
        int read[(DIMENSIONS > 0 ? DIMENSIONS : 1)] = {indices...};
        const bool parsed = this->parseId(line, read);
        const int* next = read;
        ((indices = *next++), ...);
        static_cast<void>(next);
        return parsed;
    }
    /// Writes the key lines of a record as snprintf does; their length.
    int buildSectionContent(Record& record, char* out, int size) {
        return this->formatContent(values(record), out, size);
    }
    /// Writes a section at the current position of the file, with its header line if asked for. False, and nothing is
    /// written, when a value does not fit its columns.
    bool writeSection(Index<I>... indices, Record& record, bool withHeader) {
        const int given[(DIMENSIONS > 0 ? DIMENSIONS : 1)] = {indices...};
        return this->writeRecord(given, values(record), withHeader);
    }
    /// Reads the key lines at the current position by their columns.
    bool readSection(Record& record) { return this->readRecord(values(record)); }
    /// Reads key lines by key up to the next header line, which is left in `line` (128 bytes), or the end of the file.
    bool readSection_OTA(char* line, Record& record, bool& endOfFile) {
        return this->readRecordByKey(line, values(record), endOfFile);
    }
    /// Appends the whole record, in record order.
    void getSectionFieldsFromData(const Record& record, std::vector<_Argument_t>& args) const {
        this->listFields(values(record), args);
    }
    /// Fills in the named fields.
    void getPartFieldsFromData(const Record& record, std::vector<_Argument_t>& args) const {
        this->getFields(values(record), args);
    }
    /// Takes over the named fields; `changed` is set when one differed.
    void putFieldsToData(const std::vector<_Argument_t>& args, Record& record, bool& changed) const {
        this->putFields(args, values(record), changed);
    }
    /// Takes over one field by the key of its line.
    void putFieldsToData(const char* key, const int& value, Record& record) const {
        this->putField(key, value, values(record));
    }
    /// Logs one record of the table while the detail log is on.
    void printValues(const Index<I>&... indices) {
        const int given[(DIMENSIONS > 0 ? DIMENSIONS : 1)] = {indices...};
        if (this->acceptsIndices(given))
            this->dumpValues(given);
    }

protected:
    template <class... Arguments>
    explicit CategoryOperator(const CategoryLayout& layout, const Arguments&... arguments)
        : Base(layout, arguments...) {}

    Event* makeEvent(const std::vector<int>& dims, const int* record) override {
        Record copy;
        std::memcpy(&copy, record, sizeof copy);
        return new EventType(static_cast<Self*>(this), dims, copy);
    }
    const int* recordOf(const Event& event) const override {
        const auto* own = dynamic_cast<const EventType*>(&event);
        return own != nullptr ? own->values() : nullptr;
    }

private:
    static int* values(Record& record) { return reinterpret_cast<int*>(&record); }
    static const int* values(const Record& record) { return reinterpret_cast<const int*>(&record); }
};

} // namespace td
