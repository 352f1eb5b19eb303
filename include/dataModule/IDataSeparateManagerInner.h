/// What operators and the worker thread ask of the manager that owns them.
#pragma once

#include <dataModule/IAbstractDataSeparateManager.h>

namespace td {

class Event;

/// The order of the virtual operations is part of the binary interface: only append.
class DATAMODULE_API IDataSeparateManagerInner : public IAbstractDataSeparateManager {
public:
    /// The flag set by setReservedFlag, false at first.
    virtual bool getReservedFlag() = 0;
    /// The television's type, empty at first. Owned by the manager.
    virtual const char* getTvType() = 0;
    /// The value set by setReservedValue, 0 at first.
    virtual int getReservedValue() = 0;
    /// Makes the backups that are asked for. Called by the idle worker; never waits for an operator.
    virtual bool backupData() = 0;
    /// Queues an event. 1: the worker owns it now; 0: refused, the caller still owns it.
    virtual int postEvent(Event* event) = 0;
    /// Whether files may be written.
    virtual bool getStoreFileFlag() = 0;
    /// Tries again what was stored and could not be written. Called by the worker, also when it is never idle; never
    /// waits for an operator or another process.
    virtual void retryFailedStores() {}

protected:
    ~IDataSeparateManagerInner() = default;
};

} // namespace td
