#include <kxinterp/kxInterp.h>
#include <kxutl/kxStlMap.h>

#include <mutex>

namespace {

struct Registry {
    std::mutex mutex;
    // The last creator of a kind is the one in use.
    kxStlMap<kxString, kxStlVector<kxIInterpCreator*>> creators;
};

// Never destroyed: scripts may run while the process ends.
Registry& TheRegistry() {
    static auto* registry = new Registry;
    return *registry;
}

}  // namespace

kxIInterpCreator::~kxIInterpCreator() = default;

kxInterp::~kxInterp() = default;

void kxInterp::SetLastError(const kxString& error, const kxString& trace) {
    _lastError = error;
    _lastErrorTrace = trace;
}

void kxInterp::RegisterCreator(const kxString& kind, kxIInterpCreator* creator) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.creators[kind].push_back(creator);
}

kxInterp* kxInterp::Get(const kxString& kind) {
    kxIInterpCreator* creator = nullptr;
    {
        Registry& registry = TheRegistry();
        const std::lock_guard lock(registry.mutex);
        const auto found = registry.creators.find(kind);
        if (found != registry.creators.end()) {
            creator = found->second.back();
        }
    }
    return creator != nullptr ? creator->GetInterp() : nullptr;
}
