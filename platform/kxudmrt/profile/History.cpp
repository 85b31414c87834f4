// History of an entity, and how a session stands to the data source.
#include <boost/smart_ptr/make_shared.hpp>
#include <map>

#include "profile/Profile.h"

namespace kxudm::profile {

namespace {

using Node = boost::shared_ptr<UDMHistoryNode>;

// Branches in the order of their creation, and those that leave each revision.
struct Branches {
    UDMHistoryNode::List all = {};
    std::map<int, UDMHistoryNode::List> ofRevision = {};
};

// A branch has a history of its own, which is asked for with its own handle.
Branches BranchesOf(Session& session, const kxString& base) {
    std::vector<store::BranchRow> rows;
    session.Store().Branches(base, session.Viewer(), rows);
    Branches branches;
    for (const store::BranchRow& row : rows) {
        auto node = boost::make_shared<UDMHistoryNode>(kxString(row.entity.uid),
                                                       row.entity.revision,
                                                       UDMHistoryNode::List(),
                                                       UDMHistoryNode::List());
        branches.all.push_back(node);
        branches.ofRevision[row.originRevision].push_back(node);
    }
    return branches;
}

}  // namespace

boost::shared_ptr<UDMHistoryNode> Profile::GetHistory(const UDMItemHandle& handle) {
    _session->Poll("GetHistory");
    const Session::State state = _session->Resolve(handle);
    const kxString base(state->BaseUid());
    return _session->Store().View([&] {
        Branches branches = BranchesOf(*_session, base);
        const std::vector<int> numbers =
            _session->Store().RevisionNumbers(state->Id(), _session->Viewer());
        // The newest one stands for the entity.
        UDMHistoryNode::List ofRoot = !numbers.empty() && state->Revision() < numbers.back()
                                          ? branches.ofRevision[state->Revision()]
                                          : std::move(branches.all);
        UDMHistoryNode::List versions;
        for (const int number : numbers) {
            versions.push_back(boost::make_shared<UDMHistoryNode>(
                base, number, UDMHistoryNode::List(), std::move(branches.ofRevision[number])));
        }
        return boost::make_shared<UDMHistoryNode>(
            base, state->Revision(), std::move(versions), std::move(ofRoot));
    });
}

// A local library is its own data source: once Poll has taken in what other sessions did, there is
// nothing newer anywhere.
bool Profile::GetSyncStatus(const UDMItemHandle& handle) {
    _session->Poll("GetSyncStatus");
    _session->Resolve(handle);
    return true;
}

void Profile::Synchronize(const UDMItemHandle& handle) {
    _session->Poll("Synchronize");
    _session->Resolve(handle);
}

}  // namespace kxudm::profile
