#include "DiskModel.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace td::test {
namespace {

namespace fs = std::filesystem;

constexpr int ROOT_NODE = 0;

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

std::string nameIn(const std::string& path) {
    return path.substr(path.rfind('/') + 1); // without a slash the end wraps to the beginning
}

std::string readFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& path, const std::string& bytes) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush())
        throw std::runtime_error("cannot write " + path.string());
}

ContentPointer emptyContent() {
    static const auto empty = std::make_shared<const Content>("");
    return empty;
}

/// A digit, as a settings file might have had there.
constexpr char STALE = '7';

void writeInto(std::string& bytes, const DiskEvent& write, const Fate& fate) {
    const std::size_t size = write.bytes.size();
    std::vector<Fate::Part> parts{fate.part};
    if (fate.kind == Fate::Kind::Done)
        parts = {{0, size}};
    else if (fate.kind == Fate::Kind::Holed)
        parts = {{0, fate.part.begin}, {fate.part.end, size}};
    if (fate.growth != Fate::Growth::None && bytes.size() < write.offset + size)
        bytes.resize(write.offset + size, fate.growth == Fate::Growth::Stale ? STALE : '\0');
    for (const auto& [begin, end] : parts) {
        if (begin == end)
            continue;
        bytes.resize(std::max(bytes.size(), write.offset + end));
        bytes.replace(write.offset + begin, end - begin, write.bytes, begin, end - begin);
    }
}

/// What is left of pending changes once the bytes of a file from `begin` to `end` have been written anew and are sure:
/// nothing of an earlier write there.
std::vector<DiskEvent> withoutWrites(std::vector<DiskEvent> changes, int node, std::size_t begin, std::size_t end) {
    std::vector<DiskEvent> left;
    for (DiskEvent& change : changes) {
        const std::size_t last = change.offset + change.bytes.size();
        if (change.node != node || change.kind != DiskEvent::Kind::Write || last <= begin || end <= change.offset) {
            left.push_back(std::move(change));
            continue;
        }
        const auto keep = [&](std::size_t from, std::size_t to) {
            if (from >= to)
                return;
            DiskEvent piece = change;
            piece.bytes = change.bytes.substr(from - change.offset, to - from);
            piece.offset = from;
            left.push_back(std::move(piece));
        };
        keep(change.offset, begin);
        keep(end, last);
    }
    return left;
}

} // namespace

// --- trees ---

Tree readTree(const std::string& root) {
    Tree tree;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string path = entry.path().string().substr(root.size() + 1);
        tree[path] = entry.is_directory() ? nullptr : std::make_shared<const Content>(readFile(entry.path()));
    }
    return tree;
}

ContentPointer readFileIn(const std::string& root, const std::string& path) {
    const fs::path file = fs::path(root) / path;
    return fs::is_regular_file(file) ? std::make_shared<const Content>(readFile(file)) : nullptr;
}

void writeTree(const std::string& root, const Tree& tree) {
    for (const auto& entry : fs::directory_iterator(root))
        fs::remove_all(entry.path());
    for (const auto& [path, content] : tree) {
        const fs::path target = fs::path(root) / path;
        if (content == nullptr)
            fs::create_directories(target);
        else
            writeFile(target, content->bytes);
    }
}

std::size_t fingerprint(const Tree& tree) {
    std::size_t result = 0;
    const auto mix = [&](std::size_t value) { result = result * 1000003U ^ value; };
    for (const auto& [path, content] : tree) {
        mix(std::hash<std::string>()(path));
        mix(content == nullptr ? 1 : content->hash);
    }
    return result;
}

std::string difference(const Tree& one, const Tree& other) {
    for (const auto& [path, content] : one) {
        const auto found = other.find(path);
        if (found == other.end())
            return path + " is missing";
        if ((content == nullptr) != (found->second == nullptr))
            return path + " is a file in one and a directory in the other";
        if (content != nullptr && content->bytes != found->second->bytes)
            return path + " differs";
    }
    for (const auto& [path, content] : other) {
        if (one.count(path) == 0)
            return path + " is new";
    }
    return "";
}

// --- the model ---

DiskModel::DiskModel(const Tree& tree) {
    m_paths[""] = addNode(true);
    for (const auto& [path, content] : tree) {
        const int node = addNode(content == nullptr);
        m_paths[path] = node;
        if (content != nullptr)
            m_nodes.back().content = content;
        m_nodes[static_cast<std::size_t>(m_paths.at(parentOf(path)))].entries[nameIn(path)] = node;
    }
}

int DiskModel::addNode(bool isDirectory) {
    m_nodes.push_back({isDirectory, isDirectory ? nullptr : emptyContent(), {}});
    return static_cast<int>(m_nodes.size()) - 1;
}

std::size_t DiskModel::sureSize(int node) const {
    return m_nodes[static_cast<std::size_t>(node)].content->bytes.size();
}

void DiskModel::apply(const DiskEvent& event) {
    if (event.made != DiskEvent::NO_NODE && addNode(event.madeDirectory) != event.made)
        throw std::logic_error("nodes are numbered as they are made");
    if (event.kind == DiskEvent::Kind::Sync)
        return sync(event.node);
    if (event.kind == DiskEvent::Kind::FailedSync) {
        for (DiskEvent& change : m_pending)
            change.givenUp = change.givenUp || (change.node == event.node && change.kind == DiskEvent::Kind::Write);
        return;
    }
    if (!event.isSure) {
        m_pending.push_back(event);
        return;
    }
    Changed changed;
    change(changed, event, {Fate::Kind::Done});
    makeSure(changed);
}

void DiskModel::sync(int node) {
    Changed changed;
    std::vector<DiskEvent> left;
    for (DiskEvent& change : m_pending) {
        if (change.node != node || change.givenUp) {
            left.push_back(std::move(change));
            continue;
        }
        this->change(changed, change, {Fate::Kind::Done});
        if (change.kind == DiskEvent::Kind::Write)
            left = withoutWrites(std::move(left), node, change.offset, change.offset + change.bytes.size());
        if (change.kind == DiskEvent::Kind::Truncate)
            left = withoutWrites(std::move(left), node, change.offset, std::string::npos);
    }
    m_pending = std::move(left);
    makeSure(changed);
}

void DiskModel::makeSure(Changed& changed) {
    for (auto& [number, now] : changed) {
        Node& node = m_nodes[static_cast<std::size_t>(number)];
        if (node.isDirectory)
            node.entries = std::move(now.entries);
        else
            node.content = std::make_shared<const Content>(std::move(now.bytes));
    }
}

void DiskModel::change(Changed& changed, const DiskEvent& event, const Fate& fate) const {
    if (fate.kind == Fate::Kind::Lost)
        return;
    const Node& sure = nodeAt(event.node);
    const auto [found, isNew] = changed.try_emplace(event.node);
    ChangedNode& node = found->second;
    if (isNew && sure.isDirectory)
        node.entries = sure.entries;
    else if (isNew)
        node.bytes = sure.content->bytes;
    switch (event.kind) {
    case DiskEvent::Kind::Entries:
        for (const auto& [name, target] : event.entries) {
            node.entries.erase(name);
            if (target != DiskEvent::NO_NODE)
                node.entries[name] = target;
        }
        return;
    case DiskEvent::Kind::Truncate:
        node.bytes.resize(event.offset);
        return;
    case DiskEvent::Kind::Write:
        writeInto(node.bytes, event, fate);
        return;
    case DiskEvent::Kind::Sync:
    case DiskEvent::Kind::FailedSync:
        return;
    }
}

void DiskModel::collect(const Changed& changed, int directory, const std::string& path, Tree& tree) const {
    const auto own = changed.find(directory);
    for (const auto& [name, node] : own != changed.end() ? own->second.entries : nodeAt(directory).entries) {
        const std::string entry = path.empty() ? name : path + "/" + name;
        const auto now = changed.find(node);
        if (nodeAt(node).isDirectory) {
            tree[entry] = nullptr;
            collect(changed, node, entry, tree);
        } else {
            tree[entry] =
                now != changed.end() ? std::make_shared<const Content>(now->second.bytes) : nodeAt(node).content;
        }
    }
}

Tree DiskModel::treeAfterCut(const std::vector<Fate>& fates) const {
    Changed changed;
    for (std::size_t i = 0; i < m_pending.size(); ++i)
        change(changed, m_pending[i], fates[i]);
    Tree tree;
    collect(changed, ROOT_NODE, "", tree);
    return tree;
}

Tree DiskModel::tree() const {
    return treeAfterCut(std::vector<Fate>(m_pending.size(), Fate{Fate::Kind::Done}));
}

// --- the recorder ---

DiskRecorder::DiskRecorder(const Tree& start, std::string sureDirectory)
    : m_sureDirectory(std::move(sureDirectory)), m_paths(DiskModel(start).nodes()),
      m_nextNode(static_cast<int>(m_paths.size())) {}

void DiskRecorder::add(DiskEvent event) {
    m_events.push_back(std::move(event));
}

void DiskRecorder::addNode(const std::string& path, bool isDirectory) {
    const std::string directoryPath = parentOf(path);
    m_paths[path] = m_nextNode;
    add({.kind = DiskEvent::Kind::Entries,
         .node = m_paths.at(directoryPath),
         .entries = {{nameIn(path), m_nextNode}},
         .made = m_nextNode,
         .madeDirectory = isDirectory,
         // Of the parent's other entries this says nothing.
         .isSure = path == m_sureDirectory || directoryPath == m_sureDirectory,
         .text = (isDirectory ? "mkdir " : "create ") + path});
    ++m_nextNode;
}

void DiskRecorder::removeName(const std::string& path) {
    m_paths.erase(path);
    add({.kind = DiskEvent::Kind::Entries,
         .node = m_paths.at(parentOf(path)),
         .entries = {{nameIn(path), DiskEvent::NO_NODE}},
         .text = "remove " + path});
}

void DiskRecorder::opened(int descriptor, const std::string& path, bool created, bool emptied) {
    if (created)
        addNode(path, false);
    m_descriptors[descriptor] = {m_paths.at(path), path};
    if (emptied)
        truncated(descriptor, 0);
}

void DiskRecorder::wrote(int descriptor, std::int64_t offset, std::string_view bytes) {
    add({.kind = DiskEvent::Kind::Write,
         .node = nodeOf(descriptor),
         .offset = static_cast<std::size_t>(offset),
         .bytes = std::string(bytes),
         .text = "write " + std::to_string(bytes.size()) + " bytes at " + std::to_string(offset) + " of " +
                 m_descriptors.at(descriptor).path});
}

void DiskRecorder::truncated(int descriptor, std::int64_t size) {
    add({.kind = DiskEvent::Kind::Truncate,
         .node = nodeOf(descriptor),
         .offset = static_cast<std::size_t>(size),
         .text = "truncate " + m_descriptors.at(descriptor).path + " to " + std::to_string(size)});
}

void DiskRecorder::synced(int descriptor) {
    add({.kind = DiskEvent::Kind::Sync,
         .node = nodeOf(descriptor),
         .text = "sync " + m_descriptors.at(descriptor).path});
}

void DiskRecorder::failedSync(const std::string& path) {
    add({.kind = DiskEvent::Kind::FailedSync, .node = m_paths.at(path), .text = "failed sync of " + path});
}

void DiskRecorder::closed(int descriptor) {
    m_descriptors.erase(descriptor);
}

void DiskRecorder::renamed(const std::string& from, const std::string& to) {
    if (parentOf(from) != parentOf(to))
        throw std::logic_error("no renaming from directory to directory is known");
    const int node = m_paths.at(from);
    m_paths.erase(from);
    m_paths[to] = node;
    add({.kind = DiskEvent::Kind::Entries,
         .node = m_paths.at(parentOf(to)),
         .entries = {{nameIn(from), DiskEvent::NO_NODE}, {nameIn(to), node}},
         .text = "rename " + from + " to " + to});
}

void DiskRecorder::removed(const std::string& path) {
    removeName(path);
}

void DiskRecorder::madeDirectory(const std::string& path) {
    addNode(path, true);
}

void DiskRecorder::removedDirectory(const std::string& path) {
    removeName(path);
}

} // namespace td::test
