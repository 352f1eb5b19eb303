/// The checksum of the settings files: CRC-32 with the reflected polynomial 0xEDB88320, initial value 0xFFFFFFFF and no
/// final inversion (CRC-32/JAMCRC in the catalogue of parametrised CRC algorithms by G. Cook,
/// https://reveng.sourceforge.io/crc-catalogue/).
#pragma once

#include <atomic>
#include <memory>

#include <dataModule/Export.h>

namespace td {

class Mutex;

class DATAMODULE_API CRC32Util {
public:
    /// The one instance of the process. It is never destroyed, so that a thread still running at exit may use it.
    static CRC32Util* instance();
    virtual ~CRC32Util();
    CRC32Util(const CRC32Util&) = delete;
    CRC32Util& operator=(const CRC32Util&) = delete;

    /// Makes calc_file_crc ready. May be called again, from any thread.
    void init_crc_table();
    /// Folds `len` bytes into `crc` and returns it, without initial or final inversion. Lock-free.
    unsigned int crc32(unsigned int crc, unsigned char* buf, unsigned int len) const;
    /// What `crc` becomes when `count` bytes of zero are folded into it, in a time that hardly depends on how many.
    static unsigned int throughZeros(unsigned int crc, unsigned int count);
    /// Checksums a file from byte `offset` to its end. False, and `crc` untouched, before init_crc_table. Otherwise
    /// true, also when the file cannot be opened, positioned or read: `crc` is then 0xFFFFFFFF, the checksum of
    /// nothing. Files are checksummed one after another.
    bool calc_file_crc(const char* path, int offset, unsigned int& crc);

    /// The value before the first byte.
    static constexpr unsigned int INITIAL = 0xFFFFFFFFU;

private:
    friend class Fork;
    CRC32Util();

    std::atomic<bool> m_initialised{false};
    const std::unique_ptr<Mutex> m_fileMutex; ///< one file at a time
};

} // namespace td
