#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMKXMergeToCatalog.h>
#include <kxudm/UDMProfileMgr.h>
#include <kxudm/spi/IUDMProvider.h>

#include <map>
#include <utility>

#include "core/LocalProvider.h"

namespace kxudm {

namespace {

using ProviderPtr = boost::shared_ptr<spi::IUDMProvider>;

constexpr char kMasterDataSource[] = "local";

struct Registry {
    std::map<kxString, ProviderPtr> providers;
    // Which provider opened a session: it closes it too, whatever was registered since.
    std::map<const IUDMProfile*, ProviderPtr> openedBy;

    Registry() { providers[kMasterDataSource] = core::MakeLocalProvider(); }
};

Registry& TheRegistry() {
    // Never destroyed: a host's static object may hold a session until the process ends.
    static Registry& registry = *new Registry;
    return registry;
}

ProviderPtr ProviderNamed(const kxString& dataSource) {
    const Registry& registry = TheRegistry();
    const auto found = registry.providers.find(dataSource);
    if (found != registry.providers.end()) {
        return found->second;
    }
    std::string known;
    for (const auto& [name, provider] : registry.providers) {
        known += (known.empty() ? "\"" : ", \"") + name + "\"";
    }
    throw UDMNotFoundException("The data source \"" + dataSource + "\" is unknown; known are " +
                               (known.empty() ? "none" : known));
}

ProviderPtr ProviderOf(const UDMProfileMgr::Parameters& params) {
    const auto found = params.find("DataSource");
    return ProviderNamed(found == params.end() ? kxString(kMasterDataSource)
                                               : found->second.GetString());
}

}  // namespace

ProviderPtr UDMProfileMgr::RegisterProvider(const kxString& name, ProviderPtr provider) {
    auto& providers = TheRegistry().providers;
    ProviderPtr previous;
    if (const auto found = providers.find(name); found != providers.end()) {
        previous = found->second;
        providers.erase(found);
    }
    if (provider) {
        providers.emplace(name, std::move(provider));
    }
    return previous;
}

kxStlVector<kxString> UDMProfileMgr::GetDataSources() {
    kxStlVector<kxString> names;
    for (const auto& [name, provider] : TheRegistry().providers) {
        names.push_back(name);
    }
    return names;
}

boost::shared_ptr<IUDMProfile> UDMProfileMgr::GetProfile(const Parameters& params) {
    const ProviderPtr provider = ProviderOf(params);
    boost::shared_ptr<IUDMProfile> profile = provider->OpenProfile(params);
    if (profile) {
        TheRegistry().openedBy[profile.get()] = provider;
    }
    return profile;
}

void UDMProfileMgr::DiscardProfile(boost::shared_ptr<IUDMProfile>& profile) {
    if (!profile) {
        return;
    }
    auto& openedBy = TheRegistry().openedBy;
    ProviderPtr provider;
    if (const auto found = openedBy.find(profile.get()); found != openedBy.end()) {
        provider = found->second;
        openedBy.erase(found);
    }
    boost::shared_ptr<IUDMProfile> closing;
    closing.swap(profile);
    if (provider) {
        provider->CloseProfile(closing);
    }
}

bool UDMProfileMgr::CheckConnection(const kxString& dataSource,
                                    const kxString& a,
                                    const kxString& b,
                                    const kxString& host,
                                    const kxString& c,
                                    const kxString& username,
                                    const kxString& password,
                                    kxString& message) {
    return ProviderNamed(dataSource)
        ->CheckConnection(dataSource, a, b, host, c, username, password, message);
}

void UDMProfileMgr::GetRepositoryIds(kxStlVector<kxString>& ids,
                                     const Parameters& params,
                                     unsigned int connType) {
    ProviderOf(params)->GetRepositoryIds(ids, params, connType);
}

void UDMProfileMgr::GetRepositoryInfo(kxStlMap<kxString, kxString>& info,
                                      const kxString& id,
                                      const kxStlVector<kxString>& keys,
                                      const Parameters& params,
                                      unsigned int connType) {
    ProviderOf(params)->GetRepositoryInfo(info, id, keys, params, connType);
}

void UDMProfileMgr::GetRepositoryClientSettings(kxStlMap<kxString, kxVariant>& out,
                                                const kxString& id,
                                                const Parameters& params) {
    ProviderOf(params)->GetRepositoryClientSettings(out, id, params);
}

void UDMProfileMgr::GetWorkspaces(kxStlVector<kxString>& ids, const Parameters& params) {
    ProviderOf(params)->GetWorkspaces(ids, params);
}

void UDMProfileMgr::GetWorkspaceInfo(kxStlMap<kxString, kxString>& info,
                                     const kxString& id,
                                     const kxStlVector<kxString>& keys,
                                     const Parameters& params) {
    ProviderOf(params)->GetWorkspaceInfo(info, id, keys, params);
}

void UDMProfileMgr::AddExistingRepository(const Parameters& params, const kxString& name) {
    ProviderOf(params)->AddExistingRepository(params, name);
}

void UDMProfileMgr::SetDefaultRepository(const Parameters& params) {
    ProviderOf(params)->SetDefaultRepository(params);
}

void UDMProfileMgr::DeleteRepository(const Parameters& params, bool deleteFiles, bool force) {
    ProviderOf(params)->DeleteRepository(params, deleteFiles, force);
}

void UDMProfileMgr::DispatchUpdates() {
    // A copy: a slot may register providers.
    const auto providers = TheRegistry().providers;
    for (const auto& [name, provider] : providers) {
        provider->DispatchUpdates();
    }
}

UDMResult UDMKXMergeToCatalog::CreateInstance(
    boost::shared_ptr<UDMKXMergeToCatalog>& out,
    // By value: the interface's form.
    kxString library,                        // NOLINT(performance-unnecessary-value-param)
    kxString folder,                         // NOLINT(performance-unnecessary-value-param)
    boost::shared_ptr<IUDMProfile> profile,  // NOLINT(performance-unnecessary-value-param)
    const kxString& comment) {
    out.reset();
    const auto& openedBy = TheRegistry().openedBy;
    if (const auto found = openedBy.find(profile.get()); found != openedBy.end()) {
        out = found->second->CreateMerge(library, folder, profile, comment);
    }
    return out ? UDMResult::Ok : UDMResult::Failed;
}

}  // namespace kxudm
