#include "profile/Peers.h"

#include <algorithm>
#include <map>

namespace kxudm::profile::peers {

namespace {

struct Peer {
    const Session* key;
    boost::weak_ptr<Session> session;
};

std::map<kxString, std::vector<Peer>>& ByFile() {
    // Never destroyed, as the sessions of a host's static objects leave it last.
    static auto& peers = *new std::map<kxString, std::vector<Peer>>;
    return peers;
}

void Collect(const std::vector<Peer>& peers, std::vector<boost::shared_ptr<Session>>& out) {
    for (const Peer& peer : peers) {
        if (auto session = peer.session.lock()) {
            out.push_back(std::move(session));
        }
    }
}

}  // namespace

void Join(const boost::shared_ptr<Session>& session) {
    ByFile()[session->Options().libraryFile].push_back({session.get(), session});
}

void Leave(const Session& session) noexcept {
    auto& all = ByFile();
    const auto found = all.find(session.Options().libraryFile);
    if (found == all.end()) {
        return;
    }
    std::erase_if(found->second, [&](const Peer& peer) { return peer.key == &session; });
    if (found->second.empty()) {
        all.erase(found);
    }
}

std::vector<boost::shared_ptr<Session>> On(const kxString& libraryFile) {
    std::vector<boost::shared_ptr<Session>> sessions;
    const auto& all = ByFile();
    if (const auto found = all.find(libraryFile); found != all.end()) {
        Collect(found->second, sessions);
    }
    return sessions;
}

std::vector<boost::shared_ptr<Session>> All() {
    std::vector<boost::shared_ptr<Session>> sessions;
    for (const auto& [file, peers] : ByFile()) {
        Collect(peers, sessions);
    }
    return sessions;
}

}  // namespace kxudm::profile::peers
