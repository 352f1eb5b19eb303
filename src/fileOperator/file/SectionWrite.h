/// One write in place, from its sections to its checksum line: one piece that a cut of power does or does not divide
/// from its checksum. Sections are collected by add(). begin() puts a redo record on the disk and writes them; end()
/// writes the checksum line, syncs both together and ends the record. Without a record, for want of room or whatever,
/// the sections are synced before the checksum is written.
///
/// A write that comes to its end without end(), or fails in it, has failed; whoever waits is told either way.
///
/// The file is the open current copy, which the caller has for itself.
#pragma once

#include <memory>
#include <string>

#include "fileOperator/file/RedoRecord.h"

namespace td {

class SettingsFile;

/// Is told what became of a write.
class WriteResult {
public:
    virtual ~WriteResult() = default;
    /// All of it is on the disk, with its checksum, or it is not known to be.
    virtual void ended(bool isOnDisk) = 0;
};

class SectionWrite {
public:
    explicit SectionWrite(SettingsFile& file, std::unique_ptr<WriteResult> result = nullptr)
        : m_file(&file), m_result(std::move(result)) {}
    SectionWrite(SectionWrite&& other) noexcept = default;
    SectionWrite& operator=(SectionWrite&& other) noexcept {
        tell();
        m_file = other.m_file;
        m_record = std::move(other.m_record);
        m_hasRecord = other.m_hasRecord;
        m_isOnDisk = other.m_isOnDisk;
        m_result = std::move(other.m_result);
        return *this;
    }
    ~SectionWrite() { tell(); }

    void add(int position, const std::string& text) { m_record.writes.push_back({position, text}); }
    bool isEmpty() const { return m_record.writes.empty(); }
    bool begin();
    /// Of a write without sections: a new checksum for whatever the file holds.
    bool end();
    /// The record was ended by somebody else.
    void recordWasEnded() { m_hasRecord = false; }

private:
    bool writeSections();
    bool writeChecksum();
    void tell() {
        if (m_result)
            m_result->ended(m_isOnDisk);
        m_result.reset();
    }

    SettingsFile* m_file;
    RedoRecord m_record;
    bool m_hasRecord = false; ///< on the disk
    bool m_isOnDisk = false;
    std::unique_ptr<WriteResult> m_result;
};

} // namespace td
