/// What clients and operators both ask of the manager.
#pragma once

#include <cstdio>

#include <dataModule/DataTypes.h>
#include <dataModule/Export.h>

namespace td {

/// The order of the virtual operations is part of the binary interface: only append.
class DATAMODULE_API IAbstractDataSeparateManager {
public:
    /// The category's name, "UNKNOWN_CATAGORY" outside 0 to 51. A static text.
    virtual const char* getCategory_Str(const _DataCategory_t& category) = 0;
    /// Whether the named field of a category without dimensions reads exactly 1.
    virtual bool getApplySettingFlag(const _DataCategory_t& category, const char* field) = 0;
    /// Stores 0 to such a field if it reads 1; false when it did not.
    virtual bool restoreApplySettingFlag(const _DataCategory_t& category, const char* field) = 0;
    /// The factory directory, ending in '/'. Owned by the manager.
    virtual char* getManufactoryPath() = 0;
    /// Stored for clients; the library does not use it.
    virtual bool setReservedFlag(bool flag) = 0;
    /// The television's type, at most 15 characters, written as "SN" of new files and compared on load.
    virtual bool setTvType(const char* type) = 0;
    /// The user's country code for the factory files that depend on it.
    virtual bool setReservedValue(int value) = 0;
    /// The open stream of the category's file, or null. Owned by the operator.
    virtual FILE* getFileHandler(const _DataCategory_t& category) = 0;

protected:
    ~IAbstractDataSeparateManager() = default;
};

} // namespace td
