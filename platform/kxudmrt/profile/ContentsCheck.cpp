#include "profile/ContentsCheck.h"

#include <algorithm>
#include <utility>

#include "core/Team.h"
#include "profile/Texts.h"
#include "store/FullText.h"
#include "text/Decode.h"

namespace kxudm::profile {

namespace {

using State = vault::Finding::State;

// A thread is woken for each group, which costs as much as a small content.
constexpr std::size_t CONTENTS_IN_GROUP = 16;
constexpr std::uint64_t BYTES_IN_GROUP = std::uint64_t{1} << 20;

// Beside the calling one. One at least: that one has other things to do first.
std::size_t FurtherThreads(std::size_t contents) {
    return std::max<std::size_t>(2, core::Team::UsefulThreads(contents)) - 1;
}

}  // namespace

ContentsCheck::~ContentsCheck() {
    _stopped = true;
}

void ContentsCheck::Begin(const std::vector<store::ContentUse>& uses, bool withWords) {
    _crew = std::make_unique<core::Crew>(FurtherThreads(uses.size()));
    Group group;
    std::uint64_t bytes = 0;
    for (const store::ContentUse& use : uses) {
        group.push_back(Find(use, withWords));
        bytes += use.size;
        if (group.size() == CONTENTS_IN_GROUP || bytes >= BYTES_IN_GROUP) {
            Give(std::exchange(group, {}));
            bytes = 0;
        }
    }
    if (!group.empty()) {
        Give(std::move(group));
    }
}

ContentsCheck::Result ContentsCheck::Next() {
    if (_results.empty()) {
        _results = _crew->Await(_coming.front());
        _coming.pop_front();
    }
    Result result = std::move(_results.front());
    _results.pop_front();
    return result;
}

ContentsCheck::Content ContentsCheck::Find(const store::ContentUse& use, bool withWords) {
    Content content{.use = &use, .withWords = withWords && use.text > 0};
    try {
        content.vault = &_session.Vaults().In(use.vault);
    } catch (const UDMException& failure) {
        content.problem = failure.what();
    }
    return content;
}

void ContentsCheck::Give(Group&& group) {
    _coming.push_back(_crew->Do([this, contents = std::move(group)] { return Read(contents); }));
}

// By a thread of the crew, as what follows.
std::deque<ContentsCheck::Result> ContentsCheck::Read(const Group& group) {
    std::unique_ptr<Reader> reader = Borrow();
    std::deque<Result> results;
    for (const Content& content : group) {
        results.push_back(ReadOne(content, *reader));
    }
    const std::lock_guard lock(_mutex);
    _readers.push_back(std::move(reader));
    return results;
}

ContentsCheck::Result ContentsCheck::ReadOne(const Content& content, Reader& reader) const {
    if (content.vault == nullptr) {
        return {{State::Unreadable, content.problem}};
    }
    vault::VerifyOptions options;
    options.progress = [this](std::uint64_t) { return !_stopped; };
    if (content.withWords) {
        options.text = &reader.text;
        options.limit = text::kLongestText;
    }
    Result result;
    try {
        result.finding = reader.fetcher.Verify(*content.vault, content.use->hash, options);
    } catch (const UDMException& failure) {
        result.finding = {State::Unreadable, failure.what()};
    }
    if (content.withWords && result.finding.state == State::Sound) {
        result.words = store::FullText::SumOf(PreparedText(reader.text));
    }
    return result;
}

std::unique_ptr<ContentsCheck::Reader> ContentsCheck::Borrow() {
    const std::lock_guard lock(_mutex);
    if (_readers.empty()) {
        return std::make_unique<Reader>();
    }
    std::unique_ptr<Reader> reader = std::move(_readers.back());
    _readers.pop_back();
    return reader;
}

}  // namespace kxudm::profile
