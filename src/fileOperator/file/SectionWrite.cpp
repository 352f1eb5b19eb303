#include "fileOperator/file/SectionWrite.h"

#include <algorithm>

#include "common/Log.h"
#include "fileOperator/file/SettingsFile.h"
#include "fileOperator/text/TextLayout.h"

namespace td {

bool SectionWrite::begin() {
    SettingsFile& file = *m_file;
    std::sort(m_record.writes.begin(), m_record.writes.end(),
              [](const RedoRecord::Write& one, const RedoRecord::Write& other) { return one.offset < other.offset; });
    m_record.contentPosition = file.contentPosition();
    m_record.crcPosition = file.summary().crcPosition;
    m_hasRecord = (file.knownChecksum().after(file.stream().descriptor(), m_record, m_record.crc) ||
                   checksumAfter(file.openPath(), m_record, m_record.crc)) &&
                  storeRedo(file.openPath(), m_record);
    if (!m_hasRecord)
        TD_INFO("no redo record for file [%s], the store goes on without.\n", file.openPath().c_str());
    file.makeNameDurable();
    if (writeSections())
        return m_hasRecord || file.stream().syncFile();
    if (!m_hasRecord)
        file.unended().keep(m_record, file.identity());
    m_hasRecord = false;
    // A file that failed once is not to be trusted with another write.
    file.close();
    return false;
}

bool SectionWrite::writeSections() {
    FileUtil& stream = m_file->stream();
    const DeferredSync deferred(stream, true);
    return std::all_of(m_record.writes.begin(), m_record.writes.end(), [&](const RedoRecord::Write& write) {
        return stream.setPos(write.offset) && stream.writeFile(write.bytes.c_str(), true);
    });
}

bool SectionWrite::end() {
    m_isOnDisk = writeChecksum();
    // A record whose end failed stays, for the next time that the files are taken.
    if (m_isOnDisk && m_hasRecord)
        clearRedo(m_file->openPath());
    tell();
    return m_isOnDisk;
}

bool SectionWrite::writeChecksum() {
    SettingsFile& file = *m_file;
    FileUtil& stream = file.stream();
    unsigned int crc = m_record.crc;
    if (!m_hasRecord && !file.contentChecksum(crc)) {
        TD_WARNING("Update summay info for file [%s] failed because of crc code.\n", file.path().load());
        return false;
    }
    if (file.summary().crcLineLength != text::CRC_LINE_LENGTH || !stream.setPos(file.summary().crcPosition)) {
        TD_WARNING("Update summay info for file [%s] failed because of set pos.\n", file.path().load());
        return false;
    }
    const DeferredSync deferred(stream, true);
    if (!stream.writeFile(text::crcLine(crc).c_str(), true))
        return false;
    file.knownChecksum().mark(stream.descriptor(), file.contentPosition(), crc);
    if (!stream.syncFile()) {
        // Whether the system keeps what it could not write to the disk is not known.
        file.knownChecksum().forget();
        return false;
    }
    file.crc = crc;
    return true;
}

} // namespace td
