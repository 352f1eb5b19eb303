#include <stdexcept>

#include "Peer.h"

namespace bench {

const std::vector<std::string>& peerNames() {
    static const std::vector<std::string> names{"SQLite", "LMDB", "LevelDB", "GKeyFile", "PropertyTree", "inih"};
    return names;
}

std::unique_ptr<Peer> makePeer(const std::string& name, const std::string& directory, const std::string& settings,
                               const std::vector<Table>& tables) {
    if (name == "SQLite")
        return makeSqlite(directory, tables);
    if (name == "LMDB")
        return makeLmdb(directory, tables);
    if (name == "LevelDB")
        return makeLevelDb(directory, tables);
    if (name == "GKeyFile")
        return makeGKeyFile(settings, tables);
    if (name == "PropertyTree")
        return makePropertyTree(settings, tables);
    if (name == "inih")
        return makeInih(settings, tables);
    throw std::invalid_argument("no peer " + name);
}

} // namespace bench
