// Generated sequences of steps by three users (one of them a user's second workspace), in the
// runtime and in a naive model of it; some steps are bulk edits of several, some bring back what
// was deleted. After each step all must see what the model says. Each has a slot that shows the
// whole library and reads again only what it was told of: it must show the same, and nobody is told
// of what makes no difference to him. The seed is printed; KXCT_TEST_SEED sets it.
#include <kxudm/UDMMaintenance.h>

#include "RevisionSequence.h"
#include "tests/support/Seed.h"

namespace kxudm::test {
namespace {

constexpr int SHARDS = 8;
constexpr int SEQUENCES = 12;  // of each shard
constexpr int STEPS = 60;
constexpr std::pair<const char*, const char*> SEATS[RevisionSequence::USERS] = {
    {"ann", "desk"}, {"bob", "desk"}, {"ann", "home"}};

class RevisionRandom : public testing::TestWithParam<int> {};

TEST_P(RevisionRandom, TheRuntimeDoesWhatTheModelSays) {
    const unsigned seed = kxct_test::Seed();
    Library library;
    for (int i = 0; i < SEQUENCES && !HasFailure(); ++i) {
        const unsigned own = seed + static_cast<unsigned>(GetParam() * SEQUENCES + i);
        std::vector<ProfilePtr> users;
        for (const auto& [user, workspace] : SEATS) {
            users.push_back(UDMProfileMgr::GetProfile(library.Params(user, workspace)));
        }
        ProfilePtr carl = UDMProfileMgr::GetProfile(library.Params("carl"));
        std::string log;
        {
            RevisionSequence sequence(users, own);
            for (int step = 0; step < STEPS && !HasFailure(); ++step) {
                sequence.Step();
            }
            sequence.CompareAll(carl);
            for (const UDMFinding& finding : UDMMaintenance(carl).Verify()) {
                ADD_FAILURE() << UDMMaintenance::Name(finding.kind) << " " << finding.object << ": "
                              << finding.text;
            }
            log = sequence.Log();
        }
        users.push_back(carl);
        for (ProfilePtr& user : users) {
            UDMProfileMgr::DiscardProfile(user);
        }
        EXPECT_FALSE(HasFailure()) << "sequence " << own << ":\n" << log;
    }
}

INSTANTIATE_TEST_SUITE_P(Shards, RevisionRandom, testing::Range(0, SHARDS));

}  // namespace
}  // namespace kxudm::test
