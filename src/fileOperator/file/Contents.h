/// What the life of a category's files asks of whoever has its values. All is called with the category's lock held,
/// but for what says otherwise. An operator without a table of the library's answers as this class does.
#pragma once

#include <memory>

namespace td {

class PendingStores;

class Contents {
public:
    virtual ~Contents() = default;

    /// For the length of an entered critical section nobody else reads or changes the values.
    virtual void enter() {}
    virtual void leave() {}

    /// From here to endLoad() what is read from files goes to values aside; clients see, and change, those that are.
    virtual void beginLoad() {}
    enum class Loaded {
        Failed,  ///< the values stay as they are
        Kept,    ///< what was stored and is not on the disk goes on
        Dropped, ///< of that only what was stored since beginLoad()
        AsItIs   ///< and nothing is known of what was stored
    };
    virtual void endLoad(Loaded /*how*/) {}

    /// A file is about to be made of the values. False when they are not all there.
    virtual bool prepareFile(bool /*defaults*/) { return true; }
    /// The file that buildContents() made is the current copy.
    virtual void fileMade(bool /*defaults*/) {}
    /// What was stored and is not on the disk is given up.
    virtual void giveUpStores() {}
    /// The values are those of the factory copy; what is stored from here on goes on after the current copy was reset.
    virtual void refreshed() {}
    virtual void currentWasReset() {}

    /// Tries again what was stored and could not be written. Whether all is on the disk.
    virtual bool writeFailed() { return true; }
    /// Any thread.
    virtual bool hasFailed() const { return false; }
    /// A merge, to which stores were left, could not be written.
    virtual void mergeFailed() {}
    /// What was stored and is not on the disk, for those who wait for it; may be null. Any thread.
    virtual std::shared_ptr<PendingStores> pendingStores() const { return nullptr; }
};

} // namespace td
