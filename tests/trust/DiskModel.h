/// What a disk holds, and what of it would outlive a cut of power.
///
/// A file's contents are sure after a sync of that file, a directory's entries (a new file, a renaming, a removal)
/// after a sync of that directory. Until then each single write, truncation and change of an entry may or may not have
/// reached the disk, whatever was done before or after it, and a write may have reached it in part. A file system that
/// promises more leaves some of these states, never others.
///
/// After a sync that failed, the system takes what it was to bring to the disk for written: no later sync makes it sure
/// unless it is written anew.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "FileCalls.h"

namespace td::test {

/// The bytes of a file, or nothing for a directory. Shared, since most files do not change.
struct Content {
    explicit Content(std::string text) : bytes(std::move(text)), hash(std::hash<std::string>()(bytes)) {}
    const std::string bytes;
    const std::size_t hash;
};
using ContentPointer = std::shared_ptr<const Content>;

/// Files and directories by their paths below a root; a directory has no content.
using Tree = std::map<std::string, ContentPointer>;

Tree readTree(const std::string& root);
/// One file of it, or null when there is none.
ContentPointer readFileIn(const std::string& root, const std::string& path);
/// Makes the tree below `root`, a directory, exactly this one.
void writeTree(const std::string& root, const Tree& tree);
/// The same number for equal trees, and hardly ever for others.
std::size_t fingerprint(const Tree& tree);
/// The first difference, or an empty text.
std::string difference(const Tree& one, const Tree& other);

/// One change of the disk, or a sync of one file or directory.
struct DiskEvent {
    enum class Kind { Write, Truncate, Entries, Sync, FailedSync };
    static constexpr int NO_NODE = -1;

    Kind kind;
    int node;                                ///< the file or directory that it changes
    std::size_t offset = 0;                  ///< of a write; the new size at a truncation
    std::string bytes = {};                  ///< of a write
    std::map<std::string, int> entries = {}; ///< names in a directory and their nodes from now on, if any
    int made = NO_NODE;                      ///< a new node
    bool madeDirectory = false;
    bool isSure = false;   ///< changed entries that are sure at once
    bool givenUp = false;  ///< a write whose sync failed
    std::string text = {}; ///< for messages
};

/// What became of a pending change in a cut.
struct Fate {
    /// Bytes of a write, from the first up to and without the second.
    struct Part {
        std::size_t begin;
        std::size_t end;
    };
    /// Torn: only the part reached the disk. Holed: all but the part did.
    enum class Kind { Lost, Done, Torn, Holed };
    /// What stands where the write did not reach, if the file has its new length: zeros, or bytes of another file that
    /// is gone.
    enum class Growth { None, Zeros, Stale };

    Kind kind = Kind::Lost;
    Part part = {0, 0};
    Growth growth = Growth::None;
};

/// Replays events.
class DiskModel {
public:
    /// All of the tree is sure.
    explicit DiskModel(const Tree& tree);

    void apply(const DiskEvent& event);
    /// The changes that are not sure, oldest first.
    const std::vector<DiskEvent>& pending() const { return m_pending; }
    /// What a cut leaves; one fate per pending change.
    Tree treeAfterCut(const std::vector<Fate>& fates) const;
    /// With all that was done.
    Tree tree() const;
    /// Bytes of a file as it is sure.
    std::size_t sureSize(int node) const;
    /// The node at a path of the tree with which the model began.
    const std::map<std::string, int>& nodes() const { return m_paths; }

private:
    struct Node {
        bool isDirectory = false;
        ContentPointer content;
        std::map<std::string, int> entries;
    };
    /// A node that differs from the sure one.
    struct ChangedNode {
        std::map<std::string, int> entries;
        std::string bytes;
    };
    using Changed = std::map<int, ChangedNode>;

    int addNode(bool isDirectory);
    void sync(int node);
    void makeSure(Changed& changed);
    const Node& nodeAt(int node) const { return m_nodes[static_cast<std::size_t>(node)]; }
    void change(Changed& changed, const DiskEvent& event, const Fate& fate) const;
    void collect(const Changed& changed, int directory, const std::string& path, Tree& tree) const;

    std::vector<Node> m_nodes; ///< as they are sure
    std::map<std::string, int> m_paths;
    std::vector<DiskEvent> m_pending;
};

/// Records the events below a directory. Changes of entries of one directory, given by its path, count as sure at once.
class DiskRecorder : public FileWatcher {
public:
    DiskRecorder(const Tree& start, std::string sureDirectory);

    const std::vector<DiskEvent>& events() const { return m_events; }

    void opened(int descriptor, const std::string& path, bool created, bool emptied) override;
    void wrote(int descriptor, std::int64_t offset, std::string_view bytes) override;
    void truncated(int descriptor, std::int64_t size) override;
    void synced(int descriptor) override;
    void closed(int descriptor) override;
    void renamed(const std::string& from, const std::string& to) override;
    void removed(const std::string& path) override;
    void madeDirectory(const std::string& path) override;
    void removedDirectory(const std::string& path) override;
    /// A sync of the file or directory fails.
    void failedSync(const std::string& path);

private:
    void add(DiskEvent event);
    void addNode(const std::string& path, bool isDirectory);
    void removeName(const std::string& path);
    int nodeOf(int descriptor) const { return m_descriptors.at(descriptor).node; }

    struct Opened {
        int node;
        std::string path;
    };

    const std::string m_sureDirectory;
    std::map<std::string, int> m_paths; ///< as they are now
    std::map<int, Opened> m_descriptors;
    std::vector<DiskEvent> m_events;
    int m_nextNode;
};

} // namespace td::test
